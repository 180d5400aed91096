#include "render/ThumbnailMemory.h"

#include "recipe/Hashing.h"

#include <utility>

namespace kelvaro {

namespace {

// Beside the pixels and what was painted; all that a failure takes.
constexpr std::size_t kEntryBytes = 1024;

std::size_t strokeBytes(const Adjustments& edit) {
    std::size_t bytes = 0;
    for (const LocalMask& mask : edit.masks)
        for (const MaskComponent& shape : mask.components)
            for (const BrushStroke& stroke : shape.strokes)
                bytes += sizeof(stroke) + stroke.points.size() * sizeof(MaskPoint);
    return bytes;
}

} // namespace

std::size_t ThumbnailKey::Hash::operator()(const ThumbnailKey& key) const {
    std::size_t seed = std::hash<std::string>{}(key.photo.native());
    seed = foldValue(seed, key.sizePx);
    return foldHash(seed, std::hash<Adjustments>{}(key.edit));
}

ThumbnailMemory::Found ThumbnailMemory::found(State& state, const ThumbnailKey& key) {
    auto [at, end] = state.byHash.equal_range(ThumbnailKey::Hash{}(key));
    while (at != end && at->second->key != key)
        ++at;
    return at == end ? state.byHash.end() : at;
}

std::optional<ThumbnailResult> ThumbnailMemory::find(const ThumbnailKey& key,
                                                     const std::string& identity) {
    return state_.with([&](State& state) -> std::optional<ThumbnailResult> {
        const auto at = found(state, key);
        if (at == state.byHash.end()) return std::nullopt;
        const auto entry = at->second;
        if (!identity.empty() && entry->identity != identity) return std::nullopt;
        state.entries.splice(state.entries.begin(), state.entries, entry);
        return entry->result;
    });
}

void ThumbnailMemory::keep(const ThumbnailKey& key, const std::string& identity,
                           ThumbnailResult result) {
    std::list<Entry> dropped; // let go outside the lock
    const std::size_t bytes =
        kEntryBytes + strokeBytes(key.edit) + (result ? (*result)->bytes() : 0);
    state_.with([&](State& state) {
        const auto drop = [&](Found at) {
            const auto entry = at->second;
            state.bytes -= entry->bytes;
            state.byHash.erase(at);
            dropped.splice(dropped.end(), state.entries, entry);
        };
        if (const auto at = found(state, key); at != state.byHash.end()) drop(at);
        if (bytes > limitBytes_) return;
        while (state.bytes + bytes > limitBytes_)
            drop(found(state, state.entries.back().key));
        state.entries.push_front({key, identity, std::move(result), bytes});
        state.byHash.emplace(ThumbnailKey::Hash{}(key), state.entries.begin());
        state.bytes += bytes;
    });
}

void ThumbnailMemory::clear() {
    std::list<Entry> dropped;
    state_.with([&](State& state) {
        state.byHash.clear();
        dropped.swap(state.entries);
        state.bytes = 0;
    });
}

std::size_t ThumbnailMemory::bytes() const {
    return state_.with([](State& state) { return state.bytes; });
}

} // namespace kelvaro
