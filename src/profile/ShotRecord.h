// What the profile reads of one photo: a plain value, made from the library's records. Values that
// cannot be (an aperture of 0, an exposure of years) count as not recorded.
#pragma once

#include "library/PhotoMeta.h"

#include <cstdint>
#include <optional>
#include <string>

namespace kelvaro {

struct ShotRecord {
    // What the clock on the wall showed at the capture, as seconds since 1970 as if it showed UTC.
    std::optional<std::int64_t> taken;
    std::optional<std::string> camera, lens; // never empty
    std::optional<double> focal;             // mm
    std::optional<int> iso;
    std::optional<double> aperture; // f-number
    std::optional<double> shutter;  // seconds
    bool isRaw = false;
    bool favorite = false;

    bool operator==(const ShotRecord&) const = default;
};

// `meta` is null for a photo whose metadata has not been read.
ShotRecord makeShotRecord(const Photo& photo, const PhotoMeta* meta, bool favorite);

} // namespace kelvaro
