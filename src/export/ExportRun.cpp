#include "export/ExportRun.h"

#include "export/Leftovers.h"
#include "platform/BackgroundThread.h"

namespace kelvaro {

namespace {

// What is assumed of a photo whose size its file does not tell.
constexpr std::int64_t kUnknownPixels = 50'000'000;

std::int64_t pixelsOf(const PhotoProperties& properties) {
    const auto size = properties.uprightSize();
    return size ? std::int64_t(size->width) * size->height : kUnknownPixels;
}

} // namespace

Exporter::Run::Run(Exporter& owner, std::vector<ExportJob> jobs, const ExportSettings& settings,
                   ProtectedPaths protectedPaths, Options options)
    : owner_(owner),
      jobs_(std::move(jobs)),
      settings_(settings),
      protected_(std::move(protectedPaths)),
      options_(std::move(options)),
      begun_(owner.parts_.clock.monotonicSeconds()) {
    // What is in progress when the user takes up a slider must not cost him frames.
    if (owner.parts_.yields)
        for (SerialQueue& worker : workers_)
            worker.post(runThisThreadInBackground);
    coordinator_.post([this] { coordinate(); });
}

// Jobs that arrive after the run's end, or the exporter's, find nobody.
void Exporter::Run::postToOwner(std::function<void(Exporter&)> job) {
    std::weak_ptr<bool> alive = alive_;
    Exporter* owner = &owner_;
    owner_.mainThread_.post([alive, owner, job = std::move(job)] {
        if (alive.lock()) job(*owner);
    });
}

void Exporter::Run::coordinate() {
    const auto& clock = owner_.parts_.clock;
    std::optional<std::string> notice;
    if (auto opened = openFolder(); !opened) {
        notice = exportText::cannotCreate(folder().filename().string(), opened.error().message);
    } else {
        ExportNames names(owner_.parts_.files, folder(),
                          std::string(fileExtension(settings_.format)), settings_.replaceExisting,
                          protected_);
        exportInTurn(names);
    }
    for (SerialQueue& worker : workers_)
        worker.waitUntilIdle();
    const double elapsed = clock.monotonicSeconds() - begun_;
    postToOwner(
        [notice = std::move(notice), elapsed](Exporter& owner) { owner.ended(notice, elapsed); });
}

Result<void> Exporter::Run::openFolder() {
    const ExportParts& parts = owner_.parts_;
    if (auto made = parts.files.createFolder(folder()); !made) return made;
    removeLeftovers(parts.files, folder(), parts.clock.wallSeconds());
    return {};
}

void Exporter::Run::exportInTurn(ExportNames& names) {
    for (std::size_t i = 0; i < jobs_.size(); ++i) {
        const auto worker = freeWorker();
        const bool goesOn =
            worker && !cancellation_.isCancelled() && beginWhenAdmitted(i, *worker, names);
        if (!goesOn) report({i, {}, {}, 0});
    }
}

bool Exporter::Run::beginWhenAdmitted(std::size_t index, std::size_t worker, ExportNames& names) {
    const ExportParts& parts = owner_.parts_;
    const auto& photo = jobs_[index].photo;
    auto properties = parts.properties.read(photo);
    PhotoProperties known = properties ? std::move(*properties) : PhotoProperties();
    auto admission =
        parts.work.waitForAdmission(renderEstimateBytes(pixelsOf(known)), &cancellation_);
    if (!admission || cancellation_.isCancelled()) return false;
    begin(index, worker, std::move(*admission), names.next(photo.stem().string()),
          std::move(known));
    return true;
}

// Waits for one; none once the run is cancelled.
std::optional<std::size_t> Exporter::Run::freeWorker() {
    std::unique_lock guard(lock_);
    std::size_t found = workerCount;
    freed_.wait(guard, [&] {
        found = std::size_t(std::find(busy_.begin(), busy_.end(), false) - busy_.begin());
        return found < workerCount || cancellation_.isCancelled();
    });
    return found < workerCount ? std::optional(found) : std::nullopt;
}

void Exporter::Run::setBusy(std::size_t worker, bool busy) {
    {
        const std::lock_guard guard(lock_);
        busy_[worker] = busy;
    }
    freed_.notify_all();
}

void Exporter::Run::begin(std::size_t index, std::size_t worker, RenderWork::Admission admission,
                          ExportNames::Target target, PhotoProperties properties) {
    setBusy(worker, true);
    // Shared only because queued functions must be copyable.
    auto held = std::make_shared<std::optional<RenderWork::Admission>>(std::move(admission));
    workers_[worker].post([this, index, worker, held, target = std::move(target),
                           properties = std::move(properties)] {
        PhotoOutcome outcome = exported(index, target, properties);
        owner_.parts_.brushes.clear();
        held->reset();
        report(std::move(outcome));
        setBusy(worker, false);
    });
}

Exporter::PhotoOutcome Exporter::Run::exported(std::size_t index, const ExportNames::Target& target,
                                               const PhotoProperties& properties) const {
    const auto& clock = owner_.parts_.clock;
    const double begun = clock.monotonicSeconds();
    const PhotoExport steps{owner_.parts_, settings_, options_.verifies, options_.times,
                            &cancellation_};
    auto result = steps.run(jobs_[index], target, properties);
    PhotoOutcome outcome{index, {}, {}, clock.monotonicSeconds() - begun};
    if (result)
        outcome.file = std::move(*result);
    else if (!result.error().isCancelled)
        outcome.failure =
            ExportFailure{jobs_[index].photo.filename().string(),
                          std::string(description(result.error().error)), result.error().detail};
    return outcome;
}

void Exporter::Run::report(PhotoOutcome outcome) {
    postToOwner([outcome = std::move(outcome), tell = options_.onPhoto](Exporter& owner) {
        owner.photoEnded(outcome);
        if (tell) tell(outcome);
    });
}

} // namespace kelvaro
