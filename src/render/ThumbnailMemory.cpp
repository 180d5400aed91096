#include "render/ThumbnailMemory.h"

#include "recipe/Hashing.h"

#include <utility>

namespace kelvaro {

namespace {

constexpr std::size_t kEntryBytes = 1024; // beside the pixels; all that a failure takes

} // namespace

std::size_t ThumbnailKey::Hash::operator()(const ThumbnailKey& key) const {
    std::size_t seed = std::hash<std::string>{}(key.photo.native());
    seed = foldValue(seed, key.sizePx);
    return foldHash(seed, std::hash<Adjustments>{}(key.edit));
}

std::optional<ThumbnailResult> ThumbnailMemory::find(const ThumbnailKey& key,
                                                     const std::string& identity) {
    return state_.with([&](State& state) -> std::optional<ThumbnailResult> {
        const auto found = state.byKey.find(key);
        if (found == state.byKey.end()) return std::nullopt;
        const auto entry = found->second;
        if (!identity.empty() && entry->identity != identity) return std::nullopt;
        state.entries.splice(state.entries.begin(), state.entries, entry);
        return entry->result;
    });
}

void ThumbnailMemory::keep(const ThumbnailKey& key, const std::string& identity,
                           ThumbnailResult result) {
    std::list<Entry> dropped; // let go outside the lock
    const std::size_t bytes = kEntryBytes + (result ? (*result)->bytes() : 0);
    state_.with([&](State& state) {
        const auto drop = [&](std::list<Entry>::iterator entry) {
            state.bytes -= entry->bytes;
            state.byKey.erase(entry->key);
            dropped.splice(dropped.end(), state.entries, entry);
        };
        if (const auto found = state.byKey.find(key); found != state.byKey.end())
            drop(found->second);
        if (bytes > limitBytes_) return;
        while (state.bytes + bytes > limitBytes_)
            drop(std::prev(state.entries.end()));
        state.entries.push_front({key, identity, std::move(result), bytes});
        state.byKey.emplace(key, state.entries.begin());
        state.bytes += bytes;
    });
}

void ThumbnailMemory::clear() {
    std::list<Entry> dropped;
    state_.with([&](State& state) {
        state.byKey.clear();
        dropped.swap(state.entries);
        state.bytes = 0;
    });
}

std::size_t ThumbnailMemory::bytes() const {
    return state_.with([](State& state) { return state.bytes; });
}

} // namespace kelvaro
