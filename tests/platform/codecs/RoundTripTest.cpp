// What our writers write, our readers read back: samples, depth, alpha and colour space; and a disk
// that is full at any moment ends as exactly that failure.
#include "platform/codecs/SampleFiles.h"

#include <cmath>
#include <cstring>

namespace kelvaro::test {
namespace {

struct Case {
    const char* name;
    FileFormat format;
    SampleType type;
    int channels;
    double tolerance; // of a sample; 0 for lossless
};
constexpr Case kCases[] = {
    {"jpeg", FileFormat::jpeg, SampleType::u8, 3, 0.02},
    {"heic", FileFormat::heic, SampleType::u8, 3, 0.03},
    {"png8", FileFormat::png, SampleType::u8, 3, 0},
    {"png16", FileFormat::png, SampleType::u16, 3, 0},
    {"png8 alpha", FileFormat::png, SampleType::u8, 4, 0},
    {"png16 alpha", FileFormat::png, SampleType::u16, 4, 0},
    {"tiff8", FileFormat::tiff, SampleType::u8, 3, 0},
    {"tiff16", FileFormat::tiff, SampleType::u16, 3, 0},
    {"tiff32", FileFormat::tiff, SampleType::f32, 3, 1e-6},
    {"tiff8 alpha", FileFormat::tiff, SampleType::u8, 4, 0},
    {"tiff16 alpha", FileFormat::tiff, SampleType::u16, 4, 0},
};

OutputSpace spaceFor(const Case& c, OutputSpace space) {
    return c.type == SampleType::f32 ? OutputSpace::linearRec709 : space;
}

TEST(RoundTrip, KeepsSamplesOfEveryFormatDepthAndSize) {
    // One pixel, odd sizes, and one that spans several bands and strips.
    for (const PixelSize size : {PixelSize{1, 1}, {37, 23}, {700, 801}})
        for (const auto& c : kCases) {
            const Bitmap pixels = pattern(size, c.channels, c.type);
            const auto space = spaceFor(c, OutputSpace::sRGB);
            const auto file = encoded(pixels, {c.format, 0.95, space});
            const auto back = decoded(file, c.name);
            ASSERT_EQ(back.pixels.size, size) << c.name;
            EXPECT_EQ(back.pixels.channels, c.channels) << c.name;
            EXPECT_EQ(back.pixels.type, c.type) << c.name;
            EXPECT_LE(
                worstDifference(back.pixels,
                                [&](int x, int y, int ch) { return sampleAt(pixels, x, y, ch); }),
                c.tolerance)
                << c.name << " " << size.width;
        }
}

// JPEG files are made in bands of 128 rows.
TEST(RoundTrip, BandsOfJpegHoldWhatOneScanWould) {
    for (const PixelSize size : {PixelSize{50, 128}, {50, 129}, {333, 700}, {65000, 140}})
        for (const bool subsampled : {true, false}) {
            JpegOptions options;
            options.subsampled = subsampled;
            options.quality = subsampled ? 85 : 95;
            const double quality = options.quality / 100.0;
            const auto ours = decoded(
                encoded(pattern(size, 3, SampleType::u8), {FileFormat::jpeg, quality}), "in bands");
            const auto whole = decoded(makeJpeg(size, options), "one scan");
            ASSERT_EQ(ours.pixels.size, size);
            EXPECT_EQ(std::memcmp(ours.pixels.samples.get(), whole.pixels.samples.get(),
                                  ours.pixels.bytes()),
                      0)
                << size.width << " " << size.height;
        }
}

// Rows of a picture; fails from one of them on.
class RowsOf final : public StripSource {
public:
    explicit RowsOf(const Bitmap& whole, int broken = 1 << 30) : whole_(whole), broken_(broken) {}
    PixelSize size() const override { return whole_.size; }
    int channels() const override { return whole_.channels; }
    SampleType type() const override { return whole_.type; }
    Result<Bitmap> rows(int top, int count) const override {
        if (top + count > broken_) return fail(FailureKind::outOfMemory, "No more.");
        Bitmap part({whole_.size.width, count}, whole_.channels, whole_.type);
        std::memcpy(part.samples.get(), whole_.row<std::byte>(top), part.bytes());
        return part;
    }

private:
    const Bitmap& whole_;
    const int broken_;
};

TEST(RoundTrip, StripsMakeTheSameFile) {
    const auto writer = makeImageWriter();
    for (const auto format : {FileFormat::jpeg, FileFormat::png})
        for (const PixelSize size : {PixelSize{50, 1}, {333, 700}, {65000, 140}}) {
            const Bitmap pixels = pattern(size, 3, SampleType::u8);
            const EncodeSettings settings{format, 0.85};
            MemoryFile file, broken;
            ASSERT_TRUE(writer->encodeStrips(RowsOf(pixels), settings, file));
            EXPECT_EQ(file.content, encoded(pixels, settings));
            const auto failed =
                writer->encodeStrips(RowsOf(pixels, size.height - 1), settings, broken);
            ASSERT_FALSE(failed);
            EXPECT_EQ(failed.error().message, "No more.");
        }
}

TEST(RoundTrip, NamesTheSpaceAndDecodesItExactly) {
    for (const auto& c : kCases)
        for (const auto space : {OutputSpace::sRGB, OutputSpace::displayP3}) {
            if (c.type == SampleType::f32) continue;
            const auto back = decoded(
                encoded(pattern({16, 16}, c.channels, c.type), {c.format, 0.9, space}), c.name);
            const bool isSRGB = space == OutputSpace::sRGB;
            EXPECT_EQ(back.profileName, isSRGB ? "sRGB" : "Display P3") << c.name;
            EXPECT_EQ(back.colour.matrixIsIdentity, isSRGB) << c.name;
            const auto& tone = *back.colour.tone[1];
            for (std::size_t i = 0; i < tone.size(); i += 17)
                ASSERT_NEAR(double(tone[i]), sRGBToLinear(double(i) / double(tone.size() - 1)),
                            1e-6);
        }
}

TEST(RoundTrip, FloatTiffKeepsNegativeAndOverRangeValues) {
    Bitmap pixels({3, 1}, 3, SampleType::f32);
    const float values[] = {-0.25F, 0, 7.5F, 1, 0.5F, -1e-3F, 40, 1e-5F, 0.18F};
    std::copy(std::begin(values), std::end(values), pixels.row<float>(0));
    const auto back =
        decoded(encoded(pixels, {FileFormat::tiff, 1, OutputSpace::linearRec709}), "float");
    EXPECT_EQ(back.profileName, "Linear Rec. 709");
    for (int i = 0; i < 9; ++i)
        EXPECT_NEAR(double(back.pixels.row<float>(0)[i]), double(values[i]),
                    1e-4 * std::max(1.0, std::abs(double(values[i]))));
}

TEST(RoundTrip, TheSameInputMakesTheSameBytes) {
    for (const auto& c : kCases) {
        const EncodeSettings settings{c.format, 0.8, spaceFor(c, OutputSpace::displayP3)};
        const auto first = encoded(pattern({64, 48}, c.channels, c.type), settings);
        EXPECT_EQ(first, encoded(pattern({64, 48}, c.channels, c.type), settings)) << c.name;
    }
}

TEST(RoundTrip, QualityDecidesTheSize) {
    const Bitmap pixels = pattern({256, 256}, 3, SampleType::u8);
    for (const auto format : {FileFormat::jpeg, FileFormat::heic}) {
        std::size_t before = 0;
        for (const double quality : {0.1, 0.6, 0.85, 1.0}) {
            const auto size = encoded(pixels, {format, quality, OutputSpace::sRGB}).size();
            EXPECT_GT(size, before) << quality;
            before = size;
        }
    }
}

TEST(RoundTrip, RefusesWhatAFormatCannotHold) {
    const struct {
        FileFormat format;
        SampleType type;
        int channels;
    } cases[] = {{FileFormat::jpeg, SampleType::u16, 3},
                 {FileFormat::jpeg, SampleType::u8, 4},
                 {FileFormat::heic, SampleType::u8, 4},
                 {FileFormat::heic, SampleType::f32, 3},
                 {FileFormat::png, SampleType::f32, 3}};
    for (const auto& c : cases) {
        MemoryFile file;
        const auto written = makeImageWriter()->encode(pattern({4, 4}, c.channels, c.type),
                                                       {c.format, 0.9, {}}, file);
        ASSERT_FALSE(written);
        EXPECT_EQ(written.error().kind, FailureKind::unsupported);
        EXPECT_TRUE(file.content.empty());
    }
}

TEST(RoundTrip, AFullDiskAtAnyCallIsThatFailure) {
    for (const auto& c : kCases) {
        const Bitmap pixels = pattern({600, 700}, c.channels, c.type);
        MemoryFile whole;
        const EncodeSettings settings{c.format, 0.9, spaceFor(c, OutputSpace::sRGB)};
        ASSERT_TRUE(makeImageWriter()->encode(pixels, settings, whole));
        ASSERT_GE(whole.calls, 1) << c.name;
        const int step = c.format == FileFormat::heic ? 1 : std::max(1, whole.calls / 12);
        for (int call = 1; call <= whole.calls; call += step) {
            MemoryFile file(call);
            const auto written = makeImageWriter()->encode(pixels, settings, file);
            ASSERT_FALSE(written) << c.name << " call " << call;
            EXPECT_EQ(written.error(), kDiskFull) << c.name << " call " << call;
        }
    }
}

TEST(RoundTrip, CancelledBeforeAndNotAfter) {
    for (const auto& c : kCases) {
        const Bitmap pixels = pattern({64, 64}, c.channels, c.type);
        const auto bytes = encoded(pixels, {c.format, 0.9, spaceFor(c, OutputSpace::sRGB)});
        Cancellation cancellation;
        EXPECT_TRUE(makeImageReader()->decode(bytes, c.name, {}, &cancellation));
        cancellation.cancel();
        const auto read = makeImageReader()->decode(bytes, c.name, {}, &cancellation);
        ASSERT_FALSE(read) << c.name;
        EXPECT_EQ(read.error().kind, FailureKind::cancelled) << c.name;
        MemoryFile file;
        const auto written =
            makeImageWriter()->encode(pixels, {c.format, 0.9, {}}, file, &cancellation);
        ASSERT_FALSE(written) << c.name;
        EXPECT_EQ(written.error().kind, FailureKind::cancelled) << c.name;
    }
}

} // namespace
} // namespace kelvaro::test
