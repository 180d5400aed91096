// What we remember of photo files between launches, so that a file is read once: one record per
// file, folder by folder. A cache: whatever goes wrong with it, it answers with less. Thread-safe;
// calls block on the disk. Names are byte strings.
#pragma once

#include "platform/FileSystem.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace kelvaro {

struct CachedRecord {
    std::string name;      // of the file, without its folder
    std::int64_t size = 0; // bytes; with `modified` it tells whether the record still holds
    FileTime modified;
    std::string record; // bytes that mean something to whoever stored them

    bool operator==(const CachedRecord&) const = default;
};

class MetaCache {
public:
    virtual ~MetaCache() = default;
    // All records of a folder (absolute path), in no particular order.
    virtual std::vector<CachedRecord> load(const std::string& folder) = 0;
    // Adds the records or replaces those of the same names; all of them or none.
    virtual void store(const std::string& folder, std::span<const CachedRecord> records) = 0;
    // Forgets files that are gone.
    virtual void remove(const std::string& folder, std::span<const std::string> names) = 0;
    // Bytes that whoever stores them wants to know of a folder itself; empty where there are none.
    virtual std::string note(const std::string& folder) = 0;
    virtual void setNote(const std::string& folder, const std::string& note) = 0;
};

} // namespace kelvaro
