// The thumbnails and failures in memory: found by photo, edit and size, bounded by bytes; the least
// recently used go first. Thread-safe.
#pragma once

#include "base/Locked.h"
#include "base/Result.h"
#include "platform/Bitmap.h"
#include "recipe/Adjustments.h"

#include <filesystem>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

namespace kelvaro {

// 8-bit sRGB, opaque, upright, cropped like the edit, rows top-down.
using Thumbnail = std::shared_ptr<const Bitmap>;
// The picture, or why there is none: one sentence that names the file.
using ThumbnailResult = Result<Thumbnail>;

// What a thumbnail shows, whatever state the file is in.
struct ThumbnailKey {
    std::filesystem::path photo;
    Adjustments edit;
    int sizePx = 0; // longer side

    bool operator==(const ThumbnailKey&) const = default;
    struct Hash {
        std::size_t operator()(const ThumbnailKey& key) const;
    };
};

class ThumbnailMemory {
public:
    explicit ThumbnailMemory(std::size_t limitBytes) : limitBytes_(limitBytes) {}

    // Of the file in the state that `identity` tells; any state when it is empty.
    std::optional<ThumbnailResult> find(const ThumbnailKey& key, const std::string& identity);
    void keep(const ThumbnailKey& key, const std::string& identity, ThumbnailResult result);
    void clear();
    std::size_t bytes() const;

private:
    struct Entry {
        ThumbnailKey key;
        std::string identity;
        ThumbnailResult result;
        std::size_t bytes = 0;
    };
    struct State {
        std::list<Entry> entries; // the last used first
        // By the keys' hashes: a second copy of each edit would take more than the picture where
        // somebody painted.
        std::unordered_multimap<std::size_t, std::list<Entry>::iterator> byHash;
        std::size_t bytes = 0;
    };
    using Found = std::unordered_multimap<std::size_t, std::list<Entry>::iterator>::iterator;
    static Found found(State& state, const ThumbnailKey& key);

    const std::size_t limitBytes_;
    mutable Locked<State> state_;
};

} // namespace kelvaro
