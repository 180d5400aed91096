// A RAW picture that is developed where it is read: tiles are made on demand and the last ones
// kept, so that a picture is read from top to bottom without ever being in memory as a whole.
#pragma once

#include "platform/Image.h"
#include "platform/raw/Development.h"
#include "platform/raw/TileMemory.h"

#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace kelvaro {

class StreamedSource final : public PixelSource {
public:
    // `samples` keeps alive what the sensor points at. Throws std::bad_alloc.
    StreamedSource(const SensorImage& sensor, const RawDevelopSettings& settings,
                   std::shared_ptr<const void> samples, std::shared_ptr<TileMemory> memory);
    ~StreamedSource() override;

    PixelRect extent() const override;
    bool hasAlpha() const override { return false; }
    bool isMadeInParts() const override { return true; }
    // The samples and the most that is kept of developed pixels.
    std::size_t bytes() const override;
    void read(const TileView& tile) const override;

private:
    struct Tile {
        int index = 0;
        bool isReady = false;    // false while another thread makes it
        std::int64_t unread = 0; // pixels
        AlignedFloats memory;
        TileView pixels;
    };
    using Kept = std::list<std::shared_ptr<Tile>>; // the latest first
    std::shared_ptr<Tile> made(int column, int row, bool waits) const;
    static std::int64_t copyPart(const Tile& tile, const TileView& wanted);
    void take(const std::shared_ptr<Tile>& tile, const TileView& wanted) const;
    void forget(int index) const;
    void forgetOldest() const;

    std::shared_ptr<const void> samples_;
    std::shared_ptr<TileMemory> memory_;
    std::size_t sampleBytes_;
    Development development_;
    PixelSize tiles_;
    std::vector<PixelRect> columns_, rows_; // of tiles
    std::size_t capacity_;                  // in tiles
    std::size_t tileFloats_;
    mutable std::mutex lock_; // guards what follows
    mutable std::condition_variable finished_;
    mutable Kept kept_;
    mutable std::unordered_map<int, Kept::iterator> places_;
    mutable std::vector<bool> wasRead_; // tiles that were let go of because all of them was read
    mutable bool readsAgain_ = false;   // some pixels were asked for twice
};

} // namespace kelvaro
