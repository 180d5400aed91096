// The size of a picture and its bits per sample from its own header. The size is for files whose
// metadata the library refuses: damaged PNG and JPEG files that a decoder still reads, and BigTIFF.
#pragma once

#include "base/Geometry.h"

#include <filesystem>
#include <optional>

namespace kelvaro {

bool canRead(const std::filesystem::path& path);
std::optional<PixelSize> sizeInHeader(const std::filesystem::path& path);
std::optional<int> bitsInHeader(const std::filesystem::path& path); // JPEG and PNG

} // namespace kelvaro
