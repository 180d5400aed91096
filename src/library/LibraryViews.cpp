#include "library/LibraryViews.h"

#include "library/LibraryStore.h"

#include <algorithm>
#include <fmt/format.h>

namespace kelvaro {
namespace {

bool holds(const LibraryStore::FolderSet& folders, const FolderUrl& folder) {
    return folders.find(folder) != folders.end();
}

// "1 photo", "12,345 photos".
std::string counted(std::size_t count) {
    std::string digits = fmt::format("{}", count);
    for (std::size_t at = digits.size(); at > 3; at -= 3)
        digits.insert(at - 3, 1, ',');
    return digits + (count == 1 ? " photo" : " photos");
}

std::string scopeTitle(const LibraryStore& lib) {
    if (const auto& restriction = *lib.restriction()) return restriction->title;
    switch (lib.scope()->kind) {
    case Scope::Kind::folder:
        return texts::folderName(lib.scope()->folder);
    case Scope::Kind::all:
        return "All Photos";
    case Scope::Kind::edited:
        return "Edited";
    case Scope::Kind::favorites:
        return "Favorites";
    }
    return {};
}

} // namespace

RootState rootState(const LibraryStore& lib) {
    return {.hasFolders = !lib.folders()->empty(),
            .isEditing = lib.isEditing(),
            .appearance = *lib.appearance(),
            .errorMessage = *lib.errorMessage(),
            .windowTitle =
                lib.isEditing() ? texts::displayName(**lib.openPhoto()) : scopeTitle(lib)};
}

namespace {

// Both look at the smaller side: a selection may be the whole library.
bool isAnyEdited(const LibraryStore& lib, const PhotoSet& photos) {
    if (photos.size() <= lib.editedCount())
        return std::any_of(photos.begin(), photos.end(),
                           [&](const PhotoUrl& url) { return lib.edit(url) != nullptr; });
    const auto edits = lib.edits();
    return std::any_of(edits.begin(), edits.end(),
                       [&](const PhotoUrl& url) { return photos.contains(url); });
}

bool areAllFavorite(const LibraryStore& lib, const PhotoSet& photos) {
    return !photos.empty() && photos.size() <= lib.favoriteCount() &&
           std::all_of(photos.begin(), photos.end(),
                       [&](const PhotoUrl& url) { return lib.isFavorite(url); });
}

} // namespace

CommandState commandState(const LibraryStore& lib) {
    const auto& open = lib.openPhoto().get();
    const PhotoSet targets = open ? PhotoSet{*open} : PhotoSet();
    const PhotoSet& photos = open ? targets : lib.selection().get();
    return {.selectedCount = lib.selection()->size(),
            .isEditing = lib.isEditing(),
            .hasClipboard = lib.clipboard()->has_value(),
            .hasVisiblePhotos = !lib.view().get()->photos.empty(),
            .selectionIsEdited = isAnyEdited(lib, photos),
            .selectionIsAllFavorite = areAllFavorite(lib, photos),
            .showsFilmstrip = *lib.showsFilmstrip()};
}

SidebarState sidebarState(const LibraryStore& lib) {
    SidebarState state{.photoCount = lib.photoCount(),
                       .editedCount = lib.editedCount(),
                       .favoriteCount = lib.favoriteCount(),
                       .scope = *lib.scope(),
                       .folders = {}};
    for (const FolderUrl& folder : *lib.folders()) {
        const bool isMissing = holds(*lib.missingFolders(), folder);
        const FolderPhotos photos = lib.photos(folder);
        state.folders.push_back({.folder = folder,
                                 .name = texts::folderName(folder),
                                 .label = texts::sidebarLabel(folder, isMissing),
                                 .photoCount = photos ? photos->size() : 0,
                                 .isMissing = isMissing,
                                 .isIndexing = holds(*lib.indexingFolders(), folder),
                                 .isScope = state.scope == Scope{Scope::Kind::folder, folder}});
    }
    return state;
}

GridToolsState gridToolsState(const LibraryStore& lib) {
    return {.sortOrder = *lib.sortOrder(),
            .thumbSize = *lib.thumbSize(),
            .filtersActive = lib.filter()->isActive(),
            .isIndexing = !lib.indexingFolders()->empty(),
            .visibleCount = lib.view().get()->photos.size(),
            .selectedCount = lib.selection()->size()};
}

SearchState searchState(const LibraryStore& lib) {
    return {.text = *lib.searchText(), .wantsFocus = *lib.searchFocus()};
}

FilterState filterState(const LibraryStore& lib) {
    return {.filter = *lib.filter(), .options = *lib.filterOptions()};
}

std::string gridSubtitle(const LibraryStore& lib) {
    if (lib.scope()->kind == Scope::Kind::edited) return std::string(texts::editedSubtitle);
    const std::size_t visible = lib.view().get()->photos.size();
    const std::size_t selected = lib.selection()->size();
    if (selected == 0) return counted(visible);
    return fmt::format("{} of {} selected", selected, counted(visible));
}

EditorTools editorTools(const LibraryStore& lib) {
    EditorTools tools{.hasClipboard = lib.clipboard()->has_value(),
                      .showsFilmstrip = *lib.showsFilmstrip()};
    if (!lib.isEditing()) return tools;
    const PhotoUrl& open = **lib.openPhoto();
    tools.isFavorite = lib.isFavorite(open);
    tools.fileName = texts::displayName(open);
    tools.hasPrevious = lib.neighbour(-1).has_value();
    tools.hasNext = lib.neighbour(1).has_value();
    return tools;
}

} // namespace kelvaro
