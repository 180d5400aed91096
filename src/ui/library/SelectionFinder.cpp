#include "ui/library/SelectionFinder.h"

#include <algorithm>

namespace kelvaro {
namespace {

constexpr std::size_t fewPhotos = 64; // looked for one by one
constexpr int smallGrid = 4000;       // compared in a few milliseconds
constexpr int slice = 8000;

} // namespace

SelectionFinder::SelectionFinder(const LibraryGridContent& content) : content_(content) {
    slices_.setInterval(0);
    QObject::connect(&slices_, &QTimer::timeout, &slices_, [this] { look(slice); });
}

void SelectionFinder::begin(PhotoSet photos, CellRange onScreen) {
    cancel();
    found_.clear();
    if (photos.size() < fewPhotos) {
        for (const PhotoUrl& url : photos) {
            if (const int index = content_.indexOf(url); index >= 0) found_.push_back(index);
        }
        std::ranges::sort(found_);
        return onFound(found_);
    }
    photos_ = std::move(photos);
    if (content_.count() <= smallGrid) return finish();
    for (int index = onScreen.first; index < std::min(onScreen.last, content_.count()); ++index) {
        if (photos_->contains(content_.photo(index).url)) found_.push_back(index);
    }
    onFound(found_);
    found_.clear();
    slices_.start();
}

void SelectionFinder::look(int count) {
    const int end = std::min(content_.count(), next_ + std::min(count, content_.count()));
    for (; next_ < end; ++next_) {
        if (photos_->contains(content_.photo(next_).url)) found_.push_back(next_);
    }
    if (next_ < content_.count()) return;
    cancel();
    onFound(found_);
}

void SelectionFinder::finish() {
    if (photos_) look(content_.count());
}

void SelectionFinder::cancel() {
    slices_.stop();
    photos_.reset();
    next_ = 0;
}

} // namespace kelvaro
