// Real and synthetic photos from the folder KELVARO_PHOTOS; skipped where there is none.
#include "platform/raw/DevelopedPhoto.h"
#include "platform/raw/Measured.h"

#include <nlohmann/json.hpp>
#include <png.h>

#include <cmath>
#include <fstream>

namespace kelvaro {
namespace {

using nlohmann::json;
using test::developed;
using test::photos;

class Photos : public ::testing::Test {
protected:
    void SetUp() override {
        if (!std::filesystem::exists(photos() / "raw")) GTEST_SKIP() << "no photos";
    }
    static json info(const std::string& name) {
        return json::parse(std::ifstream(photos() / "raw" / (name + ".json")));
    }
    static std::filesystem::path raw(const std::string& name) { return photos() / "raw" / name; }
};

struct Rgb {
    double v[3];
};

// Over the part of a rectangle that lies inside the picture.
Rgb mean(const Raster& raster, int left, int top, int width, int height) {
    Rgb sum{};
    const PixelRect r = intersection(raster.extent(), {left, top, width, height});
    left = r.x, top = r.y, width = r.width, height = r.height;
    for (int c = 0; c < 3; ++c) {
        for (int y = top; y < top + height; ++y) {
            for (int x = left; x < left + width; ++x)
                sum.v[c] += double(raster.row(c, y)[x]);
        }
        sum.v[c] /= width * height;
    }
    return sum;
}

// Linear truth: 16-bit PNG times saturation / 65535.
std::vector<float> truth(const std::filesystem::path& path, double saturation, PixelSize& size) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str())) return {};
    image.format = PNG_FORMAT_LINEAR_RGB;
    std::vector<png_uint_16> samples(PNG_IMAGE_SIZE(image) / 2);
    if (!png_image_finish_read(&image, nullptr, samples.data(), 0, nullptr)) return {};
    size = {int(image.width), int(image.height)};
    std::vector<float> values(samples.size());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        values[i] = float(samples[i] * saturation / 65535);
    }
    return values;
}

double display(double linear) {
    const double v = std::clamp(linear, 0.0, 1.0);
    return v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1 / 2.4) - 0.055;
}

TEST_F(Photos, GreyCardIsExactEverywhere) {
    const Raster raster = developed(raw("flat_grey.dng"));
    ASSERT_EQ(raster.extent(), (PixelRect{0, 0, 240, 176}));
    // One step of the 14-bit samples is 0.00018 of red after balancing.
    for (int c = 0; c < 3; ++c) {
        for (int y = 0; y < 176; ++y) {
            for (int x = 0; x < 240; ++x)
                ASSERT_NEAR(raster.row(c, y)[x], 0.1812, 2e-4);
        }
    }
    const Raster half = developed(raw("flat_grey.dng"), {0, false, 2});
    ASSERT_EQ(half.extent(), (PixelRect{0, 0, 120, 88}));
    EXPECT_NEAR(half.row(1, 40)[50], 0.1812, 2e-4);
}

TEST_F(Photos, SceneMatchesItsTruth) {
    const json facts = info("scene_1mp5");
    RawDevelopSettings settings;
    settings.captureOnly = true;
    RawProperties properties;
    const Raster raster = developed(raw("scene_1mp5.dng"), settings, &properties);
    EXPECT_NEAR(properties.asShotTemperature, 5200, 30);
    EXPECT_NEAR(properties.baselineExposureStops, 1.526, 0.001);
    PixelSize size;
    const auto expected = truth(raw("scene_1mp5.truth.png"), facts["saturation_linear"], size);
    ASSERT_EQ(raster.extent().size(), size);
    double error = 0, count = 0;
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            for (int c = 0; c < 3; ++c) {
                const auto at = std::size_t((y * size.width + x) * 3 + c);
                const double d = display(raster.row(c, y)[x]) - display(expected[at]);
                error += d * d;
                ++count;
            }
        }
    }
    const double psnr = -10 * std::log10(error / count);
    std::printf("scene_1mp5: %.2f dB against its truth (display values, noise included)\n", psnr);
    EXPECT_GT(psnr, 31.5);
    // The patches are given in the active area; the crop starts at (8, 8).
    for (const json& patch : facts["patches"]) {
        const auto& r = patch["rect"];
        const Rgb got = mean(raster, int(r[0]) - 8, int(r[1]) - 8, r[2], r[3]);
        for (std::size_t c = 0; c < 3; ++c) {
            const double want = patch["linear"][c];
            if (want > 2.8) continue; // clipped
            EXPECT_NEAR(got.v[c], want, 0.0006 + 0.006 * want) << patch.dump();
        }
    }
}

