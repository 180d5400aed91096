#include "platform/raw/BrightnessMatch.h"
#include "platform/codecs/SampleFiles.h"
#include "platform/raw/DevelopedPhoto.h"
#include "platform/raw/SyntheticDng.h"
#include "platform/raw/WhiteMatch.h"

#include <cmath>
#include <random>

namespace kelvaro {
namespace {

// A scene of log-normal brightness and what a camera makes of it.
std::vector<float> scene(double stops, std::size_t count = 20000) {
    std::mt19937 random(5);
    std::normal_distribution<double> normal(-2.8, 1.6);
    std::vector<float> values;
    for (std::size_t i = 0; i < count; ++i)
        values.push_back(float(std::exp2(normal(random) + stops)));
    return values;
}

TEST(BrightnessMatch, FindsTheStopsBetweenPreviewAndSensor) {
    for (const double stops : {-1.2, 0.0, 0.4, 1.1}) {
        EXPECT_NEAR(*matchedStops(scene(0), scene(-stops)), stops, 0.02);
    }
    EXPECT_EQ(*matchedStops(scene(0), scene(-4)), 1.5);
    EXPECT_EQ(*matchedStops(scene(0), scene(4)), -1.5);
}

TEST(BrightnessMatch, ContrastAndClippingOfTheCameraDoNotMislead) {
    auto preview = scene(0);
    // Shoulder above, crushed shadows below; the mid-tones keep their place.
    for (float& v : preview)
        v = v > 0.18f ? 1 - 0.82f * std::exp(-(v - 0.18f) / 0.82f)
                      : 0.18f * std::pow(v / 0.18f, 1.4f);
    EXPECT_NEAR(*matchedStops(preview, scene(-0.7)), 0.7, 0.45);
}

TEST(BrightnessMatch, IsSilentWithoutMidTones) {
    EXPECT_FALSE(matchedStops(std::vector<float>(5000, 0.99f), scene(0)));
    EXPECT_FALSE(matchedStops(scene(0), std::vector<float>(5000, 0.0f)));
    EXPECT_FALSE(matchedStops({}, {}));
}

// A neutral chart of patches, developed under the wrong white: the preview tells the right one.
TEST(WhiteMatch, FindsTheWhiteOfThePreview) {
    const PixelSize size{240, 160};
    const auto chart = [](int x, int y) { return 0.05f + 0.04f * float((x / 20 + y / 20) % 9); };
    DecodedBitmap preview;
    preview.pixels = Bitmap(size, 3, SampleType::f32);
    Raster developed({0, 0, size.width, size.height}, false);
    CameraColour colour;
    colour.balance = {2, 1, 1.5, 1};
    // Camera channels that overlap; rows keep white.
    colour.toWorking = {{{1.5, -0.4, -0.1, 0}, {-0.2, 1.4, -0.2, 0}, {0, -0.5, 1.5, 0}}};
    const double cast[3] = {1.3, 1, 0.7}; // camera values of what is white
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            for (std::size_t i = 0; i < 3; ++i) {
                double sum = 0;
                for (std::size_t c = 0; c < 3; ++c)
                    sum += colour.toWorking[i][c] * cast[c];
                preview.pixels.row<float>(y)[std::size_t(x) * 3 + i] = chart(x, y);
                developed.row(int(i), y)[x] = chart(x, y) * float(sum);
            }
        }
    }
    const auto neutral = matchedNeutral(developed, colour, preview);
    ASSERT_TRUE(neutral);
    for (std::size_t c = 0; c < 3; ++c)
        EXPECT_NEAR((*neutral)[c], cast[c] / colour.balance[c], 0.01 * cast[c]);
}

// A reader that always sees the same flat grey.
class GreyReader final : public ImageReader {
public:
    Result<DecodedBitmap> decode(const std::filesystem::path&, const DecodeLimits&,
                                 const Cancellation*) override {
        return fail(FailureKind::internal, "not asked for");
    }
    Result<DecodedBitmap> decode(std::span<const std::byte>, const std::string&,
                                 const DecodeLimits&, const Cancellation*) override {
        DecodedBitmap picture;
        picture.pixels = Bitmap({200, 150}, 3, SampleType::f32);
        for (int y = 0; y < 150; ++y)
            std::fill_n(picture.pixels.row<float>(y), 600, 0.2f);
        return picture;
    }
};

// Files under a preview of 0.2: what they state decides, but 0, which programs also write that know
// nothing, only where the preview is nearly as bright.
TEST(BrightnessMatch, BelongsToFilesThatStateNothing) {
    const struct {
        std::optional<double> stated;
        double scene, expected;
    } cases[] = {
        {std::nullopt, 0.18, 0.152},
        {std::nullopt, 0.1, 1},
        {std::nullopt, 0.01, 1.5},
        {0.0, 0.18, 0},
        {0.0, 0.15, 0},
        {0.0, 0.1, 1},
        {0.0, 0.4, -1},
        {0.25, 0.1, 0.25},
        {-0.5, 0.4, -0.5},
    };
    for (const auto& [stated, scene, expected] : cases) {
        test::SyntheticDng dng;
        dng.scene = [light = scene](int, int, int) { return light; };
        dng.statesExposure = stated.has_value();
        dng.exposureStops = stated.value_or(0);
        dng.jpeg = test::makeJpeg({320, 200}, {});
        const auto path = dng.write("brightness.dng");
        CameraRawEngine engine(std::make_shared<GreyReader>());
        auto file = engine.open(path);
        ASSERT_TRUE(file);
        ASSERT_TRUE((*file)->develop({0, true, 2}, nullptr));
        EXPECT_NEAR((*file)->properties().baselineExposureStops, expected, 0.01)
            << scene << ", stated " << stated.value_or(-99);
        std::filesystem::remove(path);
    }
}

} // namespace
} // namespace kelvaro
