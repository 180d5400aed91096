#include "export/RenderedStrips.h"

#include "base/Require.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace kelvaro {

namespace {

// A whole number of strips, and as many rows as a RAW file is developed in at once.
constexpr int kChunkRows = 256;

struct Turn {
    explicit Turn(std::binary_semaphore& semaphore) : all(semaphore) { all.acquire(); }
    ~Turn() { all.release(); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    std::binary_semaphore& all;
};

} // namespace

RenderedStrips::RenderedStrips(Renderer& renderer, Image picture, const BitmapFormat& format,
                               const Cancellation* cancellation, bool keepsSums)
    : renderer_(renderer),
      picture_(std::move(picture)),
      format_(format),
      cancellation_(cancellation),
      keepsSums_(keepsSums),
      sums_(picture_.extent().size()) {
    KELVARO_REQUIRE(format.type == SampleType::u8 && format.alpha != BitmapFormat::Alpha::straight);
}

Result<Bitmap> RenderedStrips::again(int top, int count) const {
    const PixelRect& all = picture_.extent();
    return renderer_.renderBitmap(picture_, {all.x, all.top() - top - count, all.width, count},
                                  format_, cancellation_);
}

Result<RenderedStrips::Chunk> RenderedStrips::chunkAt(int top) const {
    const int first = top / kChunkRows * kChunkRows;
    const Turn turn(turn_);
    for (const Chunk& chunk : chunks_)
        if (chunk.pixels && chunk.top == first) return chunk;
    auto pixels = again(first, std::min(kChunkRows, size().height - first));
    if (!pixels) return fail(std::move(pixels).error());
    chunks_[0] =
        std::exchange(chunks_[1], {first, std::make_shared<const Bitmap>(std::move(*pixels))});
    return chunks_[1];
}

Result<Bitmap> RenderedStrips::made(int top, int count) const {
    if (top % kChunkRows + count > kChunkRows) return again(top, count);
    const auto chunk = chunkAt(top);
    if (!chunk) return fail(chunk.error());
    Bitmap strip({size().width, count}, channels(), type());
    std::memcpy(strip.samples.get(), chunk->pixels->row<std::byte>(top - chunk->top),
                strip.bytes());
    return strip;
}

Result<Bitmap> RenderedStrips::rows(int top, int count) const {
    auto strip = made(top, count);
    if (strip && keepsSums_) sums_.add(*strip, top);
    if (!strip) {
        failure_.with([&](auto& first) {
            if (!first) first = strip.error();
        });
    }
    return strip;
}

} // namespace kelvaro
