#include "library/MovedPhotos.h"

#include "library/MetaCoding.h"

#include <string>
#include <unordered_map>

namespace kelvaro {

namespace {

// Equal for files that are certainly the same photo; empty where that cannot be told.
std::string fingerprint(const PhotoUrl& url, const SharedMeta& meta) {
    if (!meta || !meta->takenOnWall || meta->size <= 0) return {};
    std::string print(extensionOf(url));
    for (char& c : print)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    print.append(" ").append(std::to_string(meta->size)).append(" ");
    return print.append(encodedMeta(*meta)); // all but size and modification date
}

// By fingerprint; null where several photos share it.
std::unordered_map<std::string, const PhotoUrl*> unique(const PhotoMetas& photos) {
    std::unordered_map<std::string, const PhotoUrl*> found;
    for (const auto& [url, meta] : photos) {
        const std::string print = fingerprint(url, meta);
        if (print.empty()) continue;
        const auto [at, isNew] = found.try_emplace(print, &url);
        if (!isNew) at->second = nullptr;
    }
    return found;
}

} // namespace

std::vector<MovedPhoto> movedPhotos(const PhotoMetas& lost, const PhotoMetas& candidates) {
    const auto before = unique(lost), now = unique(candidates);
    std::vector<MovedPhoto> moved;
    for (const auto& [url, meta] : lost) {
        const auto from = before.find(fingerprint(url, meta));
        if (from == before.end() || !from->second) continue;
        const auto to = now.find(from->first);
        if (to != now.end() && to->second) moved.push_back({url, *to->second});
    }
    return moved;
}

} // namespace kelvaro
