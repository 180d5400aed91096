// Made-up photos and tables for tests of the library.
#pragma once

#include "library/PhotoTable.h"
#include "platform/system/IcuCalendar.h"
#include "platform/system/IcuTextRules.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kelvaro::test {

inline constexpr std::int64_t kSecond = 1'000'000'000;

// An instant as UTC shows it.
inline FileTime utc(int year, int month, int day, int hour = 12, int minute = 0, int second = 0) {
    return {secondsAsUtc({year, month, day, hour, minute, second}) * kSecond};
}

inline Photo photoAt(const std::string& url, FileTime modified = utc(2020, 1, 1),
                     std::int64_t size = 1000) {
    const auto kind = photoKind(url).value_or(PhotoKind::image);
    return makePhoto(folderOf(url), fileNameOf(url), kind, size, modified, modified);
}

// What the rules say in one language and time zone, and a table of photos that follow them.
struct Library {
    explicit Library(const std::string& locale = "en", const std::string& zone = "UTC")
        : rules(makeIcuTextRules(locale)),
          calendar(makeIcuCalendar(zone)),
          table(*rules, *calendar) {}

    void setFolder(const std::string& folder, std::vector<Photo> photos) {
        table.setFolder(
            FolderListing::make(folder, std::move(photos), *rules, table.folder(folder)));
    }
    // One folder "/p" of files with these names.
    void setNames(const std::vector<std::string>& names) {
        std::vector<Photo> photos;
        for (const std::string& name : names)
            photos.push_back(photoAt("/p/" + name));
        setFolder("/p", std::move(photos));
    }
    void setMeta(const std::string& url, PhotoMeta meta) {
        const Photo& photo = *table.photo(url);
        meta.size = photo.fileSize;
        meta.mtime = photo.modified;
        table.setMeta(url, std::make_shared<const PhotoMeta>(std::move(meta)));
    }
    std::vector<std::string> names(const LibraryQuery& request) {
        std::vector<std::string> found;
        for (const Photo* photo : table.query(request).photos)
            found.emplace_back(fileNameOf(photo->url));
        return found;
    }
    // Whether the only photo "/p/…" of the table is found.
    bool finds(const std::string& query) {
        LibraryQuery request;
        request.searchText = query;
        return !table.query(request).photos.empty();
    }

    std::unique_ptr<TextRules> rules;
    std::unique_ptr<LocalCalendar> calendar;
    PhotoTable table;
};

using Names = std::vector<std::string>;

} // namespace kelvaro::test
