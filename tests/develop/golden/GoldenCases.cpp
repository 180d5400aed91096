#include "develop/golden/GoldenCases.h"

#include "develop/BrushRaster.h"
#include "develop/CropGeometry.h"
#include "develop/Pictures.h"
#include "develop/Recipes.h"
#include "develop/ToneAnalysis.h"
#include "places/Places.h"

#include <bit>
#include <cstdio>
#include <cstring>
#include <fstream>

namespace kelvaro::test {

namespace {

constexpr PixelSize kSize{20, 14};
static_assert(std::endian::native == std::endian::little, "golden pictures are little-endian");

struct Case {
    const char* name;
    bool raw;
    Adjustments edit;
};

template<class Change>
Adjustments with(Change change) {
    Adjustments edit;
    change(edit);
    return edit;
}

std::vector<Case> cases() {
    using A = Adjustments;
    std::vector<Case> list{
        {"exposure", false, with([](A& a) { a.exposure = 1.5, a.temperature = 60, a.tint = -30; })},
        {"dehaze-remove", false, with([](A& a) { a.dehaze = 80; })},
        {"dehaze-add", false, with([](A& a) { a.dehaze = -80; })},
        {"clarity", false, with([](A& a) { a.clarity = 100, a.brightness = 20; })},
        {"regions", false, with([](A& a) { a.shadows = 120, a.highlights = -80; })},
        {"curve", false, with([](A& a) { a.contrast = 60, a.white = 40, a.black = -40; })},
        {"mask", false, with([](A& a) { a.masks = {everyShapeMask()}; })},
        {"colour", false, with([](A& a) { a.hue = 40, a.saturation = 50, a.vibrance = 60; })},
        {"monochrome", false, with([](A& a) { a.blackAndWhite = 1; })},
        {"vignette", false, with([](A& a) { a.vignette = -90, a.cropLeft = 0.3; })},
        {"grain", false, with([](A& a) { a.grain = 100, a.grainSize = -40; })},
        {"straighten", false, with([](A& a) { a.straighten = 12, a.cropTop = 0.2; })},
        {"raw-rendering", true, {}},
        {"raw-tone", true,
         with([](A& a) { a.exposure = -1, a.dehaze = 40, a.shadows = 80, a.contrast = -40; })},
        {"bitmap-everything", false, everything()},
        {"raw-everything", true, everything()},
    };
    for (Case& c : list)
        if (c.edit.blackAndWhite != 0 && c.edit.exposure != 0)
            c.edit.blackAndWhite = 0; // in colour
    return list;
}

ImageSource sourceOf(const Case& c) {
    const Image picture = testPicture(kSize, c.raw ? 9 : 1);
    RawProperties properties;
    properties.size = kSize;
    properties.asShotTemperature = 5200;
    return c.raw ? rawSource(c.name, "", picture, properties)
                 : bitmapSource(c.name, "", picture, kSize);
}

} // namespace

std::vector<GoldenPicture> drawnGoldenPictures(Renderer& renderer) {
    std::vector<GoldenPicture> pictures;
    for (const Case& c : cases()) {
        BrushRaster brushes;
        const ImageSource source = sourceOf(c);
        const auto developed = developedPhoto(source, c.edit, 1, renderer, brushes, nullptr);
        const Image shaped = straightenedAndCropped(*developed, c.edit);
        pictures.push_back({c.name, source.decoded(), drawn(renderer, shaped)});
    }
    const Image picture = testPicture(kSize, 1.4f);
    pictures.push_back(
        {"output-srgb", picture,
         drawn(renderer, Pipeline::gamutMapped(picture, Pipeline::OutputSpace::sRGB))});
    return pictures;
}

std::filesystem::path goldenPath(const std::string& name) {
    return places::source() / "tests/develop/golden/pictures" / (name + ".golden");
}

std::optional<Raster> readGolden(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::string line;
    int width = 0, height = 0;
    if (!std::getline(file, line) ||
        std::sscanf(line.c_str(), "KelvaroGolden %d %d", &width, &height) != 2 || width < 1 ||
        height < 1 || width > 4096 || height > 4096)
        return std::nullopt;
    Raster pixels({0, 0, width, height}, false);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            float pixel[3];
            if (!file.read(reinterpret_cast<char*>(pixel), sizeof pixel)) return std::nullopt;
            for (int plane = 0; plane < 3; ++plane)
                pixels.row(plane, y)[x] = pixel[plane];
        }
    return pixels;
}

void writeGolden(const std::filesystem::path& path, const Raster& pixels) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file << "KelvaroGolden " << pixels.extent().width << ' ' << pixels.extent().height << '\n';
    for (int y = 0; y < pixels.extent().height; ++y)
        for (int x = 0; x < pixels.extent().width; ++x) {
            const float pixel[3] = {pixels.row(0, y)[x], pixels.row(1, y)[x], pixels.row(2, y)[x]};
            file.write(reinterpret_cast<const char*>(pixel), sizeof pixel);
        }
}

} // namespace kelvaro::test