TEST_F(Photos, MosaicsOfOneSceneAgree) {
    const Raster linear = developed(raw("phase_linear.dng"), {0, true, 1});
    for (const char* name : {"phase_rggb", "phase_bggr", "phase_xtrans"}) {
        const json facts = info(name);
        const Raster raster = developed(raw(std::string(name) + ".dng"), {0, true, 1});
        for (const json& patch : facts["patches"]) {
            const auto& r = patch["rect"];
            const Rgb got = mean(raster, int(r[0]) - 8, int(r[1]) - 8, r[2], r[3]);
            for (std::size_t c = 0; c < 3; ++c) {
                const double want = patch["linear"][c];
                if (want > 0.95) continue; // clipped
                EXPECT_NEAR(got.v[c], want, 0.002 + 0.02 * want) << name << patch.dump();
            }
        }
        if (raster.extent() != linear.extent()) continue; // the 6 × 6 one is larger
        double error = 0;
        for (int c = 0; c < 3; ++c) {
            for (int y = 0; y < linear.extent().height; ++y) {
                for (int x = 0; x < linear.extent().width; ++x) {
                    const double d = display(raster.row(c, y)[x]) - display(linear.row(c, y)[x]);
                    error += d * d;
                }
            }
        }
        const double psnr =
            -10 * std::log10(error / (3.0 * linear.extent().width * linear.extent().height));
        std::printf("%s: %.2f dB against the scene without a mosaic\n", name, psnr);
        EXPECT_GT(psnr, 28) << name;
    }
}

TEST_F(Photos, OddSensorShowsItsPatches) {
    const json facts = info("scene_odd");
    RawProperties properties;
    const Raster raster = developed(raw("scene_odd.dng"), {0, true, 1}, &properties);
    ASSERT_EQ(raster.extent(), (PixelRect{0, 0, 995, 1491}));
    EXPECT_NEAR(properties.asShotTemperature, 3200, 25);
    for (const json& patch : facts["patches"]) {
        // Orientation 6: stored (row, column) stands at row `column`, column height − 1 − `row`.
        const auto& r = patch["rect"];
        const int left = int(r[0]) - 5, top = int(r[1]) - 3, width = r[2], height = r[3];
        const Rgb got = mean(raster, 995 - top - height, left, height, width);
        for (std::size_t c = 0; c < 3; ++c) {
            const double want = patch["linear"][c];
            if (want > 0.95) continue;
            EXPECT_NEAR(got.v[c], want, 0.002 + 0.02 * want) << patch.dump();
        }
    }
}

TEST_F(Photos, TurnedPicturesStandUpright) {
    const Raster a = developed(raw("orient_3.dng"), {0, true, 1});
    const Raster b = developed(raw("orient_8.dng"), {0, true, 1});
    ASSERT_EQ(a.extent().size(), (PixelSize{464, 304}));
    ASSERT_EQ(b.extent().size(), (PixelSize{304, 464}));
    // Both store the same samples: 3 is turned by 180°, 8 by 90° to the left.
    for (int y = 0; y < 304; y += 7) {
        for (int x = 0; x < 464; x += 7) {
            const int row = 303 - y, column = 463 - x; // stored
            EXPECT_EQ(a.row(0, y)[x], b.row(0, 463 - column)[row]);
        }
    }
}

