// What we ask of the RAW engine: open a camera file, say what it knows, deliver scene-linear
// pixels.
#pragma once

#include "base/Cancellation.h"
#include "base/Result.h"
#include "platform/Image.h"

#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

namespace kelvaro {

struct RawProperties {
    PixelSize size;                   // upright, cropped to the active area
    double asShotTemperature = 6500;  // kelvin
    double asShotTint = 0;            // −150 … 150, positive towards magenta
    double baselineExposureStops = 0; // applied in `develop`
    double defaultSharpness = 0;
    bool supportsSharpness = false;
};

struct RawDevelopSettings {
    double sharpness = 0;     // −100 … 100 about the default
    bool captureOnly = false; // neither sharpening nor noise reduction
    int reduction = 1;        // 1 full size, 2 half size (one pixel per 2 × 2 block); 4 a quarter,
                              // where `captureOnly`, or half size where the file does not allow it
    // Half size is made from the picture at full size, in a third of a second more, instead of
    // from the sensor's samples: what reducing the finished picture would show.
    bool fine = false;
    // Develops only what is read and when it is read, keeping a few strips: for pictures that are
    // read once, from one edge to the other, such as an export. What is kept otherwise is fastest
    // to read again.
    bool streamed = false;
};

// A JPEG file in memory that stands for itself: it carries the orientation to apply and, where its
// colours are not sRGB, the profile to read them with, even where the RAW file kept them elsewhere.
struct EmbeddedPreview {
    std::vector<std::byte> bytes;
    PixelSize size; // upright
};

inline constexpr int kLargestPreview = std::numeric_limits<int>::max();

// One open RAW file. Not thread-safe; may be used from any one thread at a time.
class RawFile {
public:
    virtual ~RawFile() = default;
    virtual const RawProperties& properties() const = 0;
    // The whole photo upright, origin (0, 0), scene-linear Rec. 709 at the as-shot white balance,
    // full float range: negative and over-range values are kept, non-finite ones become 0.
    virtual Result<std::shared_ptr<const PixelSource>>
    develop(const RawDevelopSettings& settings, const Cancellation* cancellation) = 0;
    // The smallest embedded JPEG whose longer side has at least so many pixels, else the largest
    // one; none when the file has none. Neither the RAW data nor the JPEG is decoded, so that this
    // takes a few milliseconds.
    virtual Result<std::optional<EmbeddedPreview>> preview(int atLeastPx) = 0;
    Result<std::optional<EmbeddedPreview>> preview() { return preview(kLargestPreview); }
};

class RawEngine {
public:
    virtual ~RawEngine() = default;
    virtual Result<std::unique_ptr<RawFile>> open(const std::filesystem::path& path) = 0;
};

} // namespace kelvaro
