// The photos of one folder as one immutable block, with the texts by which they are sorted and
// found. Made on any thread, then shared by all that show or search them.
#pragma once

#include "library/Photo.h"
#include "platform/TextRules.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvaro {

class FolderListing;
using FolderPhotos = std::shared_ptr<const FolderListing>;

class FolderListing : public std::enable_shared_from_this<FolderListing> {
public:
    // Sorts the photos by their file names' bytes. All must lie directly in `folder`. Texts of
    // names that `previous` (may be null) has too are taken over from it.
    static FolderPhotos make(FolderUrl folder, std::vector<Photo> photos, const TextRules& rules,
                             const FolderPhotos& previous = nullptr);

    const FolderUrl& folder() const { return folder_; }
    const std::vector<Photo>& photos() const { return photos_; }
    std::size_t size() const { return photos_.size(); }
    std::optional<std::size_t> find(std::string_view fileName) const;
    // Of the name without extension; compare as bytes.
    std::string_view sortKey(std::size_t i) const { return text(2 * i); }
    // The whole file name, folded.
    std::string_view foldedName(std::size_t i) const { return text(2 * i + 1); }

private:
    FolderListing() = default;
    std::string_view text(std::size_t i) const {
        return std::string_view(texts_).substr(ends_[i], ends_[i + 1] - ends_[i]);
    }
    void add(std::string_view text);

    FolderUrl folder_;
    std::vector<Photo> photos_;
    std::string texts_; // sort key and folded name of each photo, one after another
    std::vector<std::uint32_t> ends_{0};
};

} // namespace kelvaro
