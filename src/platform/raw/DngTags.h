// The tags of a DNG (Digital Negative 1.6) that its development needs. Implausible values are left
// out, so that a caller falls back to what it knows otherwise.
#pragma once

#include "platform/raw/DngOpcodes.h"
#include "platform/raw/SensorImage.h"
#include "platform/raw/TiffDirectory.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace kelvaro {

// Strips count as tiles of the picture's width.
struct TileGrid {
    int width = 0, height = 0; // of one tile
    std::vector<std::uint64_t> offsets, counts;
};

struct DngTags {
    int width = 0, height = 0, samplesPerPixel = 1;
    int photometric = 0; // 32803 filter mosaic, 34892 linear
    int compression = 1;
    int bitsPerSample = 16;
    bool isInteger = true; // and the samples of a pixel lie side by side, as they are
    bool isBigEndian = false;
    TileGrid tiles;
    std::vector<std::uint16_t> linearisation; // of stored samples; empty: none
    std::optional<SensorRect> activeArea;
    std::optional<SensorRect> defaultCrop; // relative to the active area, before any check
    std::optional<BlackLevels> black;      // origin at the active area's corner
    std::vector<double> white;             // one, or one per sample
    std::optional<ColourFilters> filters;  // relative to the active area's corner
    OpcodeCorrections corrections;
    CameraMatrices colour;
    int orientation = 1;
    std::optional<double> baselineExposureStops; // none where the file does not say
    double rowScale = 1, columnScale = 1;        // that make the pixels square; one of them is 1
    bool reachesPastEnd = false;                 // strips or tiles lie outside the file
};

// The directory of the main picture: the mosaic or linear one of the given size. None when this is
// no DNG or has no such picture. `fileBytes` is the length of the file.
std::optional<DngTags> readDngTags(const TiffFile& file, int width, int height,
                                   std::uint64_t fileBytes);

} // namespace kelvaro
