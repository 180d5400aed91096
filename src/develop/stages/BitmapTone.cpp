#include "develop/SceneTone.h"
#include "develop/kernels/Kernels.h"
#include "develop/stages/Stages.h"

namespace kelvaro {

Image bitmapToneStage(const Image& image, const StageRun& run) {
    const Adjustments& edit = run.edit;
    const bool moves = movesRegions(edit) && run.maps.sceneGuide;
    if (!moves && !curvesTone(edit)) return image;
    const Image guide = moves ? stretched(run.maps.sceneGuide, run.extent()) : image;
    const double shift = analysisShift(edit);
    const ToneEndpoints e = endpointsOf(run.maps.endpoints, edit, shift);
    return applyKernel(kernel::bitmapTone(), {image, guide},
                       {moves ? edit.shadows / 100 : 0, moves ? edit.highlights / 100 : 0, shift,
                        edit.contrast / 100, edit.white / 100, edit.black / 100, e.x, e.y, e.z,
                        e.w});
}

} // namespace kelvaro
