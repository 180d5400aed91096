#include "editor/EditSaver.h"

namespace kelvaro {

const SharedEdit& EditSaver::Record::latest() const {
    if (waiting) return *waiting;
    return writing ? *writing : onDisk;
}

EditSaver::EditSaver(EditStore& store, SessionJournal* journal, const Clock& clock, Hooks hooks)
    : store_(store),
      journal_(journal),
      clock_(clock),
      hooks_(std::move(hooks)),
      self_(std::make_shared<EditSaver*>(this)) {
    if (!journal_) return;
    journal_->setSource([this](bool all) { return entries(all); },
                        [this](const Failure& failure) {
                            hooks_.notice("Changes can't be protected against a crash now: " +
                                          failure.message);
                        });
}

EditSaver::~EditSaver() {
    *self_ = nullptr;
    if (!journal_) return;
    if (isAllSaved())
        journal_->remove();
    else
        journal_->flush();
    journal_->setSource({}, {});
}

void EditSaver::opened(const std::filesystem::path& photo, const SharedEdit& onDisk) {
    const auto [at, isNew] = records_.try_emplace(photo);
    if (isNew || at->second.isSaved()) at->second.onDisk = onDisk;
}

void EditSaver::setLive(std::filesystem::path photo, std::function<SharedEdit()> live) {
    livePhoto_ = std::move(photo);
    live_ = std::move(live);
    liveDirty_ = false;
}

void EditSaver::liveChanged() {
    liveDirty_ = true;
    if (journal_) journal_->changed();
}

void EditSaver::endLive() {
    live_ = nullptr;
    liveDirty_ = false;
}

void EditSaver::save(const std::filesystem::path& photo, const SharedEdit& edit) {
    Record& record = records_[photo];
    liveDirty_ = liveDirty_ && photo != livePhoto_;
    if (record.latest() == edit && !record.failure) {
        record.isDirty = true; // a drag that came back to where it began
        return tellJournal();
    }
    record.waiting = edit;
    record.changedAt = clock_.wallSeconds();
    record.isDirty = true;
    if (journal_) journal_->changedNow();
    if (!record.writing) begin(photo, record);
}

void EditSaver::begin(const std::filesystem::path& photo, Record& record) {
    record.failure.reset();
    record.writing = *std::exchange(record.waiting, std::nullopt);
    store_.save({photo, *record.writing, record.onDisk, record.changedAt},
                [self = std::weak_ptr(self_), photo](Result<SaveOutcome> outcome) {
                    const auto alive = self.lock();
                    if (alive && *alive) (*alive)->ended(photo, std::move(outcome));
                });
}

void EditSaver::ended(const std::filesystem::path& photo, Result<SaveOutcome> outcome) {
    Record& record = records_[photo];
    SharedEdit written = *std::exchange(record.writing, std::nullopt);
    if (outcome) {
        record.onDisk = std::move(written);
        record.failure.reset();
        record.isDirty = true; // the journal learns that it may let go
        if (!outcome->keptBeside.empty()) {
            hooks_.notice(keptBesideNotice(photo, outcome->keptBeside));
        }
        if (record.waiting) return begin(photo, record);
    } else {
        // A newer edit takes the place of the one that failed, and is tried at once.
        if (record.waiting) return begin(photo, record);
        record.waiting = std::move(written);
        record.failure = outcome.error();
        hooks_.notice(outcome.error().message);
    }
    tellJournal();
    settle(record);
    hooks_.changed();
}

void EditSaver::settle(Record& record) {
    for (const auto& done : std::exchange(record.settled, {}))
        done();
}

void EditSaver::adoptedFromDisk(const std::filesystem::path& photo, const SharedEdit& onDisk) {
    Record& record = records_[photo];
    record.onDisk = onDisk;
    record.waiting.reset();
    record.failure.reset();
}

void EditSaver::keepBeside(const std::filesystem::path& photo, const SharedEdit& edit) {
    store_.keep(photo, edit, [self = std::weak_ptr(self_), photo](Result<std::string> name) {
        const auto alive = self.lock();
        if (!alive || !*alive) return;
        (*alive)->hooks_.notice(name ? keptBesideNotice(photo, *name) : name.error().message);
    });
}

void EditSaver::retry() {
    for (auto& [photo, record] : records_)
        if (record.failure && record.waiting) begin(photo, record);
}

void EditSaver::discardUnsaved() {
    for (auto& [photo, record] : records_) {
        record.waiting.reset();
        record.failure.reset();
        record.isDirty = true; // the journal forgets its edit
    }
    liveDirty_ = false;
    tellJournal();
}

bool EditSaver::isSaved(const std::filesystem::path& photo) const {
    const auto found = records_.find(photo);
    return found == records_.end() || found->second.isSaved();
}

bool EditSaver::isAllSaved() const {
    return !liveDirty_ && unsavedPhotos().empty();
}

std::vector<std::filesystem::path> EditSaver::unsavedPhotos() const {
    std::vector<std::filesystem::path> photos;
    for (const auto& [photo, record] : records_)
        if (!record.isSaved()) photos.push_back(photo);
    return photos;
}

std::optional<SharedEdit> EditSaver::unsavedEdit(const std::filesystem::path& photo) const {
    const auto found = records_.find(photo);
    if (found == records_.end() || found->second.isSaved()) return std::nullopt;
    return found->second.latest();
}

std::string EditSaver::problem(const std::filesystem::path& photo) const {
    const auto found = records_.find(photo);
    return found != records_.end() && found->second.failure ? found->second.failure->message : "";
}

void EditSaver::whenSettled(const std::filesystem::path& photo, std::function<void()> done) {
    const auto found = records_.find(photo);
    if (found == records_.end() || !found->second.writing) return done();
    found->second.settled.push_back(std::move(done));
}

void EditSaver::tellJournal() {
    if (journal_) journal_->changed();
}

// What the user holds counts more than what was last handed to the disk.
std::vector<SessionJournal::Entry> EditSaver::entries(bool all) {
    std::vector<SessionJournal::Entry> list;
    for (auto& [photo, record] : records_) {
        const bool isLive = live_ && liveDirty_ && photo == livePhoto_;
        const bool isUnsaved = isLive || !record.isSaved();
        if (!(all ? isUnsaved : isLive || record.isDirty)) continue;
        record.isDirty = false;
        SessionJournal::Entry entry{photo, std::nullopt, {record.onDisk}, clock_.wallSeconds()};
        if (isUnsaved) entry.edit = isLive ? live_() : record.latest();
        if (record.writing) entry.known.push_back(*record.writing);
        list.push_back(std::move(entry));
    }
    return list;
}

} // namespace kelvaro
