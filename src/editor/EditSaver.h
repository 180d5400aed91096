// Brings recipes to the disk: one write at a time for each photo, the latest next, again when a
// drive comes back, and the journal told of everything that is not there yet. Main thread.
#pragma once

#include "base/Clock.h"
#include "editor/EditStore.h"
#include "editor/SessionJournal.h"

#include <map>
#include <optional>

namespace kelvaro {

class EditSaver {
public:
    struct Hooks {
        std::function<void()> changed;                // something is saved, or failed to be
        std::function<void(std::string text)> notice; // a sentence for the user
    };

    // `journal` may be null. All outlive the saver; so must the store's answers.
    EditSaver(EditStore& store, SessionJournal* journal, const Clock& clock, Hooks hooks);
    ~EditSaver();
    EditSaver(const EditSaver&) = delete;
    EditSaver& operator=(const EditSaver&) = delete;

    // `onDisk` is what the photo's sidecar holds.
    void opened(const std::filesystem::path& photo, const SharedEdit& onDisk);
    // The edit in the user's hands, which changes without being finished; asked by the journal.
    void setLive(std::filesystem::path photo, std::function<SharedEdit()> live);
    void liveChanged();
    void endLive();

    void save(const std::filesystem::path& photo, const SharedEdit& edit);
    // Another program's version of the photo has been read; nothing of ours is waiting for it.
    void adoptedFromDisk(const std::filesystem::path& photo, const SharedEdit& onDisk);
    // Puts another version beside the photo's sidecar and names it in a notice.
    void keepBeside(const std::filesystem::path& photo, const SharedEdit& edit);
    // What could not be written is tried again: a drive is back.
    void retry();
    // Drops what could not be written, in the journal too.
    void discardUnsaved();

    bool isSaved(const std::filesystem::path& photo) const;
    bool isAllSaved() const;
    std::vector<std::filesystem::path> unsavedPhotos() const;
    // The photo's edit that is not on the disk yet; none when it is.
    std::optional<SharedEdit> unsavedEdit(const std::filesystem::path& photo) const;
    // Why the photo's last write failed; empty when it did not.
    std::string problem(const std::filesystem::path& photo) const;
    // Calls back once the photo is saved or its write has failed; now, where that is so already.
    void whenSettled(const std::filesystem::path& photo, std::function<void()> done);

private:
    struct Record {
        SharedEdit onDisk;
        std::optional<SharedEdit> writing, waiting; // on its way; what comes after it
        std::optional<Failure> failure;             // of the last write; `waiting` holds its edit
        double changedAt = 0;
        bool isDirty = false; // the journal has not seen the latest
        std::vector<std::function<void()>> settled;

        bool isSaved() const { return !writing && !waiting; }
        const SharedEdit& latest() const;
    };
    void begin(const std::filesystem::path& photo, Record& record);
    void ended(const std::filesystem::path& photo, Result<SaveOutcome> outcome);
    void settle(Record& record);
    void tellJournal();
    std::vector<SessionJournal::Entry> entries(bool all);

    EditStore& store_;
    SessionJournal* journal_;
    const Clock& clock_;
    Hooks hooks_;
    std::map<std::filesystem::path, Record> records_;
    std::filesystem::path livePhoto_;
    std::function<SharedEdit()> live_;
    bool liveDirty_ = false;
    std::shared_ptr<EditSaver*> self_; // emptied at the end, for answers that come after it
};

} // namespace kelvaro
