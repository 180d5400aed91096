// What the analysis of a photo found, as files for people: guides and haze map as 32-bit float
// TIFF, levels, endpoints and airlight as JSON.
#pragma once

#include "app/Services.h"
#include "develop/ImageSource.h"

namespace kelvaro {

// Measures every part, whatever the recipe needs, and writes guide.tif, scene-guide.tif, haze.tif
// and analysis.json into `folder`, which is made when it is missing. A part that the photo does not
// have (haze of a black picture) gets no file.
Result<void> writeAnalysis(const ImageSource& source, const Adjustments& edit,
                           const std::filesystem::path& folder, Services& services);

} // namespace kelvaro
