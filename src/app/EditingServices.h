// What the window's editor stands on: saving through the library with the session's journal behind
// it, recovery of sessions that ended badly, presets. Made on the main thread after the library and
// ended before it.
#pragma once

#include "app/Services.h"
#include "editor/EditSaver.h"
#include "editor/JournalRecovery.h"
#include "editor/LibraryEditStore.h"
#include "editor/Preset.h"
#include "platform/UserFolders.h"

namespace kelvaro {

class EditingServices final : private HeldEdits {
public:
    // Puts back what earlier sessions could not save; before the library reads its folders.
    static RecoveryReport recover(Services& services, const UserFolders& folders);

    // All outlive the object. What `recover` told is shown as a notice of the library.
    EditingServices(Services& services, const UserFolders& folders, MainThread& main,
                    LibraryStore& library, const RecoveryReport& recovered);
    ~EditingServices() override;

    EditSaver& saver() { return saver_; }
    PresetFolder& presets() { return presets_; }
    Services& services() { return services_; }
    // What the library tells of just now was given to it here.
    bool isWritingNow() const { return store_.isGiving(); }

    // Something is saved, or failed to be.
    std::function<void()> onSaverChanged;

private:
    std::vector<PhotoUrl> unsaved() const override;
    void retry() override { saver_.retry(); }
    void discard() override { saver_.discardUnsaved(); }

    Services& services_;
    LibraryStore& library_;
    std::unique_ptr<AppendFiles> appendFiles_;
    SessionJournal journal_;
    LibraryEditStore store_;
    EditSaver saver_;
    PresetFolder presets_;
    Subscription unsavedEdits_;
};

} // namespace kelvaro
