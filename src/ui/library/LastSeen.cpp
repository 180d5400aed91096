#include "ui/library/LastSeen.h"

#include "develop/PhotoOpening.h"
#include "ui/editor/CanvasFrame.h"

#include <algorithm>

namespace kelvaro {

void LastSeen::show(const FolderUrl& folder, int sizePx) {
    if (folder == folder_) return;
    clear();
    folder_ = folder;
    const FolderPhotos known = lib_.photos(folder);
    if (!known) return;
    const auto& photos = known->photos();
    const std::size_t count = std::min(most, photos.size());
    pictures_.resize(count);
    for (std::size_t at = 0; at < count; ++at) {
        const Photo& photo = photos[at];
        const Adjustments* edit = lib_.edit(photo.url);
        tickets_.push_back(loader_.request({photo.url, edit ? *edit : Adjustments{}, sizePx,
                                            photoIdentity(photo.fileSize, photo.modified)},
                                           ThumbnailPriority::visible,
                                           [this, at](const ThumbnailResult& result) {
                                               if (result) arrived(at, *result);
                                           }));
    }
}

void LastSeen::arrived(std::size_t place, const Thumbnail& thumbnail) {
    pictures_[place] = imageOf(thumbnail).copy();
    std::vector<QImage> found;
    std::ranges::copy_if(pictures_, std::back_inserter(found),
                         [](const QImage& image) { return !image.isNull(); });
    if (onChanged) onChanged(std::move(found));
}

void LastSeen::clear() {
    if (folder_.empty()) return;
    folder_.clear();
    tickets_.clear();
    pictures_.clear();
    if (onChanged) onChanged({});
}

} // namespace kelvaro
