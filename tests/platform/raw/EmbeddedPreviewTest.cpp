#include "platform/raw/CameraRawEngine.h"
#include "platform/raw/EmbeddedBitmap.h"
#include "platform/raw/EmbeddedJpeg.h"
#include "platform/raw/StandaloneJpeg.h"
#include "platform/raw/SyntheticDng.h"

#include "platform/codecs/CodecImageFiles.h"
#include "platform/codecs/SampleFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace kelvaro {
namespace {

using test::makeJpeg;
using Bytes = std::vector<std::byte>;

ReadAt from(const Bytes& data) {
    return [&data](std::uint64_t offset, std::span<std::byte> out) -> std::size_t {
        if (offset >= data.size()) return 0;
        const std::size_t count = std::min(out.size(), data.size() - std::size_t(offset));
        std::memcpy(out.data(), data.data() + offset, count);
        return count;
    };
}

std::optional<JpegPlace> found(const Bytes& data) {
    JpegPlace whole;
    whole.bytes = data.size();
    return jpegAt(from(data), whole, data.size());
}

TEST(EmbeddedJpeg, TellsPicturesFromRawDataAndGarbage) {
    const auto frame = [](int marker, int bits) {
        Bytes data;
        for (const int v : {0xff, 0xd8, 0xff, 0xe0, 0,  4, 1, 2,    0xff, marker, 0, 11,
                            bits, 0,    20,   0,    30, 1, 1, 0x11, 0,    0,      0, 0})
            data.push_back(std::byte(v));
        return data;
    };
    const auto size = [](const Bytes& data) {
        const auto place = found(data);
        return place ? place->size : PixelSize{};
    };
    EXPECT_EQ(size(frame(0xc0, 8)), (PixelSize{30, 20}));
    EXPECT_EQ(size(frame(0xc2, 8)), (PixelSize{30, 20}));
    EXPECT_EQ(size(frame(0xc3, 14)), PixelSize{}); // lossless: RAW data
    EXPECT_EQ(size(frame(0xc0, 12)), PixelSize{});
    EXPECT_EQ(size(Bytes(100, std::byte{0xff})), PixelSize{});
    EXPECT_EQ(size({std::byte{0xff}, std::byte{0xd8}}), PixelSize{});
}

TEST(EmbeddedJpeg, SmallestThatIsLargeEnoughIsChosen) {
    std::vector<JpegPlace> places(4);
    places[0].size = {160, 120}, places[1].size = {6000, 4000};
    places[2].size = {1080, 1620}, places[3].size = {570, 375};
    for (const auto& [least, width] : {std::pair{0, 160},
                                       {160, 160},
                                       {161, 570},
                                       {571, 1080},
                                       {1620, 1080},
                                       {1621, 6000},
                                       {6001, 6000},
                                       {kLargestPreview, 6000}})
        EXPECT_EQ(chosenJpeg(places, least)->size.width, width) << least;
    EXPECT_EQ(chosenJpeg({}, 100), nullptr);
}

TEST(StandaloneJpeg, CarriesOrientationAndColours) {
    const auto reader = makeImageReader();
    struct Row {
        int own, raw; // orientation in the JPEG (0: none) and in the RAW file
        PixelSize upright;
        std::optional<PreviewColour> colour;
        double redFromRed; // of linear Rec. 709, from the primaries' definition
    };
    // Adobe RGB to Rec. 709: red is 1.398 red − 0.398 green; ROMM RGB: 2.034 − 0.727 − 0.307.
    for (const Row& row :
         {Row{0, 1, {40, 30}, {}, 1}, Row{0, 6, {30, 40}, {}, 1}, Row{1, 6, {40, 30}, {}, 1},
          Row{8, 1, {30, 40}, {}, 1}, Row{0, 3, {40, 30}, PreviewColour::adobeRgb, 1.398},
          Row{0, 1, {40, 30}, PreviewColour::proPhotoRgb, 2.034},
          Row{0, 1, {40, 30}, PreviewColour::sRgb, 1}}) {
        test::JpegOptions options;
        options.orientation = row.own;
        Bytes jpeg = makeJpeg({40, 30}, options);
        auto place = found(jpeg);
        ASSERT_TRUE(place);
        EXPECT_EQ(place->orientation, row.own ? std::optional(row.own) : std::nullopt);
        place->colour = row.colour;
        jpeg[0] = jpeg[1] = std::byte{0};
        const auto picture = reader->decode(standaloneJpeg(jpeg, *place, row.raw), "preview");
        ASSERT_TRUE(picture) << picture.error().message;
        EXPECT_EQ(picture->pixels.size, row.upright);
        EXPECT_NEAR(picture->colour.toWorking[0][0], row.redFromRed, 0.003);
        const float middle = (*picture->colour.tone[0])[128];
        const double gamma = row.redFromRed < 1.1 ? 0 : row.redFromRed < 1.5 ? 2.199 : 1.8;
        if (gamma > 0) {
            EXPECT_NEAR(middle, std::pow(128 / 255.0, gamma), 0.001);
        }
    }
}

TEST(EmbeddedPreview, ComesFromTheFileWithoutItsRawData) {
    test::SyntheticDng dng;
    dng.scene = [](int, int, int) { return 0.5; };
    dng.orientation = 6;
    dng.jpeg = makeJpeg({320, 200}, {});
    dng.secondJpeg = makeJpeg({160, 100}, {});
    auto path = dng.write("previews.dng");
    CameraRawEngine engine;
    auto file = engine.open(path);
    ASSERT_TRUE(file) << file.error().message;
    for (const auto& [least, longer] : {std::pair{0, 160}, {161, 320}, {321, 320}}) {
        const auto preview = (*file)->preview(least);
        ASSERT_TRUE(preview && *preview);
        EXPECT_EQ((*preview)->size, (PixelSize{longer * 5 / 8, longer}));
        const auto picture = makeImageReader()->decode((*preview)->bytes, "preview");
        ASSERT_TRUE(picture) << picture.error().message;
        EXPECT_EQ(picture->pixels.size, (*preview)->size);
    }
    std::filesystem::remove(path);
}

TEST(EmbeddedPreview, UncompressedOnesAreReadToo) {
    test::TiffWriter writer;
    writer.longs(256, {3});
    writer.longs(257, {2});
    writer.shorts(258, {8, 8, 8});
    writer.shorts(259, {1});
    writer.shorts(262, {2});
    writer.shorts(277, {3});
    std::vector<std::uint8_t> pixels;
    for (int i = 0; i < 18; ++i)
        pixels.push_back(std::uint8_t(10 * i));
    Bytes data;
    for (const std::uint8_t v : writer.file(pixels))
        data.push_back(std::byte(v));
    const TiffFile file(from(data));
    const auto picture = embeddedBitmap(file, from(data), data.size());
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->pixels.size, (PixelSize{3, 2}));
    // Sample 14 of 18 is 140: linear light of IEC 61966-2-1.
    EXPECT_NEAR(picture->pixels.row<float>(1)[5], std::pow((140 / 255.0 + 0.055) / 1.055, 2.4),
                1e-6);
    EXPECT_FALSE(embeddedBitmap(file, from(data), data.size() - 1)); // breaks off
}

} // namespace
} // namespace kelvaro
