// What the views of the library window show, as plain values with equality: a view is redrawn only
// when its own value differs. Read from the store on the main thread; see LibraryViews.cpp.
#pragma once

#include "library/PhotoQuery.h"

#include <optional>
#include <string>
#include <vector>

namespace kelvaro {

class LibraryStore;

enum class AppearanceMode { system, light, dark };

// The window as a whole: what it shows and which alert lies over it.
struct RootState {
    bool hasFolders = false;
    bool isEditing = false;
    AppearanceMode appearance = AppearanceMode::system;
    std::optional<std::string> errorMessage;
    std::string windowTitle; // the scope's name, or the open photo's file name
    bool operator==(const RootState&) const = default;
};

// What the commands need to know whether they are enabled, and their changing titles.
struct CommandState {
    std::size_t selectedCount = 0;
    bool isEditing = false;
    bool hasClipboard = false;
    bool hasVisiblePhotos = false;
    bool selectionIsEdited = false;      // any photo of it
    bool selectionIsAllFavorite = false; // so that the command removes
    bool showsFilmstrip = true;
    bool operator==(const CommandState&) const = default;

    // The photos that photo commands act on: the open one, or the selection.
    bool hasTarget() const { return isEditing || selectedCount > 0; }
};

struct SidebarFolder {
    FolderUrl folder;
    std::string name;  // its last part, made valid UTF-8
    std::string label; // what the row reads
    std::size_t photoCount = 0;
    bool isMissing = false, isIndexing = false, isScope = false;
    bool operator==(const SidebarFolder&) const = default;
};

struct SidebarState {
    std::size_t photoCount = 0, editedCount = 0, favoriteCount = 0; // in all listed folders
    Scope scope;
    std::vector<SidebarFolder> folders;
    bool operator==(const SidebarState&) const = default;
};

// The tools above the grid.
struct GridToolsState {
    SortOrder sortOrder;
    double thumbSize = 0; // points
    bool filtersActive = false;
    bool isIndexing = false;
    std::size_t visibleCount = 0, selectedCount = 0;
    bool operator==(const GridToolsState&) const = default;
};

struct SearchState {
    std::string text;
    bool wantsFocus = false;
    bool operator==(const SearchState&) const = default;
};

struct FilterState {
    PhotoFilter filter;
    FilterOptions options;
    bool operator==(const FilterState&) const = default;
};

// The tools of the editor that depend on the library.
struct EditorTools {
    bool hasClipboard = false, showsFilmstrip = true, isFavorite = false;
    bool hasPrevious = false, hasNext = false; // in the grid's order
    std::string fileName;                      // of the open photo, made valid UTF-8
    bool operator==(const EditorTools&) const = default;
};

RootState rootState(const LibraryStore& lib);
CommandState commandState(const LibraryStore& lib);
SidebarState sidebarState(const LibraryStore& lib);
GridToolsState gridToolsState(const LibraryStore& lib);
SearchState searchState(const LibraryStore& lib);
FilterState filterState(const LibraryStore& lib);
// "1,234 photos", "3 of 1,234 selected"; in the scope of edited photos how they are grouped.
std::string gridSubtitle(const LibraryStore& lib);
EditorTools editorTools(const LibraryStore& lib);

} // namespace kelvaro
