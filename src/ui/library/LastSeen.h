// The thumbnails of a folder whose drive is away, as far as they were kept. Main thread.
#pragma once

#include "library/LibraryStore.h"
#include "render/ThumbnailLoader.h"

#include <QImage>

#include <functional>
#include <vector>

namespace kelvaro {

class LastSeen {
public:
    static constexpr std::size_t most = 12;

    LastSeen(LibraryStore& lib, ThumbnailLoader& loader) : lib_(lib), loader_(loader) {}

    // Fetches the first photos of the folder; `onChanged` tells of each that is found.
    void show(const FolderUrl& folder, int sizePx);
    void clear();

    std::function<void(std::vector<QImage>)> onChanged;

private:
    void arrived(std::size_t place, const Thumbnail& thumbnail);

    LibraryStore& lib_;
    ThumbnailLoader& loader_;
    FolderUrl folder_;
    std::vector<ThumbnailLoader::Ticket> tickets_;
    std::vector<QImage> pictures_; // null where nothing was kept
};

} // namespace kelvaro
