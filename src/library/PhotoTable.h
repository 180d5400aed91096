// All photos of all folders with what is known of them, and the questions asked of them: which are
// shown, in which order, under which headings. It has neither a thread nor a lock of its own; one
// caller at a time. What is slow about texts is in FolderListing::make, for other threads.
#pragma once

#include "library/DayGroups.h"
#include "library/PhotoMeta.h"
#include "library/PhotoQuery.h"
#include "library/RowOrder.h"
#include "library/SearchVocabulary.h"
#include "library/TextNumbers.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace kelvaro {

class PhotoTable {
public:
    // Both must outlive the table.
    PhotoTable(const TextRules& rules, const LocalCalendar& calendar);

    // Replaces the folder's photos. A photo that is equal to before keeps all that is known of it;
    // of one whose file has changed the edit and the favourite stay and its metadata goes. `metas`
    // is empty or parallel to the photos, null where nothing new is known.
    void setFolder(FolderPhotos photos, std::span<const SharedMeta> metas = {});
    void removeFolder(std::string_view folder);
    // Takes single photos out of their folders' listings, whose blocks are made anew.
    void remove(std::span<const PhotoUrl> urls);
    FolderPhotos folder(std::string_view folder) const; // null when not in the table

    // Of photos that are not in the table these do nothing. Metadata that was made from another
    // size or modification date of the file is left out.
    void setMeta(std::span<const std::pair<PhotoUrl, SharedMeta>> metas);
    void setMeta(std::string_view url, SharedMeta meta);
    void setEdit(std::string_view url, bool isEdited, std::optional<FileTime> editDate);
    void setFavorite(std::string_view url, bool isFavorite);
    // Of all photos of a folder, in the place of what they had.
    void setMarks(const FolderUrl& folder, const FolderMarks& marks);

    std::size_t size() const { return rows_.size() - freeRows_.size(); }
    const Photo* photo(std::string_view url) const; // null when not in the table
    SharedMeta meta(std::string_view url) const;    // null when not known
    bool isEdited(std::string_view url) const;
    bool isFavorite(std::string_view url) const;
    // All words of the photo, folded and joined by single blanks; empty when not in the table.
    std::string searchText(std::string_view url) const;

    // Every photo of every other folder; valid until the next change.
    std::vector<KnownPhoto> facts(const std::unordered_set<FolderUrl>& unavailable = {}) const;

    LibraryView query(const LibraryQuery& request);
    // Of all photos in scope, whatever the search text and the filter.
    FilterOptions filterOptions(const LibraryQuery& request) const;

private:
    // What every view reads stands first, in one line of the cache.
    struct RowData {
        const Photo* photo = nullptr; // null: the row is free
        const FolderListing* listing = nullptr;
        FileTime taken; // or modified
        std::optional<FileTime> editDate;
        std::uint32_t index = 0; // in the listing
        bool isEdited = false, isFavorite = false;
        TextNumber camera = 0, lens = 0; // as the filter names them
        std::uint32_t focalLength = 0;   // its place in `focalLengths_`; 0: not recorded
        SharedMeta meta;
        SearchWords words{};
    };
    struct Folder {
        FolderPhotos photos;
        std::vector<Row> rows; // parallel to the listing
    };
    // One flag per row.
    using Flags = std::vector<char>;

    Row takeRow();
    void freeRow(Row row);
    void setMeta(Row row, SharedMeta meta);
    void describe(RowData& data);
    std::uint32_t focalNumber(const PhotoMeta& meta);
    std::optional<Row> find(std::string_view url) const;
    const RowData* data(std::string_view url) const;
    // The date that the photos of this order are grouped by; none for orders without dates.
    static std::optional<FileTime> sortDate(const RowData& data, SortKey key);
    static std::int64_t orderKey(const RowData& data, SortKey key);

    Flags inScope(const LibraryQuery& request) const;
    void applyFilter(const PhotoFilter& filter, Flags& flags) const;
    void applySearch(const std::string& searchText, Flags& flags) const;
    std::vector<Row> ordered(const SortOrder& order);
    void orderByEditDay(std::vector<Row>& rows, const LibraryQuery& request) const;
    std::vector<PhotoGroup> groups(const std::vector<Row>& rows, const LibraryQuery& request);
    void addPhotos(LibraryView& view, const std::vector<Row>& rows) const;

    const TextRules& rules_;
    const LocalCalendar& calendar_;
    SearchVocabulary vocabulary_;
    TextNumbers filterTexts_;
    std::vector<double> focalLengths_{0}; // all that occur
    std::unordered_map<double, std::uint32_t> focalNumbers_;
    DayGroups dayGroups_;
    std::unordered_map<std::string, Folder> folders_;
    std::vector<RowData> rows_;
    std::vector<Row> freeRows_;
    RowOrder order_;
};

} // namespace kelvaro
