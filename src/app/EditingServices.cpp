#include "app/EditingServices.h"

#include "platform/system/PosixAppendFiles.h"

#include <algorithm>
#include <utility>

namespace kelvaro {

RecoveryReport EditingServices::recover(Services& services, const UserFolders& folders) {
    PosixAppendFiles appendFiles;
    return recoverSessions(*services.files, appendFiles, *services.random, folders.support);
}

EditingServices::EditingServices(Services& services, const UserFolders& folders, MainThread& main,
                                 LibraryStore& library, const RecoveryReport& recovered)
    : services_(services),
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
    // Nor does it know of what could not even be compared with the sidecar.
    foldersMissing_ = library.missingFolders().observe([this, &library] {
        const std::size_t missing = library.missingFolders().get().size();
        if (missing < std::exchange(missingFolders_, missing)) saver_.retry();
    });
    if (const std::string notice = recovered.notice(); !notice.empty()) library.showNotice(notice);
}

std::optional<texts::Alert> EditingServices::quitCheck() const {
    std::vector<FolderUrl> folders;
    for (const auto& photo : saver_.unsavedPhotos()) {
        if (saver_.problem(photo).empty()) continue; // is being written
        const FolderUrl folder = photo.parent_path().string();
        if (std::ranges::count(folders, folder) == 0) folders.push_back(folder);
    }
    if (folders.empty()) return std::nullopt;
    return texts::unsavedQuestion(folders, {});
}

EditingServices::~EditingServices() = default;

} // namespace kelvaro
