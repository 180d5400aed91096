#include "platform/imaging/TiledRenderer.h"

#include "platform/ImageSpace.h"
#include "platform/imaging/RowEncoding.h"
#include "platform/imaging/TileEvaluator.h"

#include <hwy/detect_compiler_arch.h>
#include <tbb/enumerable_thread_specific.h>
#include <tbb/global_control.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <functional>
#include <new>
#include <optional>

#if HWY_ARCH_X86
#include <xmmintrin.h>
#endif

namespace kelvaro {

namespace {

// Denormals carry no picture and cost up to twice the time, so workers treat them as 0.
class DenormalsFlushed {
public:
#if HWY_ARCH_X86
    DenormalsFlushed() : saved_(_mm_getcsr()) {
        _mm_setcsr(saved_ | 0x8040);
    }
    ~DenormalsFlushed() {
        _mm_setcsr(saved_);
    }

private:
    unsigned saved_;
#endif
};

class TiledRenderer : public Renderer {
public:
    using Priority = tbb::task_arena::priority;
    explicit TiledRenderer(int threads, Priority priority = Priority::normal)
        : arena_(threads > 0 ? threads : tbb::task_arena::automatic, 1, priority) {
        if (threads > tbb::this_task_arena::max_concurrency())
            moreThreads_.emplace(tbb::global_control::max_allowed_parallelism,
                                 std::size_t(threads));
    }

    Result<Raster> renderRaster(const Image& image, const PixelRect& rect,
                                const Cancellation* cancellation) override {
        auto rasters = renderRasters({image}, rect, cancellation);
        if (!rasters) return fail(std::move(rasters).error());
        return std::move(rasters->front());
    }

    Result<std::vector<Raster>> renderRasters(const std::vector<Image>& images,
                                              const PixelRect& rect,
                                              const Cancellation* cancellation) override {
        try {
            std::vector<Raster> rasters;
            for (const Image& image : images)
                rasters.emplace_back(rect, image.hasAlpha() || !image.extent().contains(rect));
            const bool done = forEachTile(images, rect, cancellation, [&](const auto& tiles) {
                for (std::size_t i = 0; i < rasters.size(); ++i)
                    copyTile(tiles[i], rasters[i].view());
            });
            if (!done) return fail(FailureKind::cancelled, "The rendering was stopped.");
            return rasters;
        } catch (const std::bad_alloc&) {
            return outOfMemory();
        }
    }

    Result<Bitmap> renderBitmap(const Image& image, const PixelRect& rect,
                                const BitmapFormat& format,
                                const Cancellation* cancellation) override {
        try {
            const bool alpha = format.alpha == BitmapFormat::Alpha::straight &&
                               (image.hasAlpha() || !image.extent().contains(rect));
            Bitmap bitmap(rect.size(), alpha ? 4 : 3, format.type);
            const std::size_t pixelBytes = sampleBytes(format.type) * (alpha ? 4 : 3);
            const bool done = forEachTile({image}, rect, cancellation, [&](const auto& tiles) {
                const ConstTileView& tile = tiles.front();
                const int firstRow = rowOfLine(rect, lineOfRow(tile.rect, 0));
                for (int row = 0; row < tile.rect.height; ++row) {
                    const float* planes[4] = {};
                    for (int i = 0; i < (tile.hasAlpha() ? 4 : 3); ++i)
                        planes[i] = tile.row(i, row);
                    rows::encode(planes, std::size_t(tile.rect.width), format, alpha,
                                 bitmap.row<std::byte>(firstRow + row) +
                                     std::size_t(tile.rect.x - rect.x) * pixelBytes);
                }
            });
            if (!done) return fail(FailureKind::cancelled, "The rendering was stopped.");
            return bitmap;
        } catch (const std::bad_alloc&) {
            return outOfMemory();
        }
    }

private:
    static Unexpected<Failure> outOfMemory() {
        return fail(FailureKind::outOfMemory, "There is not enough memory for this picture.");
    }

    static void copyTile(const ConstTileView& tile, const TileView& target) {
        const int firstRow = rowOfLine(target.rect, lineOfRow(tile.rect, 0));
        const std::size_t bytes = std::size_t(tile.rect.width) * sizeof(float);
        for (int plane = 0; plane < (target.hasAlpha() ? 4 : 3); ++plane) {
            for (int row = 0; row < tile.rect.height; ++row) {
                float* to = target.row(plane, firstRow + row) + (tile.rect.x - target.rect.x);
                if (plane == 3 && !tile.hasAlpha())
                    std::fill_n(to, tile.rect.width, 1.0f);
                else
                    std::memcpy(to, tile.row(plane, row), bytes);
            }
        }
    }

    // False when the work was cancelled before its end.
    template<class Use>
    bool forEachTile(const std::vector<Image>& images, const PixelRect& rect,
                     const Cancellation* cancellation, const Use& use) {
        const RenderPlan plan(images, rect);
        const PixelSize size = plan.tileSize(rect.height);
        const int columns = (rect.width + size.width - 1) / size.width;
        const int lines = (rect.height + size.height - 1) / size.height;
        const bool goesDown = plan.prefersColumns();
        tbb::enumerable_thread_specific<TilePools::Lease> pools(std::ref(pools_));
        std::atomic<bool> stopped{false};
        const auto runTile = [&](int index) {
            if (cancellation && cancellation->isCancelled()) stopped = true;
            if (stopped) return;
            const DenormalsFlushed flushed;
            const int column = goesDown ? index / lines : index % columns;
            const int line = goesDown ? index % lines : index / columns;
            const PixelRect cell{rect.x + column * size.width,
                                 rect.top() - (line + 1) * size.height, size.width, size.height};
            evaluateTiles(plan, intersection(cell, rect), *pools.local(), use);
        };
        arena_.execute([&] { tbb::parallel_for(0, columns * lines, runTile); });
        return !stopped;
    }

    TilePools pools_;
    tbb::task_arena arena_;
    std::optional<tbb::global_control>
        moreThreads_; // only where more than one per core is asked for
};

} // namespace

std::unique_ptr<Renderer> makeTiledRenderer(int threads) {
    return std::make_unique<TiledRenderer>(threads);
}

std::unique_ptr<Renderer> makeBackgroundRenderer() {
    return std::make_unique<TiledRenderer>(0, TiledRenderer::Priority::low);
}

} // namespace kelvaro
