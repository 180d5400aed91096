#include "develop/HazeModel.h"
#include "develop/SceneTone.h"
#include "develop/stages/Stages.h"

namespace kelvaro {

Image bitmapHazeStage(const Image& image, const StageRun& run) {
    const auto air = normalisedAirlight(run.maps.airlight);
    if (!air) return image; // no channel lets light through: no model
    return dehazed(image, run.edit, run.maps.haze, *air);
}

} // namespace kelvaro
