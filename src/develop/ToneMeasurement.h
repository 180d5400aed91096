// What is measured on a photo's pixels, once, at analysis size: levels, guides and haze.
// Independent of the recipe, except that a recipe says which parts it needs. Blocking; any thread.
#pragma once

#include "develop/HazeModel.h"
#include "develop/ToneMaps.h"
#include "platform/Renderer.h"
#include "recipe/Adjustments.h"

#include <cstddef>
#include <optional>

namespace kelvaro {

// The parts that a recipe's stages will ask for.
struct ToneNeeds {
    bool small = false, guide = false, sceneGuide = false, levels = false, haze = false;

    static ToneNeeds of(const Adjustments& edit);
    // What of it is measured on a RAW photo's capture: its guide is that of the developed picture,
    // which is made from the small one.
    ToneNeeds onCapture() const;
    bool any() const { return small || guide || sceneGuide || levels || haze; }
};

// Which light a photo's pixels are in.
enum class PhotoDomain { sceneLinear, displayLinear };

// Analysis images are drawn, opaque and at most 512 pixels on the longer side. What is absent has
// not been measured yet; haze that was sought and not found is a measurement too.
struct ToneMeasurement {
    Image small;      // the decoded pixels
    Image sceneSmall; // in scene-linear light; the same as `small` for RAW photos
    Image guide;      // of `small`
    Image sceneGuide;
    std::optional<ToneLevels> levels;
    bool hazeSought = false;
    std::optional<HazeModel> haze;

    std::size_t bytes() const; // memory that the images hold
    // Whether all that is needed is there, so that the photo need not be looked at.
    bool covers(const ToneNeeds& needs) const;
};

// `known` with the needed parts added, measured on `photo` (at full resolution, or the best there
// is). Failures are the renderer's: cancelled, outOfMemory. An empty photo gives `known` unchanged.
Result<ToneMeasurement> measured(ToneMeasurement known, const Image& photo, PhotoDomain domain,
                                 ToneNeeds needs, Renderer& renderer,
                                 const Cancellation* cancellation);

// The maps of a run whose scene lies `shiftStops` above the measured one. The airlight is as
// measured.
ToneMaps toneMapsOf(const ToneMeasurement& measurement, const Adjustments& edit, double shiftStops);

} // namespace kelvaro
