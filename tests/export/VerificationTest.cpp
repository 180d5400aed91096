// Files that hold what was rendered pass at every quality; files with a fault in a corner do not.
#include "export/Verification.h"

#include "develop/Pipeline.h"
#include "export/RenderedStrips.h"
#include "fakes/TemporaryFolder.h"
#include "platform/codecs/CodecImageFiles.h"
#include "platform/imaging/TiledRenderer.h"
#include "platform/system/PosixFileSystem.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <random>

namespace kelvaro {
namespace {

// `threads` are bright stripes on a saturated red, as on a reel: their colour, spread over two
// pixels, leaves the gamut. `hidden` is fine detail of one brightness, of which subsampling leaves
// nothing.
enum class Content { smooth, noise, saturated, threads, hidden };

// 0 … 1
double valueAt(int x, int y, int channel, Content content, double noise) {
    const bool isOdd = (x + y) % 2 == 1;
    switch (content) {
    case Content::smooth:
        return 0.5 + 0.4 * std::sin(0.05 * (3 * x + channel) + channel) * std::cos(0.07 * y);
    case Content::noise:
        return noise;
    case Content::saturated:
        return double(noise > 0.5);
    case Content::threads:
        return channel == 0 ? 1 : (x + y / 4) % 4 == 0 ? 0.97 : 0.05;
    case Content::hidden:
        return isOdd == (channel == 1) ? (isOdd ? 0.70 : 1) : 0;
    }
    return 0;
}

Bitmap picture(PixelSize size, SampleType type, Content content) {
    Bitmap pixels(size, 3, type);
    std::minstd_rand random(3);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < 3 * size.width; ++x) {
            const double noise = double(random() % 256) / 255;
            const double value = valueAt(x / 3, y, x % 3, content, noise);
            if (type == SampleType::u8)
                pixels.row<std::uint8_t>(y)[x] = std::uint8_t(value * 255);
            else
                pixels.row<std::uint16_t>(y)[x] = std::uint16_t(value * 65535);
        }
    return pixels;
}

DecodedBitmap roundTrip(const Bitmap& pixels, const EncodeSettings& settings) {
    TemporaryFolder folder;
    PosixFileSystem files;
    auto file = files.create(folder / "a").value();
    EXPECT_TRUE(makeImageWriter()->encode(pixels, settings, *file));
    EXPECT_TRUE(file->commit());
    return makeImageReader()->decode(folder / "a").value();
}

bool isLossy(FileFormat format) {
    return format == FileFormat::jpeg || format == FileFormat::heic;
}

TEST(VerificationTest, AcceptsWhatTheCodecsMake) {
    for (const auto format :
         {FileFormat::jpeg, FileFormat::heic, FileFormat::tiff, FileFormat::png})
        for (const auto content : {Content::smooth, Content::noise, Content::saturated,
                                   Content::threads, Content::hidden})
            for (const double quality : {0.1, 0.5, 0.85, 1.0}) {
                if (!isLossy(format) && quality < 1) continue;
                const auto type = isLossy(format) ? SampleType::u8 : SampleType::u16;
                const Bitmap pixels = picture({131, 97}, type, content);
                for (const auto space : {OutputSpace::sRGB, OutputSpace::displayP3}) {
                    const EncodeSettings settings{format, quality, space};
                    const auto right = compare(pixels, settings, roundTrip(pixels, settings));
                    EXPECT_TRUE(right) << right.error().message << " format " << int(format)
                                       << " content " << int(content) << " quality " << quality;
                }
            }
}

TEST(VerificationTest, FindsFaults) {
    for (const auto format : {FileFormat::jpeg, FileFormat::tiff}) {
        const auto type = isLossy(format) ? SampleType::u8 : SampleType::u16;
        const Bitmap pixels = picture({131, 97}, type, Content::smooth);
        const EncodeSettings settings{format, 0.85, OutputSpace::sRGB};
        const auto fresh = [&] { return roundTrip(pixels, settings); };

        auto grey = fresh(); // the last rows are missing, as after a broken write
        for (int y = 80; y < 97; ++y)
            std::memset(grey.pixels.row<std::byte>(y), 128, grey.pixels.rowBytes());
        EXPECT_FALSE(compare(pixels, settings, grey));

        auto swapped = fresh();
        for (int i = 0; i < 131; ++i)
            for (int y = 0; y < 97; ++y) {
                auto* at =
                    swapped.pixels.row<std::byte>(y) + 3 * sampleBytes(type) * std::size_t(i);
                std::swap_ranges(at, at + sampleBytes(type), at + 2 * sampleBytes(type));
            }
        EXPECT_FALSE(compare(pixels, settings, swapped));

        EXPECT_FALSE(compare(picture({131, 96}, type, Content::smooth), settings, fresh()));
        auto other = fresh();
        other.profileName = "Display P3";
        EXPECT_FALSE(compare(pixels, settings, other));
        if (!isLossy(format)) {
            auto onebit = fresh();
            onebit.pixels.row<std::uint16_t>(96)[392] ^= 1;
            EXPECT_FALSE(compare(pixels, settings, onebit));
        }
    }
}

// Strips are forgotten; what is kept of them, and rendered again, tells the same.
TEST(VerificationTest, StripsAreComparedLikeWholePictures) {
    const auto renderer = makeTiledRenderer();
    TemporaryFolder folder;
    PosixFileSystem files;
    for (const auto content : {Content::smooth, Content::noise, Content::threads}) {
        // The last blocks reach into two of the strips.
        const Bitmap pixels = picture({131, 266}, SampleType::u8, content);
        auto lossless = roundTrip(pixels, {FileFormat::png, 1, OutputSpace::sRGB});
        const RenderedStrips strips(
            *renderer, imageFrom(sourceFrom(std::move(lossless.pixels), lossless.colour)),
            Pipeline::bitmapFormat(Pipeline::OutputSpace::sRGB, SampleType::u8), nullptr);
        const EncodeSettings settings{FileFormat::jpeg, 0.5, OutputSpace::sRGB};
        auto file = files.create(folder / "a").value();
        ASSERT_TRUE(makeImageWriter()->encodeStrips(strips, settings, *file));
        ASSERT_TRUE(file->commit());
        auto read = makeImageReader()->decode(folder / "a").value();
        const auto right = compare(strips, settings, read);
        EXPECT_TRUE(right) << right.error().message << " content " << int(content);
        for (int y = 240; y < 266; ++y)
            std::memset(read.pixels.row<std::byte>(y), 0, read.pixels.rowBytes());
        EXPECT_FALSE(compare(strips, settings, read));
        EXPECT_FALSE(compare(strips, settings,
                             roundTrip(picture({131, 265}, SampleType::u8, content), settings)));
    }
}

} // namespace
} // namespace kelvaro
