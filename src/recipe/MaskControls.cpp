#include "recipe/MaskControls.h"

#include <array>

namespace kelvaro {
namespace {

using Format = AdjustmentSpec::Format;
using Track = AdjustmentSpec::Track;

constexpr MaskControl control(std::string_view id, std::string_view title, double limit,
                              Format format, Track track, double LocalMask::*field) {
    return {{id, title, nullptr, {-limit, limit}, AdjustmentSpec::Group::basic, format, track},
            field};
}

constexpr std::array catalogue{
    control("mask.exposure", "Exposure", 4, Format::ev, Track::plain, &LocalMask::exposure),
    control("mask.temperature", "Temperature", 100, Format::signed_, Track::temperature,
            &LocalMask::temperature),
    control("mask.tint", "Tint", 100, Format::signed_, Track::tint, &LocalMask::tint),
    control("mask.contrast", "Contrast", 100, Format::signed_, Track::plain, &LocalMask::contrast),
    control("mask.highlights", "Highlights", 100, Format::signed_, Track::plain,
            &LocalMask::highlights),
    control("mask.shadows", "Shadows", 100, Format::signed_, Track::plain, &LocalMask::shadows),
    control("mask.clarity", "Clarity", 100, Format::signed_, Track::plain, &LocalMask::clarity),
    control("mask.saturation", "Saturation", 100, Format::signed_, Track::saturation,
            &LocalMask::saturation),
};

} // namespace

std::span<const MaskControl> maskControlCatalogue() {
    return catalogue;
}

} // namespace kelvaro
