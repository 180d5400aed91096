#include "platform/raw/SceneFile.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

namespace kelvaro {
namespace {

using namespace test;

// What the tags claim may be nonsense: a sentence that names the file, or a picture without a
// single absurd value.
TEST(BadRawInput, NonsenseInTagsIsRefusedOrSurvived) {
    const std::pair<const char*, std::function<void(SyntheticDng&)>> cases[] = {
        {"white 0", [](SyntheticDng& d) { d.claimedWhite = 0; }},
        {"white below black", [](SyntheticDng& d) { d.claimedWhite = 100; }},
        {"matrix 0", [](SyntheticDng& d) { d.matrix.fill(0); }},
        {"matrix of one rank", [](SyntheticDng& d) { d.matrix.fill(0.3); }},
        {"neutral 0", [](SyntheticDng& d) { d.neutral.fill(0); }},
        {"one neutral 0", [](SyntheticDng& d) { d.neutral[1] = 0; }},
        {"active outside",
         [](SyntheticDng& d) {
             d.active = {0, 0, 4800, 6400};
         }},
        {"active inverted",
         [](SyntheticDng& d) {
             d.active = {40, 50, 3, 2};
         }},
        {"crop outside",
         [](SyntheticDng& d) {
             d.crop = {60, 40, 6400, 4800};
         }},
        {"active area of one photosite",
         [](SyntheticDng& d) {
             d.active = {5, 5, 6, 6};
         }},
        {"crop of nothing",
         [](SyntheticDng& d) {
             d.crop = {3, 3, 0, 0};
         }},
        {"black above white", [](SyntheticDng& d) { d.black.fill(65535); }},
        {"exposure", [](SyntheticDng& d) { d.exposureStops = 1000; }},
        {"orientation", [](SyntheticDng& d) { d.orientation = 99; }},
        {"huge",
         [](SyntheticDng& d) {
             d.claimedSize = {100'000, 100'000};
         }},
        {"wide",
         [](SyntheticDng& d) {
             d.claimedSize = {60'000, 60'000};
         }},
        {"flat",
         [](SyntheticDng& d) {
             d.claimedSize = {64, 0};
         }},
        {"longer than stored",
         [](SyntheticDng& d) {
             d.claimedSize = {64, 4800};
         }},
    };
    for (const auto& [name, spoil] : cases) {
        SyntheticDng dng;
        dng.scene = ramp;
        spoil(dng);
        const auto path = dng.write("nonsense.dng");
        CameraRawEngine engine;
        for (const bool streamed : {false, true}) {
            auto file = engine.open(path);
            if (!file) {
                EXPECT_NE(file.error().message.find("nonsense.dng"), std::string::npos) << name;
                break;
            }
            RawDevelopSettings settings;
            settings.streamed = streamed;
            auto source = (*file)->develop(settings, nullptr);
            if (!source) {
                EXPECT_NE(source.error().message.find("nonsense.dng"), std::string::npos) << name;
                continue;
            }
            const PixelRect extent = (*source)->extent();
            EXPECT_LE(std::int64_t(extent.width) * extent.height, 64 * 4800) << name;
            Raster raster(extent, false);
            (*source)->read(raster.view());
            for (int c = 0; c < 3; ++c) {
                for (int y = 0; y < extent.height; ++y) {
                    const float* row = raster.row(c, y);
                    EXPECT_TRUE(std::all_of(row, row + extent.width, [](float v) {
                        return std::isfinite(v) && std::abs(v) < 1e5f;
                    })) << name;
                }
            }
        }
        std::filesystem::remove(path);
    }
}

} // namespace
} // namespace kelvaro
