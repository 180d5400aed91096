// The words of the library for people: alerts, notices and labels. Key symbols and names of the
// system stand here as they are kept; what is shown goes through the text service of the platform.
// Names of files are made valid UTF-8 where they stand in a sentence. Pure functions.
#pragma once

#include "library/Photo.h"

#include <string>
#include <string_view>
#include <vector>

namespace kelvaro::texts {

// A question with one button that goes on and one that does not.
struct Alert {
    std::string title{}, text{}; // the title may be empty
    std::string confirm{}, cancel{};
    bool operator==(const Alert&) const = default;
};

inline constexpr std::string_view chooseFolder =
    "Choose a folder of photos. Kelvaro never modifies your originals.";
inline constexpr std::string_view addFolder = "Add a folder of photos";
inline constexpr std::string_view removeFolder = "Remove from Kelvaro";
inline constexpr std::string_view missingFolderSymbol = "externaldrive.badge.xmark";
inline constexpr std::string_view favorite = "Favorite";
inline constexpr std::string_view removeFavorite = "Remove from Favorites";
inline constexpr std::string_view removeFavoriteTip = "Remove from Favorites (.)";
inline constexpr std::string_view moveToTrash = "Move to Trash…";
inline constexpr std::string_view photosToTrash = "Photos to Trash…";
inline constexpr std::string_view backToLibrary = "Back to Library (Esc)";

// The folder's name as people know it: the last part of its path.
std::string folderName(std::string_view folder);
// The file name for a sentence, and a row of the sidebar for a folder.
std::string displayName(std::string_view url);
std::string sidebarLabel(std::string_view folder, bool isMissing);

// Before moving photos (one or more) to the Trash, and for those that could not be moved there.
Alert trashQuestion(const std::vector<PhotoUrl>& photos);
Alert deleteQuestion(const std::vector<PhotoUrl>& photos);
std::string couldNotDelete(const std::vector<PhotoUrl>& photos);

// Failures of reading a folder's edits or favourites, one line each, and several of them together.
std::string cannotReadEdits(std::string_view folder);
std::string cannotReadFavorites(std::string_view folder);
std::string readFailures(const std::vector<std::string>& lines);

// Photos that were found in a new place, after their edits were copied there.
std::string movedNotice(std::size_t count);

std::string favoritesNotSaved(const std::vector<FolderUrl>& folders);
// Before quitting; at least one of the lists has folders.
Alert unsavedQuestion(const std::vector<FolderUrl>& edits, const std::vector<FolderUrl>& favorites);

} // namespace kelvaro::texts
