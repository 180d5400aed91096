// Makes thumbnails from photo files: from the picture that a camera embedded in a RAW file, from a
// reduced decode, or developed at small scale. Blocking; any thread.
#pragma once

#include "base/Cancellation.h"
#include "develop/AnalysisCache.h"
#include "develop/BrushRaster.h"
#include "platform/FileSystem.h"
#include "platform/ImageFiles.h"
#include "platform/RawEngine.h"
#include "platform/Renderer.h"
#include "recipe/Adjustments.h"

#include <filesystem>
#include <optional>

namespace kelvaro {

class ThumbnailMaker {
public:
    // All must outlive the maker.
    struct Parts {
        FileSystem& files;
        ImageReader& reader;
        RawEngine& raw;
        Renderer& renderer;
        BrushRaster& brushes;
        AnalysisCache& analyses;
    };
    explicit ThumbnailMaker(Parts parts) : parts_(parts) {}

    // The photo as its camera shows it: an embedded preview or the decoded picture, upright, in
    // sRGB, `sidePx` on its longer side or less. None for a RAW file without a preview of half that
    // size.
    Result<std::optional<Bitmap>> quick(const std::filesystem::path& photo, int sidePx,
                                        const Cancellation* cancellation) const;
    // The same developed with `edit`, cropped and straightened.
    Result<Bitmap> developed(const std::filesystem::path& photo, const Adjustments& edit,
                             int sidePx, const Cancellation* cancellation) const;
    // Bytes of memory that `developed` will take, for admission; a guess from the file's header.
    std::int64_t estimateBytes(const std::filesystem::path& photo) const;

private:
    Parts parts_;
};

} // namespace kelvaro
