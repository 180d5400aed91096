// What the library is asked to show and what it answers, as plain values: scope, filters, sort
// order, groups, the options of the filter panel and the texts of an empty grid.
#pragma once

#include "library/FolderListing.h"
#include "library/PhotoMeta.h"
#include "platform/PhotoKinds.h"

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace kelvaro {

struct Scope {
    enum class Kind { folder, all, edited, favorites };
    Kind kind = Kind::all;
    FolderUrl folder; // for Kind::folder alone

    bool operator==(const Scope&) const = default;
};

// Within a set any value will do, every set that is not empty must agree. A photo without a value
// passes no set of that group.
struct PhotoFilter {
    std::set<std::string> cameras, lenses;
    std::set<double> focalLengths; // mm, as recorded
    std::set<PhotoKind> formats;

    bool isActive() const {
        return !cameras.empty() || !lenses.empty() || !focalLengths.empty() || !formats.empty();
    }
    bool operator==(const PhotoFilter&) const = default;
};

// Photos that were picked out by something else than the library's own questions, shown alone until
// they are left. A value: what it asks depends on nothing that changes, and any thread may ask it.
struct PhotoRestriction {
    std::string title;                                         // "ƒ/2.8 · 2024"
    std::function<bool(const Photo&, const PhotoMeta*)> holds; // no metadata: null
};
using SharedRestriction = std::shared_ptr<const PhotoRestriction>;

enum class SortKey { dateTaken, modified, created, name, size };
inline constexpr std::array kSortKeys{SortKey::dateTaken, SortKey::modified, SortKey::created,
                                      SortKey::name, SortKey::size};
std::string_view rawValue(SortKey key); // "dateTaken"
std::string_view title(SortKey key);    // "Date Taken", shown after "Sort by "
std::optional<SortKey> sortKeyFrom(std::string_view rawValue);

struct SortOrder {
    SortKey key = SortKey::dateTaken;
    bool ascending = false; // the newest first

    bool operator==(const SortOrder&) const = default;
};
// The form kept in the settings; a text that is none gives the default order.
std::string storedText(const SortOrder& order);
SortOrder sortOrderFrom(std::string_view storedText);

struct PhotoGroup {
    std::size_t start = 0; // position of the group's first photo
    std::string title;

    bool operator==(const PhotoGroup&) const = default;
};

struct LibraryQuery {
    Scope scope;
    std::string searchText;
    PhotoFilter filter;
    SortOrder order;
    bool monthGroups = false;                  // months instead of days, for small thumbnails
    FileTime now;                              // tells today from other days
    std::unordered_set<FolderUrl> unavailable; // folders whose photos are not shown
    SharedRestriction only;                    // null: every photo in scope
};

// What is known of one photo of the library. The pointers hold for as long as whoever gave them
// says.
struct KnownPhoto {
    const Photo* photo = nullptr;
    const PhotoMeta* meta = nullptr; // null: not read yet
    bool isEdited = false, isFavorite = false;
    std::optional<FileTime> editDate; // of the latest edit; none where it is unknown
};

// What is marked in one folder, by file name.
struct FolderMarks {
    std::unordered_map<std::string, std::optional<FileTime>> editDates; // of edited photos
    std::unordered_set<std::string> favorites;
};

// A self-contained answer: it stays good while the table changes.
struct LibraryView {
    std::vector<const Photo*> photos;  // in the order shown; owned by `folders`
    std::vector<PhotoGroup> groups;    // none when the order has no dates: by name and by size
    std::vector<FolderPhotos> folders; // every folder that a photo comes from

    // Where the photo stands in `photos`; compares no names but those of its folder.
    std::optional<std::size_t> positionOf(const PhotoUrl& photo) const;
};

// The values found in the photos of a scope, each once, in the order shown.
struct FilterOptions {
    std::vector<std::string> cameras, lenses; // localized standard order
    std::vector<double> focalLengths;         // mm, ascending
    std::vector<PhotoKind> formats;           // RAW first

    bool operator==(const FilterOptions&) const = default;
};

// Why a grid is empty, told in the order in which the reasons are looked at.
struct EmptyState {
    std::string text;
    std::string button; // empty when there is none
    bool operator==(const EmptyState&) const = default;
};
struct EmptyReasons {
    bool hasFolders = false;
    bool isFolderUnavailable = false; // the scope's folder
    bool hasFavorites = false, hasEdited = false;
};
EmptyState emptyState(const LibraryQuery& request, const EmptyReasons& reasons);

namespace texts {
inline constexpr std::string_view searchPlaceholder =
    "Search names and photo info: camera, lens, 35mm, f/1.8, iso 400, 1/250, 2024, March… (⌘F)";
inline constexpr std::string_view filterNote =
    "Select any matching values within a group. Groups combine. Focal lengths are actual lens mm, "
    "not 35 mm equivalent.";
inline constexpr std::string_view filterButton = "Filter Photos";
inline constexpr std::string_view filterButtonActive = "Filters Active";
inline constexpr std::string_view rawFormats = "RAW files";
inline constexpr std::string_view imageFormats = "JPEG / HEIC / other images";
inline constexpr std::string_view editedSubtitle = "Edited photos are grouped by latest edit date";
inline constexpr std::string_view editDateUnknown = "Edit date unknown";
inline constexpr std::string_view sortBy = "Sort by ";
} // namespace texts

} // namespace kelvaro
