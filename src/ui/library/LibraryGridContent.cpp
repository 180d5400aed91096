#include "ui/library/LibraryGridContent.h"

#include "library/LibraryTexts.h"
#include "ui/Texts.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {
LibraryGridContent::LibraryGridContent(LibraryStore& lib, CellPictures& pictures)
    : lib_(lib), pictures_(pictures), view_(lib.view().get()) {
    wishes_.setSingleShot(true);
    wishes_.setInterval(0);
    QObject::connect(&wishes_, &QTimer::timeout, &wishes_, [this] { tellWishes(); });
}

bool LibraryGridContent::update() {
    if (view_ == lib_.view().get()) return false;
    view_ = lib_.view().get();
    visible_ = nearby_ = {};
    return true;
}

int LibraryGridContent::indexOf(const PhotoUrl& url) const {
    const auto found = view_->positionOf(url);
    return found ? static_cast<int>(*found) : -1;
}

std::vector<GridHeading> LibraryGridContent::headings() const {
    std::vector<GridHeading> found;
    found.reserve(view_->groups.size());
    for (const PhotoGroup& group : view_->groups)
        found.push_back({static_cast<int>(group.start), fromUtf8(group.title)});
    return found;
}

std::string LibraryGridContent::keyOf(const Photo& photo) const {
    std::string key = photo.url;
    key += '\n';
    key += std::to_string(photo.modified.nanoseconds);
    if (const auto edited = lib_.editDate(photo.url)) {
        key += ' ';
        key += std::to_string(edited->nanoseconds);
    }
    return key;
}

PictureSource LibraryGridContent::sourceOf(const Photo& photo) const {
    const Adjustments* edit = lib_.edit(photo.url);
    return {keyOf(photo), photo.url, edit ? *edit : Adjustments{}};
}

GridCell LibraryGridContent::cell(int index) const {
    const Photo& shown = photo(index);
    GridCell cell;
    cell.name = fromUtf8(texts::displayName(shown.url));
    cell.isRaw = shown.isRaw;
    cell.isFavorite = lib_.isFavorite(shown.url);
    cell.isEdited = lib_.edit(shown.url) != nullptr;
    cell.isMissing = !lib_.missingFolders().get().empty() &&
                     lib_.missingFolders().get().contains(FolderUrl(folderOf(shown.url)));
    const std::string key = keyOf(shown);
    cell.isUnreadable = pictures_.isRefused(key) && !cell.isMissing;
    // A picture that was seen knows its crop; the metadata knows the rest.
    cell.shape = pictures_.shape(key);
    if (cell.shape.isEmpty()) {
        if (const auto meta = lib_.meta(shown.url)) cell.shape = {meta->width, meta->height};
    }
    return cell;
}

int LibraryGridContent::find(const QString& beginning, int from) const {
    for (int step = 0; step < count(); ++step) {
        const int index = (from + step) % count();
        if (fromUtf8(fileNameOf(photo(index).url)).startsWith(beginning, Qt::CaseInsensitive))
            return index;
    }
    return -1;
}

CellPicture LibraryGridContent::picture(int index, QSize size) {
    PictureSource source;
    source.key = keyOf(photo(index));
    return pictures_.picture(source, size);
}

void LibraryGridContent::wants(CellRange visible, CellRange nearby, int cellPx) {
    visible_ = visible;
    nearby_ = nearby;
    cellPx_ = cellPx;
    if (!wishes_.isActive()) wishes_.start();
}

void LibraryGridContent::tellWishes() {
    std::vector<CellPictures::Wish> wishes;
    const int last = std::min(nearby_.last, count());
    wishes.reserve(static_cast<size_t>(std::max(0, last - nearby_.first)));
    const auto add = [&](int from, int to, ThumbnailPriority priority) {
        for (int index = from; index < std::min(to, count()); ++index)
            wishes.push_back({sourceOf(photo(index)), priority});
    };
    // What is asked for last is served first: what is on the screen comes at the end.
    add(nearby_.first, visible_.first, ThumbnailPriority::nearby);
    add(visible_.last, last, ThumbnailPriority::nearby);
    add(visible_.first, visible_.last, ThumbnailPriority::visible);
    pictures_.want(std::move(wishes), static_cast<int>(std::ceil(cellPx_ * pixelRatio_)));
}

} // namespace kelvaro
