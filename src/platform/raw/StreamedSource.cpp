#include "platform/raw/StreamedSource.h"

#include "platform/raw/Workshop.h"

#include <algorithm>

namespace kelvaro {

namespace {

// Rows of tiles that are kept: those that a strip of an export reads, which may lie across two, or
// that two cores read while they reduce the picture.
constexpr int kRowsKept = 2, kLowRowsKept = 8;

// How many tiles that are.
std::size_t capacityOf(const Development& development, int orientation) {
    const auto [across, down] = development.tiles();
    const PixelRect first = development.tile(0, 0);
    const int rows =
        2 * std::min(first.width, first.height) < Workshop::kHeight ? kLowRowsKept : kRowsKept;
    return std::size_t(rows) * std::size_t(orientation >= 5 ? down : across) + 2;
}

std::size_t bytesOf(const SensorImage& sensor) {
    return std::size_t(sensor.stride) * std::size_t(sensor.height) *
           (sensor.floats ? sizeof(float) : sizeof(std::uint16_t));
}

int strideOf(PixelSize tile) {
    return (tile.width + kRowGroup - 1) / kRowGroup * kRowGroup;
}

// Of a tile, whichever way the picture is turned, so that developments whose tiles are as high can
// share memory.
std::size_t tileFloats(const Development& development, int orientation) {
    const PixelRect first = development.tile(0, 0);
    const int rows = orientation >= 5 ? first.width : first.height;
    return std::size_t(3) * Workshop::kWidth *
           std::size_t((rows + kRowGroup - 1) / kRowGroup * kRowGroup);
}

// What each of `count` columns or rows of tiles covers, from its first tile to its last.
template<class First, class Last>
std::vector<PixelRect> stripes(int count, First first, Last last) {
    std::vector<PixelRect> all;
    for (int i = 0; i < count; ++i)
        all.push_back(bounding(first(i), last(i)));
    return all;
}

// The numbers of those that have part in the rectangle.
std::vector<int> meeting(const std::vector<PixelRect>& stripes, const PixelRect& rect) {
    std::vector<int> found;
    for (std::size_t i = 0; i < stripes.size(); ++i)
        if (!intersection(stripes[i], rect).isEmpty()) found.push_back(int(i));
    return found;
}

} // namespace

StreamedSource::StreamedSource(const SensorImage& sensor, const RawDevelopSettings& settings,
                               std::shared_ptr<const void> samples,
                               std::shared_ptr<TileMemory> memory)
    : samples_(std::move(samples)),
      memory_(std::move(memory)),
      sampleBytes_(bytesOf(sensor)),
      development_(sensor, settings),
      tiles_(development_.tiles()),
      columns_(stripes(
          tiles_.width, [&](int i) { return development_.tile(i, 0); },
          [&](int i) { return development_.tile(i, tiles_.height - 1); })),
      rows_(stripes(
          tiles_.height, [&](int i) { return development_.tile(0, i); },
          [&](int i) { return development_.tile(tiles_.width - 1, i); })),
      capacity_(capacityOf(development_, sensor.orientation)),
      tileFloats_(tileFloats(development_, sensor.orientation)),
      wasRead_(std::size_t(tiles_.width) * std::size_t(tiles_.height)) {}

StreamedSource::~StreamedSource() {
    for (const auto& tile : kept_)
        memory_->giveBack(std::move(tile->memory));
}

PixelRect StreamedSource::extent() const {
    return {0, 0, development_.size().width, development_.size().height};
}

std::size_t StreamedSource::bytes() const {
    const PixelRect first = development_.tile(0, 0);
    return sampleBytes_ +
           capacity_ * std::size_t(first.width) * std::size_t(first.height) * 3 * sizeof(float);
}

void StreamedSource::forget(int index) const {
    const std::lock_guard guard(lock_);
    const auto place = places_.find(index);
    kept_.erase(place->second);
    places_.erase(place);
    finished_.notify_all();
}

// The lock is held.
void StreamedSource::forgetOldest() const {
    for (auto oldest = kept_.end(); kept_.size() > capacity_ && oldest != kept_.begin();) {
        --oldest;
        if (!(*oldest)->isReady) continue;
        // Nobody can take another reference to it now.
        if (oldest->use_count() == 1) memory_->giveBack(std::move((*oldest)->memory));
        places_.erase((*oldest)->index);
        oldest = kept_.erase(oldest);
    }
}

// Null while another thread makes the tile, unless `waits` is set.
std::shared_ptr<StreamedSource::Tile> StreamedSource::made(int column, int row, bool waits) const {
    const int index = row * tiles_.width + column;
    auto tile = std::make_shared<Tile>();
    {
        std::unique_lock guard(lock_);
        for (auto place = places_.find(index); place != places_.end();
             place = places_.find(index)) {
            const auto known = *place->second;
            if (known->isReady) {
                kept_.splice(kept_.begin(), kept_, place->second);
                return known;
            }
            if (!waits) return nullptr;
            finished_.wait(guard, [&] {
                const auto now = places_.find(index);
                return now == places_.end() || (*now->second)->isReady;
            });
        }
        readsAgain_ = readsAgain_ || wasRead_[std::size_t(index)];
        tile->index = index;
        kept_.push_front(tile);
        places_[index] = kept_.begin();
    }
    try {
        tile->memory = memory_->take(tileFloats_);
        TileView& view = tile->pixels;
        view.rect = development_.tile(column, row);
        view.stride = strideOf(view.rect.size());
        for (int plane = 0; plane < 3; ++plane)
            view.planes[plane] = tile->memory.data() + plane * view.stride * view.rect.height;
        development_.run(column, row, view);
    } catch (...) {
        forget(index);
        throw;
    }
    const std::lock_guard guard(lock_);
    tile->isReady = true;
    tile->unread = std::int64_t(tile->pixels.rect.width) * tile->pixels.rect.height;
    forgetOldest();
    finished_.notify_all();
    return tile;
}

// How many pixels they were.
std::int64_t StreamedSource::copyPart(const Tile& tile, const TileView& wanted) {
    const ConstTileView from = tile.pixels;
    const PixelRect &place = from.rect, part = intersection(place, wanted.rect);
    const int firstFrom = place.y + place.height - (part.y + part.height);
    const int firstTo = wanted.rect.y + wanted.rect.height - (part.y + part.height);
    for (int plane = 0; plane < 3; ++plane) {
        for (int y = 0; y < part.height; ++y)
            std::copy_n(from.row(plane, firstFrom + y) + (part.x - place.x), part.width,
                        wanted.row(plane, firstTo + y) + (part.x - wanted.rect.x));
    }
    return std::int64_t(part.width) * part.height;
}

// A tile that was read to its end is let go of at once, so that the next one is made in memory that
// the caches still hold; not where readers overlap, who would have it made again.
void StreamedSource::take(const std::shared_ptr<Tile>& tile, const TileView& wanted) const {
    const std::int64_t count = copyPart(*tile, wanted);
    const std::lock_guard guard(lock_);
    tile->unread -= count;
    readsAgain_ = readsAgain_ || tile->unread < 0;
    const auto place = places_.find(tile->index);
    if (tile->unread != 0 || readsAgain_ || place == places_.end() || *place->second != tile)
        return;
    wasRead_[std::size_t(tile->index)] = true;
    kept_.erase(place->second);
    places_.erase(place);
    if (tile.use_count() == 1) memory_->giveBack(std::move(tile->memory));
}

// What another thread is making is taken last, and with it what stands below: two that read rows of
// the same tiles would make them in turn otherwise, one waiting for the other, and no tile could go
// on with the one above it.
void StreamedSource::read(const TileView& wanted) const {
    std::vector<std::pair<int, int>> underWay;
    const auto rows = meeting(rows_, wanted.rect);
    for (const int column : meeting(columns_, wanted.rect)) {
        bool waits = false;
        for (const int row : rows) {
            const auto tile = waits ? nullptr : made(column, row, false);
            waits = !tile;
            if (tile)
                take(tile, wanted);
            else
                underWay.emplace_back(column, row);
        }
    }
    for (const auto& [column, row] : underWay)
        take(made(column, row, true), wanted);
}

} // namespace kelvaro
