// The golden pictures: what each stage, and a few whole recipes, made of a small picture when
// somebody last looked at it and approved. They are drawn by the plain renderer in double
// precision.
#pragma once

#include "platform/Image.h"
#include "platform/Renderer.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace kelvaro::test {

struct GoldenPicture {
    std::string name;
    Image input;
    Raster pixels;
};

// All of them, as the program draws them now.
std::vector<GoldenPicture> drawnGoldenPictures(Renderer& renderer);

// A stored picture: a line "KelvaroGolden WIDTH HEIGHT", then rows top-down of red, green and blue
// as 32-bit floats, least significant byte first. None where there is no such file or it is
// damaged.
std::optional<Raster> readGolden(const std::filesystem::path& path);
void writeGolden(const std::filesystem::path& path, const Raster& pixels);
std::filesystem::path goldenPath(const std::string& name);

} // namespace kelvaro::test
