// From a photo and a recipe to the tone maps of one run, and to the developed picture: the analysis
// of the photo is measured as far as the recipe needs it, reused, and brought to the run's exposure
// and white balance. Blocking; any thread.
#pragma once

#include "develop/PhaseTimes.h"
#include "develop/Pipeline.h"
#include "develop/ToneMeasurement.h"

namespace kelvaro {

// Failures are the renderer's: cancelled, outOfMemory. The guide for clarity of a RAW photo is made
// from the analysis image developed with this recipe's RawParams, so that it does not depend on the
// zoom.
Result<ToneMaps> toneMaps(const ImageSource& source, const Adjustments& edit, Renderer& renderer,
                          const Cancellation* cancellation);
// The same with the parts that are asked for, whatever the recipe needs.
Result<ToneMaps> toneMaps(const ImageSource& source, const Adjustments& edit, ToneNeeds needs,
                          Renderer& renderer, const Cancellation* cancellation);

// The whole photo developed at `scale`, before crop and output, as a lazy image. The measuring is
// timed as "analysis" where `times` are wanted.
Result<Image> developedPhoto(const ImageSource& source, const Adjustments& edit, double scale,
                             Renderer& renderer, BrushRaster& brushes,
                             const Cancellation* cancellation, PhaseTimes* times = nullptr);

} // namespace kelvaro
