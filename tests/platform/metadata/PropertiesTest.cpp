#include "fakes/TemporaryFolder.h"
#include "places/Places.h"
#include "platform/metadata/ExifPropertyReader.h"
#include "platform/metadata/HeifContainer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <thread>

namespace kelvaro {
namespace {

using places::photos;

class Properties : public ::testing::Test {
protected:
    void SetUp() override {
        if (!std::filesystem::exists(photos() / "bitmap")) GTEST_SKIP() << "no photos";
    }
    PhotoProperties of(const std::string& name) {
        auto read = reader.read(photos() / name);
        EXPECT_TRUE(read) << name;
        return read ? *read : PhotoProperties();
    }
    ExifPropertyReader reader;
};

TEST_F(Properties, ComeUnderTheStandardsNames) {
    const auto south = of("bitmap/meta_gps_south_east_below_sea.jpg").gps;
    EXPECT_GT(*south.number("Latitude"), 0); // the side is a value of its own
    EXPECT_EQ(south.text("LatitudeRef"), "S");
    EXPECT_EQ(south.text("LongitudeRef"), "E");
    EXPECT_EQ(south.number("Altitude"), 12.5);
    EXPECT_EQ(south.integer("AltitudeRef"), 1);
    EXPECT_EQ(of("bitmap/meta_gps_zero_zero.jpg").gps.number("Latitude"), 0.0);
    EXPECT_FALSE(of("bitmap/45-gps_ifd.jpg").gps.find("Latitude"));

    EXPECT_EQ(of("bitmap/meta_two_isos.jpg").exif.number("ISOSpeedRatings"), 320);
    EXPECT_EQ(of("bitmap/meta_long_exposure_iso_max.jpg").exif.number("RecommendedExposureIndex"),
              102400);
    EXPECT_EQ(of("bitmap/meta_offset_plus0900_bias0.jpg").exif.text("OffsetTimeOriginal"),
              "+09:00");
    EXPECT_EQ(of("bitmap/meta_no_offset_bias_minus1.jpg").exif.number("ExposureBiasValue"), -1);
    EXPECT_FALSE(of("bitmap/meta_no_offset_bias_minus1.jpg").exif.find("OffsetTimeOriginal"));
    EXPECT_FALSE(of("bitmap/meta_blank_texts.jpg").tiff.text("Make"));

    const PhotoProperties lens = of("bitmap/meta_lens_only_in_aux.jpg");
    EXPECT_FALSE(lens.exif.find("LensModel"));
    EXPECT_EQ(lens.auxiliary.text("LensModel"), "Aux 50mm f/1.4");
    // From the maker note: a lens number resolved, a number that is not in the list, a fixed lens.
    EXPECT_EQ(of("bitmap/DSC_0003.JPG").auxiliary.text("LensModel"),
              "Nikon AF-S Nikkor 50mm f/1.8G");
    EXPECT_FALSE(of("raw/canon_eos_d30_lawn.crw").auxiliary.text("LensModel"));
    EXPECT_FALSE(of("raw/Canon PowerShot S40 CRW_0119.CRW").auxiliary.text("LensModel"));
    EXPECT_TRUE(of("bitmap/Sony DSC-P12.jpg").auxiliary.find("LensModel") == nullptr);
    EXPECT_EQ(of("raw/scene_odd.dng").tiff.text("Artist"), "José Ñandú 山田");
    EXPECT_EQ(of("raw/scene_odd.dng").auxiliary.text("SerialNumber"), "SYN000001");
    EXPECT_NEAR(*of("raw/canon_powershot_g1_cmyg.crw").exif.number("ExposureTime"), 8, 1e-9);
}

TEST_F(Properties, SizesAndTurns) {
    const auto upright = [&](const std::string& name) {
        return of(name).uprightSize().value_or(PixelSize{});
    };
    EXPECT_EQ(upright("raw/scene_odd.dng"), (PixelSize{995, 1491}));
    EXPECT_EQ(upright("raw/blackmagic_pocket_cinemadng.dng"), (PixelSize{1920, 1080}));
    EXPECT_EQ(upright("raw/Canon PowerShot G2 CRW_0304.CRW"), (PixelSize{2272, 1704}));
    EXPECT_EQ(upright("bitmap/IMG_8565.HEIC"), (PixelSize{3024, 4032}));
    EXPECT_EQ(upright("bitmap/IMG_5195.HEIC"), (PixelSize{2566, 3313}));
    EXPECT_EQ(upright("bitmap/Landscape_6.jpg"), (PixelSize{1800, 1200}));
    EXPECT_EQ(upright("bitmap/BigTIFF.tif"), (PixelSize{64, 64}));
    EXPECT_EQ(upright("bitmap/meta_exif_size_disagrees.jpg"), (PixelSize{480, 320}));
    for (int i = 1; i <= 8; ++i) {
        EXPECT_EQ(of("bitmap/orientation" + std::to_string(i) + ".heic").orientation, i);
    }
    EXPECT_EQ(of("bitmap/Landscape_0.jpg").orientation, 1);
    EXPECT_EQ(of("broken/metadata_garbage.dng").orientation, 1);
}

TEST_F(Properties, GarbageIsLeftOut) {
    const PhotoProperties garbage = of("broken/metadata_garbage.dng");
    EXPECT_FALSE(garbage.exif.find("FNumber") && !garbage.exif.number("FNumber"));
    EXPECT_FALSE(garbage.exif.number("ExposureTime")); // 1/0
    for (const auto* dictionary : {&garbage.exif, &garbage.tiff, &garbage.gps}) {
        for (const auto& [key, value] : dictionary->values()) {
            if (const double* number = std::get_if<double>(&value)) {
                EXPECT_TRUE(std::isfinite(*number)) << key;
            }
        }
    }
    EXPECT_TRUE(of("broken/text_inside.nef").exif.isEmpty());
}

TEST_F(Properties, MissingAndEmptyFilesFail) {
    const auto missing = reader.read(photos() / "bitmap/none.jpg");
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().kind, FailureKind::notFound);
    EXPECT_FALSE(reader.read(photos() / "broken/empty_file.cr2"));
    EXPECT_FALSE(reader.read(photos() / "bitmap"));
}

TEST_F(Properties, DamagedBytesNeitherCrashNorPrint) {
    testing::internal::CaptureStderr();
    const auto path = temporaryPath("damaged");
    std::mt19937 random(20261121);
    for (const char* name : {"bitmap/orientation6.heic", "bitmap/meta_utf8_credits.jpg",
                             "bitmap/png_exif_orientation6.png", "raw/flat_grey.dng",
                             "broken/canon_r6_pruned.CR3", "broken/poc_1530.crw"}) {
        std::ifstream in(photos() / name, std::ios::binary);
        const std::string sound(std::istreambuf_iterator<char>(in), {});
        for (int round = 0; round < 40; ++round) {
            std::string damaged = sound;
            const std::size_t reach = std::min<std::size_t>(damaged.size(), 4000);
            for (int i = 0; i < 8; ++i)
                damaged[random() % reach] = char(random());
            if (round % 4 == 0) damaged.resize(random() % damaged.size() + 1);
            std::ofstream(path, std::ios::binary) << damaged;
            const auto read = reader.read(path);
            EXPECT_TRUE(read) << name << " round " << round;
            if (read && read->storedSize) {
                EXPECT_GT(read->storedSize->width, 0);
            }
        }
    }
    std::filesystem::remove(path);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(Properties, AreReadFromSeveralThreads) {
    const auto expected = of("bitmap/meta_lens_only_in_aux.jpg").auxiliary.values();
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            ExifPropertyReader own;
            for (int k = 0; k < 50; ++k) {
                const auto read = own.read(photos() / "bitmap/meta_lens_only_in_aux.jpg");
                if (!read || read->auxiliary.values() != expected) ++wrong;
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

} // namespace
} // namespace kelvaro
