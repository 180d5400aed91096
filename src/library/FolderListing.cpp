#include "library/FolderListing.h"

#include "base/Require.h"

#include <algorithm>

namespace kelvaro {

FolderPhotos FolderListing::make(FolderUrl folder, std::vector<Photo> photos,
                                 const TextRules& rules, const FolderPhotos& previous) {
    const auto byName = [](const Photo& a, const Photo& b) { return a.url < b.url; };
    if (!std::is_sorted(photos.begin(), photos.end(), byName)) {
        std::sort(photos.begin(), photos.end(), byName);
    }
    std::shared_ptr<FolderListing> listing(new FolderListing());
    listing->folder_ = std::move(folder);
    listing->photos_ = std::move(photos);
    listing->ends_.reserve(2 * listing->photos_.size() + 1);
    std::size_t old = 0; // both listings are sorted: walk along the previous one
    for (const Photo& photo : listing->photos_) {
        KELVARO_REQUIRE(folderOf(photo.url) == listing->folder_);
        while (previous && old < previous->size() && previous->photos_[old].url < photo.url)
            ++old;
        if (previous && old < previous->size() && previous->photos_[old].url == photo.url) {
            listing->add(previous->sortKey(old));
            listing->add(previous->foldedName(old));
        } else {
            listing->add(rules.sortKey(photo.name));
            listing->add(rules.folded(fileNameOf(photo.url)));
        }
    }
    listing->texts_.shrink_to_fit();
    return listing;
}

void FolderListing::add(std::string_view text) {
    texts_.append(text);
    ends_.push_back(static_cast<std::uint32_t>(texts_.size()));
}

std::optional<std::size_t> FolderListing::find(std::string_view fileName) const {
    const auto at = std::lower_bound(
        photos_.begin(), photos_.end(), fileName,
        [](const Photo& photo, std::string_view name) { return fileNameOf(photo.url) < name; });
    if (at == photos_.end() || fileNameOf(at->url) != fileName) return std::nullopt;
    return static_cast<std::size_t>(at - photos_.begin());
}

} // namespace kelvaro
