#include "editor/TrackTint.h"

namespace kelvaro {
namespace {

// Muted: the photo is what should shine.
constexpr TrackStop temperatureStops[] = {
    {0, 74, 127, 201}, {0.5, 150, 150, 150}, {1, 222, 164, 62}};
constexpr TrackStop tintStops[] = {{0, 84, 168, 92}, {0.5, 150, 150, 150}, {1, 196, 92, 178}};
// The hue control turns a colour by up to half a circle of red either way.
constexpr TrackStop hueStops[] = {{0, 178, 84, 178},
                                  {0.25, 196, 82, 120},
                                  {0.5, 200, 88, 80},
                                  {0.75, 198, 140, 70},
                                  {1, 178, 176, 76}};
constexpr TrackStop saturationStops[] = {
    {0, 128, 128, 128}, {0.5, 156, 118, 108}, {1, 208, 82, 66}};
constexpr TrackStop vibranceStops[] = {{0, 128, 128, 128}, {0.5, 112, 132, 152}, {1, 66, 132, 196}};

} // namespace

std::span<const TrackStop> trackTint(AdjustmentSpec::Track track) {
    switch (track) {
    case AdjustmentSpec::Track::plain:
        break;
    case AdjustmentSpec::Track::temperature:
        return temperatureStops;
    case AdjustmentSpec::Track::tint:
        return tintStops;
    case AdjustmentSpec::Track::hue:
        return hueStops;
    case AdjustmentSpec::Track::saturation:
        return saturationStops;
    case AdjustmentSpec::Track::vibrance:
        return vibranceStops;
    }
    return {};
}

} // namespace kelvaro
