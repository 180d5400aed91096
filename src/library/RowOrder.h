// The rows of a table in the order of their names and of one more key, kept up to date instead of
// sorted anew: rows that come and go are merged into what is in order already. Not thread-safe.
#pragma once

#include "library/FolderListing.h"
#include "library/PhotoQuery.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace kelvaro {

using Row = std::uint32_t;

class RowOrder {
public:
    // What a row is called; `listing` is null for a row that is free.
    struct Name {
        const FolderListing* listing = nullptr;
        std::uint32_t index = 0;
    };

    // The row is new or was given another photo.
    void renamed(Row row);
    // Some value that rows are sorted by, other than the name, has changed.
    void valuesChanged() { key_.reset(); }

    // All rows that `nameOf` names, sorted by name: localized standard order, then the extension,
    // then the path.
    const std::vector<Row>& byName(const std::function<Name(Row)>& nameOf);
    // All rows sorted as asked. Rows with equal values stand in name order either way; in
    // descending name order all is reversed.
    std::vector<Row> sorted(const SortOrder& order, const std::function<Name(Row)>& nameOf,
                            const std::function<std::int64_t(Row, SortKey)>& valueOf);

private:
    struct Entry {
        std::int64_t value;
        std::uint32_t rank; // in name order
        Row row;
    };

    void sortByValue(SortKey key, const std::function<std::int64_t(Row, SortKey)>& valueOf);

    std::vector<Row> byName_;
    std::vector<Row> renamed_;
    std::vector<char> isRenamed_; // by row
    std::vector<Entry> byValue_;
    std::optional<SortKey> key_; // of byValue_; none when it is stale
};

} // namespace kelvaro
