// How large the exported files will be, as the note under the format picker says it. Pure
// functions, any thread.
#pragma once

#include "export/ExportSettings.h"

#include <string>

namespace kelvaro {

// The megapixels of the output of a photo of so many, in the shape of a 3:2 frame.
double outputMegapixels(const ExportSettings& settings, double photoMegapixels);
double jpegMegabytes(double quality, double outputMegapixels);

std::string formatNote(const ExportSettings& settings, double photoMegapixels);

} // namespace kelvaro
