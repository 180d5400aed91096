#include "platform/raw/Measured.h"
#include "platform/raw/SceneFile.h"

#include "platform/codecs/CodecImageFiles.h"
#include "platform/codecs/SampleFiles.h"

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
        const Measured measured;
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
        // What a thread needs for its tiles, and the picture where it is as long as claimed.
        measured.expectModest(name, 64);
    }
}

// Whatever the preview is, the RAW data are a picture, even where the preview was to tell its
// brightness.
TEST(BadRawInput, BadPreviewsHurtNothing) {
    using Bytes = std::vector<std::byte>;
    const Bytes good = makeJpeg({320, 200}, {});
    const Bytes noJpeg(5000, std::byte{0x55}), cutHead(good.begin(), good.begin() + 20);
    const Bytes cutBody(good.begin(), good.begin() + std::ptrdiff_t(good.size() / 2));
    // Claims 65535 × 65535 pixels.
    constexpr std::byte kFrame[] = {std::byte{0xff}, std::byte{0xc0}, std::byte{0}, std::byte{17}};
    Bytes huge = good;
    const auto frame = std::search(huge.begin(), huge.end(), std::begin(kFrame), std::end(kFrame));
    ASSERT_NE(frame, huge.end());
    std::fill_n(frame + 5, 4, std::byte{0xff});
    struct Row {
        const char* what;
        Bytes preview;
        bool isSomething;
    };
    for (const Row& row : {Row{"missing", {}, false}, Row{"no JPEG", noJpeg, false},
                           Row{"cut in its head", cutHead, false}, Row{"cut", cutBody, true},
                           Row{"huge", huge, true}}) {
        SyntheticDng dng;
        dng.scene = [](int, int, int) { return 0.5; };
        dng.statesExposure = false;
        dng.secondJpeg = row.preview;
        const auto path = dng.write("bad_preview.dng");
        const Measured measured;
        CameraRawEngine engine(makeImageReader());
        auto file = engine.open(path);
        ASSERT_TRUE(file) << file.error().message;
        const auto preview = (*file)->preview();
        ASSERT_TRUE(preview);
        EXPECT_EQ(preview->has_value(), row.isSomething) << row.what;
        const auto source = (*file)->develop({}, nullptr);
        EXPECT_TRUE(source) << row.what;
        measured.expectModest(row.what, 64);
        std::filesystem::remove(path);
    }
}

} // namespace
} // namespace kelvaro
