// The store's fields and view states, as everyone else reads them.
#include "library/LibraryParts.h"

namespace kelvaro {

LibraryStore::Parts::Slices::Slices(const LibraryStore& lib, const Changes& changes,
                                    MainThread& main)
    : root(lib, changes, main, kelvaro::rootState),
      command(lib, changes, main, kelvaro::commandState),
      sidebar(lib, changes, main, kelvaro::sidebarState),
      gridTools(lib, changes, main, kelvaro::gridToolsState),
      search(lib, changes, main, kelvaro::searchState),
      filter(lib, changes, main, kelvaro::filterState),
      subtitle(lib, changes, main, kelvaro::gridSubtitle),
      editor(lib, changes, main, kelvaro::editorTools) {}

const Changes& LibraryStore::changes() const {
    return parts_->changes;
}

#define KELVARO_FIELD(type, name)                                                                  \
    const Published<type>& LibraryStore::name() const {                                            \
        return parts_->name;                                                                       \
    }
KELVARO_FIELD(std::vector<FolderUrl>, folders)
KELVARO_FIELD(LibraryStore::FolderSet, missingFolders)
KELVARO_FIELD(LibraryStore::FolderSet, indexingFolders)
KELVARO_FIELD(bool, isReading)
KELVARO_FIELD(LibraryStore::FolderSet, unsavedFavorites)
KELVARO_FIELD(LibraryStore::FolderSet, unsavedEdits)
KELVARO_FIELD(std::uint64_t, version)
KELVARO_FIELD(std::uint64_t, favoriteRevision)
KELVARO_FIELD(std::uint64_t, metaRevision)
KELVARO_FIELD(std::shared_ptr<const LibraryView>, view)
KELVARO_FIELD(FilterOptions, filterOptions)
KELVARO_FIELD(Scope, scope)
KELVARO_FIELD(SharedRestriction, restriction)
KELVARO_FIELD(PhotoFilter, filter)
KELVARO_FIELD(std::string, searchText)
KELVARO_FIELD(bool, searchFocus)
KELVARO_FIELD(SortOrder, sortOrder)
KELVARO_FIELD(double, thumbSize)
KELVARO_FIELD(PhotoSet, selection)
KELVARO_FIELD(std::optional<PhotoUrl>, scrollTarget)
KELVARO_FIELD(std::optional<PhotoUrl>, openPhoto)
KELVARO_FIELD(std::optional<InfoRequest>, infoRequest)
KELVARO_FIELD(std::optional<PhotoInfo>, info)
KELVARO_FIELD(std::optional<ExportRequest>, exportRequest)
KELVARO_FIELD(std::optional<Adjustments>, clipboard)
KELVARO_FIELD(std::uint64_t, pasteCount)
KELVARO_FIELD(bool, showsFilmstrip)
KELVARO_FIELD(AppearanceMode, appearance)
KELVARO_FIELD(std::optional<Notice>, notice)
KELVARO_FIELD(std::optional<std::string>, errorMessage)
#undef KELVARO_FIELD

#define KELVARO_SLICE(State, name, field)                                                          \
    const LibrarySlice<State>& LibraryStore::name() const {                                        \
        return parts_->slices->field;                                                              \
    }
KELVARO_SLICE(RootState, rootState, root)
KELVARO_SLICE(CommandState, commandState, command)
KELVARO_SLICE(SidebarState, sidebarState, sidebar)
KELVARO_SLICE(GridToolsState, gridToolsState, gridTools)
KELVARO_SLICE(SearchState, searchState, search)
KELVARO_SLICE(FilterState, filterState, filter)
KELVARO_SLICE(std::string, gridSubtitle, subtitle)
KELVARO_SLICE(EditorTools, editorTools, editor)
#undef KELVARO_SLICE

} // namespace kelvaro
