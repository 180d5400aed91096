// Real files: every sound one decodes to the size that another program reads from it, no broken one
// does harm. Needs the test photos (environment variable KELVARO_PHOTOS).
#include "places/Places.h"
#include "platform/codecs/CodecTestSupport.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sys/resource.h>

namespace kelvaro::test {
namespace {

namespace fs = std::filesystem;

using places::photos;

std::vector<fs::path> filesIn(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(folder))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

long peakMegabytes() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

TEST(Photos, EverySoundFileDecodesToItsSize) {
    if (!fs::exists(photos() / "bitmap")) GTEST_SKIP() << "no test photos at " << photos();
    nlohmann::json oracle;
    std::ifstream(photos() / "oracle.json") >> oracle;
    const auto reader = makeImageReader();
    for (const auto& path : filesIn(photos() / "bitmap")) {
        const auto picture = reader->decode(path);
        ASSERT_TRUE(picture) << picture.error().message;
        const auto& facts = oracle["bitmap/" + path.filename().string()];
        const auto number = [&](std::initializer_list<const char*> keys) {
            for (const char* key : keys)
                if (facts.contains(key) && facts[key].is_number_integer())
                    return facts[key].get<int>();
            return 0;
        };
        // The size as stored; the sides may be swapped by the orientation.
        const int width = number({"File:ImageWidth", "PNG:ImageWidth", "IFD0:ImageWidth"});
        const int height = number({"File:ImageHeight", "PNG:ImageHeight", "IFD0:ImageHeight"});
        if (width == 0 || height == 0) continue;
        const auto size = picture->pixels.size;
        EXPECT_EQ(std::minmax(size.width, size.height), std::minmax(width, height)) << path;
    }
}

// The same picture in five colour spaces: where sRGB could hold it, all agree in linear light.
TEST(Photos, OnePictureInManySpacesLooksTheSame) {
    const auto folder = photos() / "bitmap";
    if (!fs::exists(folder)) GTEST_SKIP() << "no test photos at " << photos();
    const auto reader = makeImageReader();
    const auto reference = reader->decode(folder / "icc_display_p3.jpg");
    ASSERT_TRUE(reference);
    for (const char* name : {"icc_adobe_rgb.jpg", "icc_none_srgb.jpg", "icc_prophoto_16bit_lzw.tif",
                             "icc_srgb_16bit.png", "heic_p3_10bit.heic"}) {
        const auto picture = reader->decode(folder / name);
        ASSERT_TRUE(picture) << name;
        ASSERT_EQ(picture->pixels.size, reference->pixels.size);
        double sum = 0;
        long count = 0;
        for (int y = 0; y < picture->pixels.size.height; y += 3)
            for (int x = 0; x < picture->pixels.size.width; x += 3) {
                const auto a = linearAt(*reference, x, y), b = linearAt(*picture, x, y);
                for (std::size_t c = 0; c < 3; ++c, ++count)
                    sum += std::abs(linearToSRGB(std::clamp(a[c], 0.0, 1.0)) -
                                    linearToSRGB(std::clamp(b[c], 0.0, 1.0)));
            }
        EXPECT_LT(sum / double(count), 0.015) << name; // compression differs
    }
}

TEST(Photos, TheEightLandscapesAreOnePicture) {
    const auto folder = photos() / "bitmap";
    if (!fs::exists(folder)) GTEST_SKIP() << "no test photos at " << photos();
    const auto reader = makeImageReader();
    const auto first = reader->decode(folder / "Landscape_1.jpg");
    ASSERT_TRUE(first);
    for (int i = 2; i <= 8; ++i) {
        const auto other = reader->decode(folder / ("Landscape_" + std::to_string(i) + ".jpg"));
        ASSERT_TRUE(other);
        ASSERT_EQ(other->pixels.size, first->pixels.size) << i;
        double sum = 0;
        for (int y = 0; y < 1200; y += 7)
            for (int x = 0; x < 1800; x += 7)
                sum +=
                    std::abs(sampleAt(first->pixels, x, y, 1) - sampleAt(other->pixels, x, y, 1));
        EXPECT_LT(sum / (172.0 * 258), 0.03) << i; // the number in the middle differs
    }
}

TEST(Photos, BrokenFilesDoNoHarm) {
    if (!fs::exists(photos() / "broken")) GTEST_SKIP() << "no test photos at " << photos();
    const auto reader = makeImageReader();
    const long before = peakMegabytes();
    for (const auto& path : filesIn(photos() / "broken")) {
        const auto picture = reader->decode(path);
        if (picture) {
            EXPECT_GT(picture->pixels.size.width, 0);
        } else {
            EXPECT_NE(picture.error().message.find(path.filename().string()), std::string::npos);
        }
    }
    EXPECT_LT(peakMegabytes() - before, 300); // the largest sound picture among them takes 16 MB
}

} // namespace
} // namespace kelvaro::test
