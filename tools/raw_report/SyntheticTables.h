// Tables of how near the development comes to pictures that are known.
#pragma once

#include <filesystem>

namespace kelvaro::report {

// Mosaic and demosaic of every picture in `kodak`; PSNR of 8-bit sRGB, a border of 4 left out.
void printDemosaic(const std::filesystem::path& kodak);

// RAW files in `raw` that have a NAME.truth.png: PSNR of display values.
void printTruth(const std::filesystem::path& raw);

// The pictures of `kodak` as scenes that clip a sensor by one and by two stops under two lights:
// mean CIEDE2000 of the rebuilt and of the plainly clipped picture, and the chroma where all
// channels are clipped.
void printHighlights(const std::filesystem::path& kodak);

} // namespace kelvaro::report
