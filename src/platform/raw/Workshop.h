// What one thread needs for one tile of a development, and the few of them that a development
// shares among its threads: threads come and go, and memory that nobody has touched yet costs more
// than the work in it.
#pragma once

#include "platform/Raster.h"
#include "platform/raw/Demosaic.h"
#include "platform/raw/Finishing.h"
#include "platform/raw/XTransDemosaic.h"

#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace kelvaro {

// Columns of a picture whose rows from `top` on were finished down to `end`, so that the next ones
// can follow them.
struct FinishedColumns {
    int left = 0, width = 0, top = 0, end = 0;
};

struct Workshop {
    static constexpr int kWidth = BayerDemosaic::kMaximumWidth, kHeight = 288; // of a tile
    static constexpr int kStride = kWidth + 64; // room for the last vector of a row

    Workshop();
    float* lineOf(int channel) { return line.data() + channel * kStride; }
    // Of the channels, then, as the last one, rows of the mosaic.
    float* row(int channel, int y) { return rows.data() + (channel * kHeight + y) * kStride; }
    AlignedFloats rows;
    AlignedFloats line; // a row of three channels, where nothing else of `rows` is touched
    BayerDemosaic demosaic;
    Finishing finishing;
    FinishedColumns finished;                    // by the two
    std::optional<XTransDemosaic> xTrans;        // made when first needed
    std::vector<float> wide[4];                  // its mosaic and planes
    std::vector<float> source[kMaximumChannels]; // of lens corrections
};

// Any thread.
class WorkshopPool {
public:
    // At most `wanted` workshops keep finished columns, and there are no more of them unless more
    // are in use at a time.
    explicit WorkshopPool(std::size_t wanted) : wanted_(wanted) {}
    // A workshop until the end of its scope; where there is one, that which has finished the same
    // columns down to `top`. Throws std::bad_alloc.
    class Lease {
    public:
        explicit Lease(WorkshopPool& pool) : Lease(pool, {}, false) {}
        Lease(WorkshopPool& pool, const SensorRect& tile) : Lease(pool, tile, true) {}
        ~Lease();
        Lease(const Lease&) = delete;
        Lease& operator=(const Lease&) = delete;
        Workshop& operator*() const { return *workshop_; }

    private:
        Lease(WorkshopPool& pool, const SensorRect& tile, bool goesOn);
        WorkshopPool& pool_;
        std::unique_ptr<Workshop> workshop_;
    };

private:
    std::unique_ptr<Workshop> taken(const SensorRect& tile, bool goesOn);
    const std::size_t wanted_;
    std::mutex lock_;
    std::size_t made_ = 0;
    std::vector<std::unique_ptr<Workshop>> free_; // the latest last
};

} // namespace kelvaro
