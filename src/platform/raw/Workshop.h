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

struct Workshop {
    static constexpr int kWidth = BayerDemosaic::kMaximumWidth, kHeight = 288; // of a tile
    static constexpr int kStride = kWidth + 64; // room for the last vector of a row

    Workshop();
    // Of the channels, then, as the last one, rows of the mosaic.
    float* row(int channel, int y) { return rows.data() + (channel * kHeight + y) * kStride; }
    AlignedFloats rows;
    BayerDemosaic demosaic;
    Finishing finishing;
    std::optional<XTransDemosaic> xTrans;        // made when first needed
    std::vector<float> wide[4];                  // its mosaic and planes
    std::vector<float> source[kMaximumChannels]; // of lens corrections
};

// Any thread.
class WorkshopPool {
public:
    // A workshop until the end of its scope. Throws std::bad_alloc.
    class Lease {
    public:
        explicit Lease(WorkshopPool& pool);
        ~Lease();
        Lease(const Lease&) = delete;
        Lease& operator=(const Lease&) = delete;
        Workshop& operator*() const { return *workshop_; }

    private:
        WorkshopPool& pool_;
        std::unique_ptr<Workshop> workshop_;
    };

private:
    std::mutex lock_;
    std::vector<std::unique_ptr<Workshop>> free_;
};

} // namespace kelvaro
