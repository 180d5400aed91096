// Draws rectangles of images. Blocking; may be called from any thread. The picture depends only on
// the image and the rectangle, never on the number of threads.
#pragma once

#include "base/Cancellation.h"
#include "base/Result.h"
#include "platform/Bitmap.h"
#include "platform/Image.h"

namespace kelvaro {

enum class TransferCurve { linear, sRGB };

struct BitmapFormat {
    SampleType type = SampleType::u8;
    TransferCurve curve = TransferCurve::sRGB; // applied after clipping to 0 … 1; none for f32
    enum class Alpha { drop, straight, overWhite } alpha = Alpha::drop;
    // Rows of the matrix from the working space to the target's primaries, before clipping.
    std::array<std::array<float, 3>, 3> toTarget{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
};

class Renderer {
public:
    virtual ~Renderer() = default;
    // Failures: cancelled, outOfMemory. `rect` may reach outside the image's extent (transparent).
    virtual Result<Raster> renderRaster(const Image& image, const PixelRect& rect,
                                        const Cancellation* cancellation = nullptr) = 0;
    // Several images over one rectangle in one walk: what they have in common is worked out once.
    virtual Result<std::vector<Raster>>
    renderRasters(const std::vector<Image>& images, const PixelRect& rect,
                  const Cancellation* cancellation = nullptr) = 0;
    // 8- and 16-bit samples are clipped to 0 … 1, pass the transfer curve and are rounded half up.
    // 32-bit float ones keep their range; 4 channels when the alpha is `straight` and the image has
    // one.
    virtual Result<Bitmap> renderBitmap(const Image& image, const PixelRect& rect,
                                        const BitmapFormat& format,
                                        const Cancellation* cancellation = nullptr) = 0;
};

} // namespace kelvaro
