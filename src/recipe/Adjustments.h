// The whole edit of one photo as a plain value, and the part of it that the RAW decode depends on.
// Ranges, titles and keys of the fields stand in the catalogue (recipe/AdjustmentCatalogue.h).
#pragma once

#include "recipe/LocalMask.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace kelvaro {

struct Adjustments {
    static constexpr std::int64_t currentVersion = 12;

    std::int64_t processVersion =
        currentVersion;       // of the edit format; 12 in every record in memory
    double temperature = 0;   // mired shift from the as-shot white balance, positive is warmer
    double tint = 0;          // positive towards magenta
    double blackAndWhite = 0; // 0 or 1
    double exposure = 0;      // stops
    double highlights = 0;
    double shadows = 0;
    double brightness = 0; // retired: kept for old edits, has no slider
    double contrast = 0;
    double white = 0;
    double black = 0;
    double hue = 0;
    double saturation = 0;
    double vibrance = 0;
    double sharpness = 0;
    double clarity = 0;
    double dehaze = 0;
    double vignette = 0;
    double grain = 0;
    double grainSize = 0;
    double cropLeft = 0; // the crop edges are shares of the width or height, cut from that edge
    double cropRight = 0;
    double cropTop = 0;
    double cropBottom = 0;
    double straighten = 0;        // degrees, positive turns the picture clockwise
    std::vector<LocalMask> masks; // applied in this order

    bool operator==(const Adjustments&) const = default;
};

// True when any catalogue value differs from 0 or there is a mask; the version never counts.
bool isEdited(const Adjustments& adjustments);

// The values that the RAW decode consumes: while they stay equal a prepared decode can be used
// again.
struct RawParams {
    double contrast = 0;
    double white = 0;
    double black = 0;
    double dehaze = 0;
    double shadows = 0;
    double highlights = 0;
    double exposure = 0;
    double temperature = 0;
    double tint = 0;
    double sharpness = 0;

    RawParams() = default;
    explicit RawParams(const Adjustments& adjustments);
    bool operator==(const RawParams&) const = default;
};

} // namespace kelvaro

template<>
struct std::hash<kelvaro::Adjustments> {
    std::size_t operator()(const kelvaro::Adjustments& adjustments) const;
};
