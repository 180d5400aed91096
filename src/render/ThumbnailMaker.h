// Makes thumbnails from photo files: from the picture that a camera embedded in a RAW file, from a
// reduced decode, or developed at small scale. Upright, cropped like the edit, 8-bit sRGB.
// Blocking; any thread.
#pragma once

#include "render/PhotoSessionCache.h"

#include <filesystem>
#include <optional>

namespace kelvaro {

class ThumbnailMaker {
public:
    // All must outlive the maker. A photo that `sessions` has decoded is not decoded again.
    ThumbnailMaker(RenderEngine& engine, PhotoSession::Parts parts, PhotoSessionCache& sessions)
        : engine_(engine), parts_(parts), sessions_(sessions) {}

    // Whether the photo with this edit looks like the picture that its camera made of it, but for
    // the crop, so that `quick` may serve.
    static bool isAsShot(const Adjustments& edit);

    // From the camera's own picture, `sidePx` on the longer side or less. None where there is none
    // of at least half that size, or the edit changes more than the crop of it.
    Result<std::optional<Bitmap>> quick(const std::filesystem::path& photo, const Adjustments& edit,
                                        int sidePx, const Cancellation* cancellation) const;
    // The photo developed.
    Result<Bitmap> developed(const std::filesystem::path& photo, const Adjustments& edit,
                             int sidePx, const Cancellation* cancellation) const;

private:
    RenderEngine& engine_;
    const PhotoSession::Parts parts_;
    PhotoSessionCache& sessions_;
};

} // namespace kelvaro
