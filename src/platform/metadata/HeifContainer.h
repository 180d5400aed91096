// The little of a HEIF container (ISO/IEC 23008-12) that properties need: the primary item's size
// and transforms, and where its EXIF block lies. Bounded against hostile boxes.
#pragma once

#include "base/Geometry.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <vector>

namespace kelvaro {

struct HeifFacts {
    std::optional<PixelSize> size;  // before rotation
    int orientation = 1;            // rotation and mirroring of the container as an EXIF code
    std::vector<std::byte> exif;    // a TIFF block; empty when there is none
    std::vector<std::byte> profile; // an ICC profile; empty when there is none
    std::optional<int> primaries;   // a code of ITU-T H.273
    std::optional<int> bitsPerSample;
};

// None when the file is no HEIF picture.
std::optional<HeifFacts> readHeif(const std::filesystem::path& path);

} // namespace kelvaro
