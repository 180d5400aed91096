// What is unpacked without the library must be what the library would have unpacked.
#include "platform/raw/DevelopedPhoto.h"
#include "platform/raw/LibRawAccess.h"
#include "platform/raw/LosslessEncoder.h"
#include "platform/raw/PackedSamples.h"
#include "platform/raw/RawStream.h"
#include "platform/raw/SampleTiles.h"
#include "platform/raw/SlicedJpeg.h"
#include "platform/raw/SyntheticDng.h"

#include <libraw/libraw.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <random>
#include <vector>

namespace kelvaro {
namespace {

using test::Bytes;

// TIFF 6.0: from the highest bit of the first byte on, rows begin at whole bytes.
Bytes packed(const std::vector<std::uint16_t>& samples, int bits, int rowSamples,
             bool isBigEndian) {
    Bytes bytes;
    for (std::size_t first = 0; first < samples.size(); first += std::size_t(rowSamples)) {
        std::vector<bool> row;
        for (std::size_t i = first; i < first + std::size_t(rowSamples); ++i) {
            const unsigned low = samples[i] & 255u, high = samples[i] >> 8;
            const unsigned value = bits == 16 && !isBigEndian ? low << 8 | high : samples[i];
            for (int b = bits; b-- > 0;)
                row.push_back(value >> b & 1);
        }
        row.resize((row.size() + 7) / 8 * 8);
        for (std::size_t b = 0; b < row.size(); b += 8) {
            unsigned byte = 0;
            for (std::size_t k = 0; k < 8; ++k)
                byte = byte << 1 | unsigned(row[b + k]);
            bytes.push_back(std::byte(byte));
        }
    }
    return bytes;
}

ReadAt readerOf(const Bytes& file) {
    return [&file](std::uint64_t offset, std::span<std::byte> out) -> std::size_t {
        if (offset >= file.size()) return 0;
        const std::size_t count = std::min(out.size(), file.size() - std::size_t(offset));
        std::copy_n(file.begin() + std::ptrdiff_t(offset), count, out.begin());
        return count;
    };
}

// Strips of any depth, byte order and number of channels, the last one shorter, with and without a
// linearisation table.
TEST(Unpacking, UncompressedStripsFillThePicture) {
    std::mt19937 random(3);
    for (const int bits : {8, 10, 12, 14, 16}) {
        for (const bool isBigEndian : {false, true}) {
            for (const int each : {1, 3}) {
                DngTags tags;
                tags.width = 37, tags.height = 150;
                tags.samplesPerPixel = each;
                tags.bitsPerSample = bits;
                tags.isBigEndian = isBigEndian;
                tags.tiles = {37, 70, {}, {}};
                std::vector<std::uint16_t> want(std::size_t(37 * 150 * each));
                for (auto& v : want)
                    v = std::uint16_t(random() & ((1u << bits) - 1));
                Bytes file(11);
                for (int top = 0; top < 150; top += 70) {
                    const auto row = want.begin() + top * 37 * each;
                    const Bytes strip = packed({row, row + std::min(70, 150 - top) * 37 * each},
                                               bits, 37 * each, isBigEndian);
                    tags.tiles.offsets.push_back(file.size());
                    tags.tiles.counts.push_back(strip.size());
                    file.insert(file.end(), strip.begin(), strip.end());
                }
                const auto expectEqual = [&] {
                    const auto got = decodeTiles(tags, readerOf(file), nullptr);
                    ASSERT_TRUE(got);
                    EXPECT_TRUE(std::equal(want.begin(), want.end(), got->data(),
                                           got->data() + got->size()))
                        << bits << ' ' << isBigEndian << ' ' << each;
                };
                expectEqual();
                tags.linearisation = {5, 9, 40000};
                for (auto& v : want)
                    v = tags.linearisation[std::min<std::size_t>(v, 2)];
                expectEqual();
                // Strips that are too short are left to others.
                DngTags cut = tags;
                cut.tiles.counts.back() -= 1;
                EXPECT_FALSE(decodeTiles(cut, readerOf(file), nullptr));
                file.pop_back();
                EXPECT_FALSE(decodeTiles(tags, readerOf(file), nullptr));
            }
        }
    }
}

struct Slices {
    std::array<int, 3> slices;
    int components;
};
constexpr Slices kSlices[] = {
    {{}, 2}, {{1, 200, 400}, 2}, {{2, 208, 184}, 4}, {{3, 150, 150}, 2}, {{1, 300, 300}, 4}};

// Sample by sample from the definition: slices from left to right, each row by row.
TEST(Unpacking, SlicesFillThePicture) {
    constexpr int kWidth = 600, kHeight = 40;
    for (const auto& [slices, components] : kSlices) {
        const auto stream = test::noise(std::size_t(kWidth * kHeight), 14, 6);
        const Bytes data =
            test::LosslessEncoder(kWidth / components, kHeight, components, 1, 14).encode(stream);
        std::vector<std::uint16_t> want(stream.size()), got(stream.size());
        std::size_t at = 0;
        for (int left = 0, slice = 0; left < kWidth; ++slice) {
            const int width = slices[0] == 0 ? kWidth : slice < slices[0] ? slices[1] : slices[2];
            for (int y = 0; y < kHeight; ++y) {
                for (int x = left; x < left + width; ++x)
                    want[std::size_t(y * kWidth + x)] = stream[at++];
            }
            left += width;
        }
        const SlicedPicture picture{kWidth, kHeight, slices, got.data()};
        EXPECT_TRUE(decodeSlicedJpeg(data, picture, nullptr));
        EXPECT_EQ(got, want) << slices[0] << ' ' << components;
        EXPECT_FALSE(decodeSlicedJpeg(std::span(data).first(data.size() / 2), picture, nullptr));
        SlicedPicture other = picture;
        other.slices = {1, 200, 300};
        EXPECT_FALSE(decodeSlicedJpeg(data, other, nullptr));
    }
}

// A file as one maker writes it, through the library with its own decoder and with ours.
TEST(Unpacking, SlicedFilesEqualTheLibrarys) {
    constexpr int kWidth = 600, kHeight = 400;
    for (const auto& [slices, components] : kSlices) {
        const auto stream = test::noise(std::size_t(kWidth * kHeight), 12, 8);
        std::vector<std::uint8_t> jpeg;
        for (const std::byte b :
             test::LosslessEncoder(kWidth / components, kHeight, components, 1, 14).encode(stream))
            jpeg.push_back(std::uint8_t(b));
        test::TiffWriter writer;
        writer.shorts(259, {6});
        writer.text(271, "Canon");
        writer.text(272, "Canon EOS Test");
        if (slices[0] > 0) writer.shorts(50752, {slices[0], slices[1], slices[2]});
        const auto file = writer.file(jpeg);
        const auto path = temporaryPath("sliced.cr2");
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(file.data()), std::streamsize(file.size()));
        LibRaw theirs;
        LibRawAccess ours;
        for (LibRaw* library : {&theirs, static_cast<LibRaw*>(&ours)}) {
            ASSERT_EQ(library->open_file(path.c_str()), LIBRAW_SUCCESS);
            ASSERT_STREQ(library->unpack_function_name(), "lossless_jpeg_load_raw()");
            ASSERT_EQ(library->unpack(), LIBRAW_SUCCESS);
            ASSERT_EQ(library->imgdata.sizes.raw_width, kWidth);
            ASSERT_EQ(library->imgdata.sizes.raw_height, kHeight);
        }
        const std::uint16_t *a = theirs.imgdata.rawdata.raw_image,
                            *b = ours.imgdata.rawdata.raw_image;
        EXPECT_TRUE(std::equal(a, a + kWidth * kHeight, b)) << slices[0] << ' ' << components;
        EXPECT_EQ(theirs.imgdata.color.black, ours.imgdata.color.black);
        EXPECT_EQ(theirs.imgdata.color.maximum, ours.imgdata.color.maximum);
        std::filesystem::remove(path);
    }
}

TEST(Unpacking, SamplesOfPhotosEqualTheLibrarys) {
    if (!std::filesystem::exists(test::photos() / "raw")) GTEST_SKIP() << "no photos";
    int compared = 0;
    for (const auto& entry : std::filesystem::directory_iterator(test::photos() / "raw")) {
        if (entry.path().extension() != ".dng") continue;
        LibRaw library;
        library.imgdata.params.use_dngsdk = 0;
        ASSERT_EQ(library.open_file(entry.path().c_str()), LIBRAW_SUCCESS);
        const auto stream = RawStream::open(entry.path());
        ASSERT_TRUE(stream);
        const ReadAt read = [&](std::uint64_t offset, std::span<std::byte> bytes) {
            return (*stream)->readAt(INT64(offset), bytes);
        };
        const auto& sizes = library.imgdata.sizes;
        const auto tags = readDngTags(TiffFile(read), sizes.raw_width, sizes.raw_height,
                                      std::uint64_t((*stream)->size()));
        ASSERT_TRUE(tags) << entry.path();
        const auto ours = decodeTiles(*tags, read, nullptr);
        if (!ours) continue; // lossy ones
        ASSERT_EQ(library.unpack(), LIBRAW_SUCCESS);
        const auto& raw = library.imgdata.rawdata;
        const int each = tags->samplesPerPixel;
        ASSERT_TRUE(each == 1 ? raw.raw_image != nullptr : raw.color3_image || raw.color4_image)
            << entry.path();
        const std::uint16_t* theirs = each == 1          ? raw.raw_image
                                      : raw.color3_image ? raw.color3_image[0]
                                                         : raw.color4_image[0];
        const int step = each == 1 ? 1 : raw.color3_image ? 3 : 4;
        const std::size_t pixels = std::size_t(tags->width) * std::size_t(tags->height);
        std::size_t wrong = 0;
        for (std::size_t i = 0; i < pixels; ++i) {
            for (int c = 0; c < each; ++c)
                wrong += ours->data()[i * std::size_t(each) + std::size_t(c)] !=
                         theirs[i * std::size_t(step) + std::size_t(c)];
        }
        EXPECT_EQ(wrong, 0u) << entry.path();
        ++compared;
    }
    EXPECT_GE(compared, 12);
}

} // namespace
} // namespace kelvaro
