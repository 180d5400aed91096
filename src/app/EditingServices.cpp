#include "app/EditingServices.h"

#include "platform/system/PosixAppendFiles.h"

namespace kelvaro {

RecoveryReport EditingServices::recover(Services& services, const UserFolders& folders) {
    PosixAppendFiles appendFiles;
    return recoverSessions(*services.files, appendFiles, *services.random, folders.support);
}

EditingServices::EditingServices(Services& services, const UserFolders& folders, MainThread& main,
                                 LibraryStore& library, const RecoveryReport& recovered)
    : services_(services),
      library_(library),
      appendFiles_(std::make_unique<PosixAppendFiles>()),
      journal_(*services.files, *appendFiles_, main,
               newJournalPath(folders.support, *services.random)),
      store_(library, *services.files, *services.random, main),
      saver_(store_, &journal_, *services.clock,
             {[this] {
                  if (onSaverChanged) onSaverChanged();
              },
              [&library](const std::string& text) { library.showNotice(text); }}),
      presets_(*services.files, *services.random, folders.settings / "presets") {
    // The library writes what it could not write before as soon as a drive is back.
    unsavedEdits_ = library.unsavedEdits().observe([this, &library] {
        if (library.unsavedEdits().get().empty() && !saver_.isAllSaved()) saver_.retry();
    });
    library_.setHeldEdits(this);
    if (const std::string notice = recovered.notice(); !notice.empty()) library.showNotice(notice);
}

EditingServices::~EditingServices() {
    library_.setHeldEdits(nullptr);
}

// What the library has taken over and could not write either is its own to tell; what is being
// written now is on its way, and ends before the program does.
std::vector<PhotoUrl> EditingServices::unsaved() const {
    std::vector<PhotoUrl> photos;
    for (const std::filesystem::path& photo : saver_.unsavedPhotos())
        if (!saver_.problem(photo).empty()) photos.push_back(photo.string());
    return photos;
}

} // namespace kelvaro
