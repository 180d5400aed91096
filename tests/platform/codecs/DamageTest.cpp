// Files that lie, break off or are no pictures: a clear failure, no crash, no memory for claims.
#include "platform/codecs/SampleFiles.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

namespace kelvaro::test {
namespace {

struct Sample {
    std::string name;
    Bytes file;
};

const std::vector<Sample>& samples() {
    static const std::vector<Sample> all = [] {
        constexpr PixelSize size{160, 120};
        JpegOptions progressive;
        progressive.progressive = true;
        PngOptions interlaced;
        interlaced.interlaced = true;
        TiffOptions lzw, tiles, jpeg;
        lzw.compression = 5, tiles.tile = 32, tiles.planar = 2;
        jpeg.compression = 7, jpeg.photometric = 6;
        return std::vector<Sample>{{"baseline.jpg", makeJpeg(size, {})},
                                   {"progressive.jpg", makeJpeg(size, progressive)},
                                   {"plain.png", makePng(size, {})},
                                   {"interlaced.png", makePng(size, interlaced)},
                                   {"strips.tif", makeTiff(size, {})},
                                   {"lzw.tif", makeTiff(size, lzw)},
                                   {"tiles.tif", makeTiff(size, tiles)},
                                   {"jpeg.tif", makeTiff(size, jpeg)},
                                   {"picture.heic", encoded(pattern(size, 3, SampleType::u8),
                                                            {FileFormat::heic, 0.8, {}})}};
    }();
    return all;
}

Result<DecodedBitmap> decode(const Bytes& file, const std::string& name,
                             const DecodeLimits& limits = {}) {
    return makeImageReader()->decode(file, name, limits);
}

TEST(Damage, CutAnywhereIsAFailureThatNamesTheFile) {
    for (const auto& sample : samples()) {
        ASSERT_TRUE(decode(sample.file, sample.name)) << sample.name;
        for (std::size_t part = 0; part < 16; ++part) {
            Bytes cut = sample.file;
            cut.resize(cut.size() * part / 16);
            const auto result = decode(cut, sample.name);
            ASSERT_FALSE(result) << sample.name << " cut at " << part << "/16";
            EXPECT_NE(result.error().message.find(sample.name), std::string::npos);
            EXPECT_TRUE(result.error().kind == FailureKind::malformed ||
                        result.error().kind == FailureKind::unsupported)
                << sample.name << " " << part;
        }
    }
}

TEST(Damage, FlippedBytesNeverCrash) {
    std::mt19937 random(20240501);
    for (const auto& sample : samples())
        for (int round = 0; round < 60; ++round) {
            Bytes file = sample.file;
            for (int flips = 1 + round % 7; flips > 0; --flips)
                file[random() % file.size()] = std::byte(random());
            const auto result = decode(file, sample.name, {4'000'000, 64 << 20});
            if (!result) {
                EXPECT_FALSE(result.error().message.empty());
            }
        }
}

// The claimed size of a sound file is overwritten; nothing of that size may be taken.
TEST(Damage, ClaimsAreNotBelieved) {
    const auto patched = [](Bytes file, std::size_t at, std::initializer_list<int> bytes) {
        for (const int b : bytes)
            file[at++] = std::byte(b);
        return file;
    };
    const Bytes jpeg = makeJpeg({16, 16}, {});
    std::size_t frame = 0;
    while (jpeg[frame] != std::byte{0xFF} || jpeg[frame + 1] != std::byte{0xC0})
        ++frame;
    const struct {
        const char* name;
        Bytes file;
    } cases[] = {
        {"jpeg 65500", patched(jpeg, frame + 5, {0xFF, 0xDC, 0xFF, 0xDC})},
        {"jpeg 30000", patched(jpeg, frame + 5, {0x75, 0x30, 0x75, 0x30})},
    };
    for (const auto& c : cases)
        EXPECT_FALSE(decode(c.file, c.name)) << c.name;
    const auto failure = decode(cases[0].file, "huge").error();
    EXPECT_EQ(failure.kind, FailureKind::tooLarge);

    TiffOptions options;
    for (const int compression : {1, 5, 8, 32773}) {
        options.compression = compression;
        Bytes tiff = makeTiff({16, 16}, options);
        const auto entries =
            std::to_integer<std::size_t>(tiff[4]) | std::to_integer<std::size_t>(tiff[5]) << 8;
        for (std::size_t e = entries + 2; e + 12 < tiff.size();
             e += 12) { // width and length, in order
            const int tag = std::to_integer<int>(tiff[e]) | std::to_integer<int>(tiff[e + 1]) << 8;
            if (tag > 257) break;
            tiff = patched(tiff, e + 8, {0x30, 0x75});
        }
        const auto result = decode(tiff, "tiff");
        ASSERT_FALSE(result) << compression;
        EXPECT_EQ(result.error().kind, FailureKind::malformed);
    }
}

TEST(Damage, LimitsHoldForEveryFormat) {
    for (const auto& sample : samples()) {
        const auto byPixels = decode(sample.file, sample.name, {160 * 120 - 1, 1 << 30});
        ASSERT_FALSE(byPixels) << sample.name;
        EXPECT_EQ(byPixels.error().kind, FailureKind::tooLarge) << sample.name;
        const auto byBytes = decode(sample.file, sample.name, {1 << 30, 160 * 120 * 3 - 1});
        ASSERT_FALSE(byBytes) << sample.name;
        EXPECT_EQ(byBytes.error().kind, FailureKind::tooLarge) << sample.name;
        EXPECT_TRUE(decode(sample.file, sample.name, {160 * 120, 160 * 120 * 3})) << sample.name;
    }
}

TEST(Damage, PathsThatAreNoPictures) {
    namespace fs = std::filesystem;
    const fs::path folder =
        fs::temp_directory_path() / ("kelvaro-codecs-" + std::to_string(::getpid()));
    fs::create_directories(folder / "folder.jpg");
    std::ofstream(folder / "empty.jpg").close();
    std::ofstream(folder / "text.jpg") << "This is not a picture.";
    std::ofstream(folder / "sound.txt", std::ios::binary)
        .write(reinterpret_cast<const char*>(samples()[0].file.data()),
               std::streamsize(samples()[0].file.size()));
    ASSERT_EQ(::mkfifo((folder / "pipe.jpg").c_str(), 0600), 0);
    const struct {
        const char* name;
        FailureKind kind;
    } cases[] = {{"missing.jpg", FailureKind::notFound},
                 {"empty.jpg", FailureKind::malformed},
                 {"text.jpg", FailureKind::unsupported},
                 {"folder.jpg", FailureKind::unsupported},
                 {"pipe.jpg", FailureKind::unsupported}};
    const auto reader = makeImageReader();
    for (const auto& c : cases) {
        const auto result = reader->decode(folder / c.name);
        ASSERT_FALSE(result) << c.name;
        EXPECT_EQ(result.error().kind, c.kind) << c.name;
        EXPECT_NE(result.error().message.find(c.name), std::string::npos) << result.error().message;
    }
    EXPECT_TRUE(reader->decode(folder / "sound.txt")); // the name does not matter
    fs::remove_all(folder);
}

} // namespace
} // namespace kelvaro::test
