#include "develop/SceneTone.h"
#include "develop/kernels/Kernels.h"
#include "develop/stages/Stages.h"

namespace kelvaro {

Image bitmapToneStage(const Image& image, const StageRun& run) {
    const Adjustments& edit = run.edit;
    if (!movesRegions(edit) && !curvesTone(edit)) return image;
    Image scene = applyKernel(kernel::bitmapToScene(), {image}, {});
    scene = regionsMoved(scene, edit, run.maps.sceneGuide, analysisShift(edit));
    scene = toneCurved(scene, edit, run.maps.endpoints, analysisShift(edit));
    return applyKernel(kernel::sceneToBitmap(), {scene}, {});
}

} // namespace kelvaro
