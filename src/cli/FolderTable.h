// The photos of folders named on a command line, read into a table with their edits, favourites and
// metadata. Reading blocks and uses all processors for the metadata.
#pragma once

#include "app/Services.h"
#include "library/FolderScan.h"
#include "library/MetaReader.h"
#include "library/PhotoTable.h"

#include <atomic>
#include <filesystem>
#include <string>
#include <vector>

namespace kelvaro {

class FolderTable {
public:
    // The services must outlive the table.
    explicit FolderTable(Services& services);

    // Adds a folder's photos, not those of folders inside it; one that is named again changes
    // nothing. Files whose metadata cannot be read are there without.
    Result<void> add(const std::filesystem::path& folder);
    // Adds all of them; a sentence on standard error for each folder, edit or favourites file that
    // could not be read. True when there was none.
    bool addAll(const std::vector<std::filesystem::path>& folders);

    PhotoTable& table() { return table_; }
    const PhotoTable& table() const { return table_; }

private:
    Services& services_;
    MetaReader metas_;
    PhotoTable table_;
    std::vector<std::string> problems_; // one line each
};

} // namespace kelvaro