TEST_F(Photos, EveryRawOpensAndDevelopsAtBothSizes) {
    const json sizes = json::parse(std::ifstream(photos() / "raw_oracle.json"));
    CameraRawEngine engine;
    for (const auto& entry : std::filesystem::directory_iterator(photos() / "raw")) {
        const std::string extension = entry.path().extension();
        if (extension == ".json" || extension == ".png") continue;
        auto file = engine.open(entry.path());
        ASSERT_TRUE(file) << file.error().message;
        const PixelSize size = (*file)->properties().size;
        for (const int reduction : {1, 2}) {
            auto source = (*file)->develop({0, false, reduction}, nullptr);
            ASSERT_TRUE(source) << source.error().message;
            EXPECT_EQ((*source)->extent().size(),
                      (PixelSize{size.width / reduction, size.height / reduction}))
                << entry.path();
            Raster raster((*source)->extent(), false);
            (*source)->read(raster.view());
            const Rgb m = mean(raster, 0, 0, raster.extent().width, raster.extent().height);
            for (const double v : m.v)
                EXPECT_TRUE(v > -0.01 && v < 2) << entry.path();
        }
        const json& oracle = sizes["raw/" + entry.path().filename().string()];
        const auto preview = (*file)->preview();
        ASSERT_TRUE(preview) << entry.path();
        // A thumbnail of the 2001 camera is no JPEG.
        const bool expects = !oracle["thumb_size"].is_null() && extension != ".NEF";
        EXPECT_EQ(preview->has_value(), expects) << entry.path();
        if (*preview) {
            EXPECT_EQ((*preview)->bytes[0], std::byte{0xff});
            EXPECT_EQ((*preview)->bytes[1], std::byte{0xd8});
        }
    }
}

TEST_F(Photos, BrokenFilesFailClearlyOrGiveAPicture) {
    struct Row {
        const char* name;
        bool opens, develops;
        const char* why; // part of the message
    };
    const Row rows[] = {
        {"canon_1ds3_header_only.cr2", false, false, "not a RAW file"},
        {"canon_r6_pruned.CR3", false, false, "not a RAW file"},
        {"canon_s40_first_600k.CRW", false, false, "not a RAW file"},
        {"capture_nx_saved.nef", false, false, "not a RAW file"},
        {"crop_outside.dng", true, true, ""},
        {"DC0010S.KDC", true, true, ""},
        {"empty_file.cr2", false, false, "is empty"},
        {"entry_count_65535.dng", false, false, "not a RAW file"},
        {"flipped_bits_lj92.dng", true, true, ""},
        {"huge_dimensions.dng", false, false, ""},
        {"iphone12pro_proraw_no_pixels.dng", false, false, "too short"},
        {"jpeg_inside.dng", false, false, "not a RAW file"},
        {"matrix_all_zero.dng", true, true, ""},
        {"metadata_garbage.dng", true, true, ""},
        {"neutral_zero.dng", true, true, ""},
        {"no_as_shot_neutral.dng", true, true, ""},
        {"no_cfa_pattern.dng", true, true, ""},
        {"poc_1530.crw", false, false, ""},
        {"poc_839.rw2", false, false, "not a RAW file"},
        {"poc_857.raf", false, false, "not a RAW file"},
        {"sony_a55_first_1.3M.arw", true, false, "damaged or incomplete"},
        {"sony_zv-e10_first_100k.arw", false, false, "not a RAW file"},
        {"strip_past_end.dng", true, false, "damaged or incomplete"},
        {"subifd_loop.dng", false, false, "not a RAW file"},
        {"text_inside.nef", false, false, "not a RAW file"},
        {"truncated_half.dng", true, false, "damaged or incomplete"},
        {"unsupported_compression.dng", false, false, "not a RAW file"},
        {"no such file.dng", false, false, "not there"},
    };
    CameraRawEngine engine;
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    std::vector<std::string> complaints;
    const auto expect = [&](bool holds, const std::string& what) {
        if (!holds) complaints.push_back(what);
    };
    for (const Row& row : rows) {
        const test::Measured measured;
        auto file = engine.open(photos() / "broken" / row.name);
        expect(bool(file) == row.opens, std::string("opening ") + row.name);
        const auto clear = [&](const Failure& failure) {
            expect(failure.message.find(row.name) != std::string::npos,
                   "no name: " + failure.message);
            expect(failure.message.find(row.why) != std::string::npos,
                   "reason: " + failure.message);
        };
        if (!file) {
            clear(file.error());
            continue;
        }
        expect(bool((*file)->preview()), std::string("preview of ") + row.name);
        const auto source = (*file)->develop({}, nullptr);
        expect(bool(source) == row.develops, std::string("developing ") + row.name);
        if (!source) clear(source.error());
        // Samples and pixels of the largest of them, which are real.
        measured.expectModest(row.name, 300);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    for (const std::string& complaint : complaints)
        ADD_FAILURE() << complaint;
}

} // namespace
} // namespace kelvaro
