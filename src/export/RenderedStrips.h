// The finished picture of an export, rendered strip by strip where the encoder asks for it. Can
// keep sums of what it handed out, for the comparison with the file. From any thread.
#pragma once

#include "export/BlockSums.h"
#include "platform/ImageFiles.h"
#include "platform/Renderer.h"

#include <optional>
#include <semaphore>

namespace kelvaro {

class RenderedStrips final : public StripSource {
public:
    // 8-bit and opaque. The renderer must outlive it; `cancellation` may be null.
    RenderedStrips(Renderer& renderer, Image picture, const BitmapFormat& format,
                   const Cancellation* cancellation, bool keepsSums = true);

    PixelSize size() const override { return picture_.extent().size(); }
    int channels() const override { return 3; }
    SampleType type() const override { return format_.type; }
    Result<Bitmap> rows(int top, int count) const override;

    // What the first strip that failed failed with.
    std::optional<Failure> failure() const { return failure_.copy(); }
    const PictureSums& sums() const { return sums_; } // empty where they are not kept
    // Rows once more, after all were handed out.
    Result<Bitmap> again(int top, int count) const;

private:
    Renderer& renderer_;
    const Image picture_;
    const BitmapFormat format_;
    const Cancellation* cancellation_;
    const bool keepsSums_;
    Result<Bitmap> made(int top, int count) const;

    // One strip at a time, by all cores: what a RAW file's pixels are made from in passing is kept
    // for a few rows only.
    mutable std::binary_semaphore turn_{1};
    mutable Locked<std::optional<Failure>> failure_;
    mutable PictureSums sums_;
};

} // namespace kelvaro
