#include "library/LibraryTexts.h"

#include "base/Utf8.h"

#include <fmt/format.h>

namespace kelvaro::texts {
namespace {

std::string names(const std::vector<std::string>& urls) {
    std::string lines;
    for (const std::string& url : urls) {
        if (!lines.empty()) lines += '\n';
        lines += displayName(url);
    }
    return lines;
}

std::string inQuotes(std::string_view url) {
    return fmt::format("“{}”", displayName(url));
}

} // namespace

std::string displayName(std::string_view url) {
    const std::string_view name = fileNameOf(url);
    return asUtf8(name.empty() ? url : name);
}

std::string folderName(std::string_view folder) {
    return displayName(folder);
}

std::string sidebarLabel(std::string_view folder, bool isMissing) {
    return folderName(folder) + (isMissing ? " — not available. Is the drive connected?" : "");
}

Alert trashQuestion(const std::vector<PhotoUrl>& photos) {
    Alert alert{.confirm = "Move to Trash", .cancel = "Cancel"};
    if (photos.size() == 1) {
        alert.title = fmt::format("Move {} to the Trash?", inQuotes(photos.front()));
        alert.text = "You can put it back from the Trash. Its edits are kept and return with it.";
    } else {
        alert.title = fmt::format("Move {} photos to the Trash?", photos.size());
        alert.text =
            "You can put them back from the Trash. Their edits are kept and return with them.";
    }
    return alert;
}

Alert deleteQuestion(const std::vector<PhotoUrl>& photos) {
    const std::string who =
        photos.size() == 1 ? inQuotes(photos.front()) : fmt::format("{} photos", photos.size());
    return {.text = who + " can't be moved to the Trash."
                          "\n\nDelete immediately instead? This can't be undone.",
            .confirm = "Delete Immediately",
            .cancel = "Cancel"};
}

std::string couldNotDelete(const std::vector<PhotoUrl>& photos) {
    return "Couldn't delete:\n" + names(photos);
}

std::string cannotReadEdits(std::string_view folder) {
    return "Couldn't read edits in " + folderName(folder);
}

std::string cannotReadFavorites(std::string_view folder) {
    return "Couldn't read favorites in " + folderName(folder);
}

std::string readFailures(const std::vector<std::string>& lines) {
    if (lines.size() == 1) return lines.front();
    return fmt::format("Couldn't read some edits:\n{}", fmt::join(lines, "\n"));
}

std::string movedNotice(std::size_t count) {
    if (count == 1) return "A moved photo has its edits again";
    return fmt::format("{} moved photos have their edits again", count);
}

std::string favoritesNotSaved(const std::vector<FolderUrl>& folders) {
    return "Favorites haven't been saved:\n" + names(folders);
}

Alert unsavedQuestion(const std::vector<FolderUrl>& edits,
                      const std::vector<FolderUrl>& favorites) {
    std::string text;
    if (!edits.empty()) text = "Edits haven't been saved:\n" + names(edits);
    if (!edits.empty() && !favorites.empty()) text += "\n\n";
    if (!favorites.empty()) text += favoritesNotSaved(favorites);
    return {.title = "Some changes haven't been saved",
            .text = text + "\n\nKeep Kelvaro open to reconnect the drive or fix access, then try "
                           "quitting again.",
            .confirm = "Quit Without Saving",
            .cancel = "Keep Open"};
}

} // namespace kelvaro::texts
