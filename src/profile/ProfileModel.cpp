#include "profile/ProfileModel.h"

#include "profile/ProfileSelection.h"

namespace kelvaro {

ProfileModel::ProfileModel(const ProfileModelParts& parts)
    : parts_(parts),
      period_(periodFrom(parts.settings.get<std::string>(periodKey).value_or(""))),
      poster_(parts.main) {}

void ProfileModel::setPeriod(const ProfilePeriod& period) {
    if (period == period_) return;
    period_ = period;
    parts_.settings.set(periodKey, storedText(period));
    if (source_) make();
}

void ProfileModel::follow() {
    if (!following_.empty()) return;
    // The view is published after changes of any kind, and not too often while they stream in.
    following_.push_back(parts_.library.view().observe([this] { collect(); }));
    following_.push_back(parts_.exports.observe([this] { collect(); }));
    collect();
}

void ProfileModel::rest() {
    following_.clear();
}

CivilTime ProfileModel::now() const {
    return parts_.calendar.civil(timeFromSeconds(parts_.clock.wallSeconds()));
}

void ProfileModel::showBar(const Chart& chart, std::size_t bar) {
    if (bar < chart.bars().size()) parts_.library.showOnly(photosOfBar(chart, bar, period_, now()));
}

void ProfileModel::showDay(std::int64_t day) {
    parts_.library.showOnly(photosOfDay(day, parts_.texts));
}

void ProfileModel::collect() {
    if (collecting_) {
        collectsAgain_ = true;
        return;
    }
    collecting_ = true;
    // On the library's thread, which may outlive the model: nothing of it is touched there.
    parts_.library.inspect([this, alive = std::weak_ptr<char>(alive_), &main = parts_.main,
                            &calendar = parts_.calendar, exports = parts_.exports.byDay()](
                               const std::vector<KnownPhoto>& photos) {
        const auto source =
            std::make_shared<const ProfileSource>(makeProfileSource(photos, calendar, exports));
        main.post([this, alive, source] {
            if (!alive.expired()) take(source);
        });
    });
}

void ProfileModel::take(std::shared_ptr<const ProfileSource> source) {
    collecting_ = false;
    // A hundred thousand records are let go of elsewhere.
    queue_.post([old = std::exchange(source_, std::move(source))] {});
    make();
    if (std::exchange(collectsAgain_, false) && !following_.empty()) collect();
}

void ProfileModel::make() {
    if (making_) {
        makesAgain_ = true;
        return;
    }
    making_ = true;
    queue_.post([this, source = source_, period = period_, today = now()] {
        auto made = std::make_shared<const Profile>(makeProfile(*source, period, today));
        poster_.post([this, made = std::move(made)] {
            making_ = false;
            if (std::exchange(makesAgain_, false)) make();
            profile_.set(made);
        });
    });
}

} // namespace kelvaro
