#include "export/RenderedStrips.h"

#include "base/Require.h"

#include <utility>

namespace kelvaro {

namespace {

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

Result<Bitmap> RenderedStrips::made(int top, int count) const {
    const Turn turn(turn_);
    return again(top, count);
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
