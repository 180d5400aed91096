#include "platform/raw/ReferenceDemosaic.h"

#include "platform/raw/DevelopedPhoto.h"

#include "platform/raw/XTransDemosaic.h"

#include <png.h>

#include <cmath>
#include <random>

namespace kelvaro {
namespace {

// A picture as one plane of interleaved red, green, blue, mosaicked on request.
struct Picture {
    int width = 0, height = 0;
    std::vector<float> rgb;

    int mirror(int i, int n) const {
        i = std::abs(i) % (2 * n - 2);
        return std::min(i, 2 * n - 2 - i);
    }
    float at(int row, int column, int channel) const {
        return rgb[std::size_t((mirror(row, height) * width + mirror(column, width)) * 3 +
                               channel)];
    }
};

int channelAt(BayerPhase phase, int row, int column) {
    const bool redRow = ((row ^ phase.redRow) & 1) == 0,
               redColumn = ((column ^ phase.redColumn) & 1) == 0;
    return redRow && redColumn ? 0 : redRow || redColumn ? 1 : 2;
}

class MosaicOf final : public SplitRows {
public:
    MosaicOf(const Picture& picture, BayerPhase phase) : picture_(picture), phase_(phase) {}
    float value(int row, int column) const {
        return picture_.at(row, column, channelAt(phase_, row, column));
    }
    void split(int row, int column, int pairs, float* even, float* odd) const override {
        for (int k = 0; k < pairs; ++k) {
            even[k] = value(row, column + 2 * k);
            odd[k] = value(row, column + 2 * k + 1);
        }
    }

private:
    const Picture& picture_;
    BayerPhase phase_;
};

// sRGB: the demosaic works on light, eyes and files on display values.
double linear(int sample) {
    const double v = sample / 255.0;
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}
double display(double light) {
    const double v = std::clamp(light, 0.0, 1.0);
    return v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1 / 2.4) - 0.055;
}

// The whole picture in tiles, as three planes with `stride` floats per row.
std::vector<float> demosaiced(const Picture& picture, BayerPhase phase, int stride) {
    std::vector<float> planes(std::size_t(stride) * std::size_t(3 * picture.height + 1));
    const MosaicOf mosaic(picture, phase);
    BayerDemosaic demosaic;
    for (int left = 0; left < picture.width; left += BayerDemosaic::kMaximumWidth) {
        const int width = std::min(BayerDemosaic::kMaximumWidth, picture.width - left);
        float* out[3];
        for (int c = 0; c < 3; ++c)
            out[c] = planes.data() + c * stride * picture.height + left;
        demosaic.run(mosaic, phase, {left, 0, width, picture.height}, kLeastToe,
                     {out[0], out[1], out[2]}, stride);
    }
    return planes;
}

TEST(Demosaic, VectorCodeEqualsThePlainForm) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> value(-0.02f, 1.5f);
    // Widths on both sides of every lane count, and one over a tile.
    for (const int width : {3, 8, 15, 16, 17, 31, 33, 64, 97, 512, 530}) {
        for (int phaseNumber = 0; phaseNumber < 4; ++phaseNumber) {
            const BayerPhase phase{phaseNumber / 2, phaseNumber % 2};
            Picture picture{width, 14, {}};
            for (int i = 0; i < width * picture.height * 3; ++i)
                picture.rgb.push_back(value(random));
            // Large even steps keep the phase of the padded mosaic.
            const int pad = kDemosaicBorder, paddedWidth = width + 2 * pad,
                      paddedHeight = picture.height + 2 * pad;
            const MosaicOf mosaic(picture, phase);
            std::vector<float> padded;
            for (int y = -pad; y < picture.height + pad; ++y) {
                for (int x = -pad; x < width + pad; ++x)
                    padded.push_back(mosaic.value(y, x));
            }
            std::vector<float> expected[3];
            test::referenceDemosaic(padded, paddedWidth, paddedHeight, phase, expected);
            const int stride = (width + 127) / 64 * 64;
            const auto got = demosaiced(picture, phase, stride);
            for (int c = 0; c < 3; ++c) {
                for (int y = 0; y < picture.height; ++y) {
                    for (int x = 0; x < width; ++x) {
                        const float want =
                            expected[c][std::size_t((y + pad) * paddedWidth + x + pad)];
                        const float have = got[std::size_t((c * picture.height + y) * stride + x)];
                        // Sums in another order; ratios of small numbers enlarge their rounding.
                        ASSERT_NEAR(have, want, 2e-4f * std::max(1.0f, std::abs(want)))
                            << "channel " << c << " at " << x << ", " << y << " of width " << width;
                    }
                }
            }
        }
    }
}

TEST(Demosaic, GoesOnBelowAsIfItHadNotStopped) {
    std::mt19937 random(11);
    std::uniform_real_distribution<float> value(0, 1);
    Picture picture{70, 61, {}};
    for (int i = 0; i < 70 * 61 * 3; ++i)
        picture.rgb.push_back(value(random));
    const BayerPhase phase{1, 0};
    const MosaicOf mosaic(picture, phase);
    constexpr int stride = 128;
    const auto whole = demosaiced(picture, phase, stride);
    std::vector<float> parts(whole.size());
    BayerDemosaic demosaic;
    int top = 0;
    for (const int rows : {5, 1, 30, 25}) {
        float* out[3];
        for (int c = 0; c < 3; ++c)
            out[c] = parts.data() + (c * picture.height + top) * stride;
        if (top == 0)
            demosaic.run(mosaic, phase, {0, 0, 70, rows}, kLeastToe, {out[0], out[1], out[2]},
                         stride);
        else
            demosaic.goOn(mosaic, rows, {out[0], out[1], out[2]}, stride);
        top += rows;
    }
    EXPECT_EQ(parts, whole);
}

// The Kodak pictures as light, with their samples.
struct KodakPicture {
    std::string name;
    Picture light;
    std::vector<png_byte> samples;

    // `planes` hold rows of `stride` values after `offset`; a border of 4 is left out.
    double psnr(const float* const (&planes)[3], std::ptrdiff_t stride) const {
        double error = 0, n = 0;
        for (int c = 0; c < 3; ++c) {
            for (int y = 4; y < light.height - 4; ++y) {
                for (int x = 4; x < light.width - 4; ++x) {
                    const double d = std::floor(display(planes[c][y * stride + x]) * 255 + 0.5) -
                                     samples[std::size_t((y * light.width + x) * 3 + c)];
                    error += d * d;
                    ++n;
                }
            }
        }
        return 10 * std::log10(255 * 255 * n / error);
    }
};

std::vector<KodakPicture> kodak() {
    std::vector<KodakPicture> pictures;
    const auto folder = test::photos() / "kodak";
    if (!std::filesystem::exists(folder)) return pictures;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        if (!png_image_begin_read_from_file(&image, entry.path().c_str())) continue;
        image.format = PNG_FORMAT_RGB;
        KodakPicture picture{
            entry.path().filename(), {int(image.width), int(image.height), {}}, {}};
        picture.samples.resize(PNG_IMAGE_SIZE(image));
        EXPECT_TRUE(png_image_finish_read(&image, nullptr, picture.samples.data(), 0, nullptr));
        for (const png_byte v : picture.samples)
            picture.light.rgb.push_back(float(linear(v)));
        pictures.push_back(std::move(picture));
    }
    return pictures;
}

TEST(Demosaic, ReachesTheExpectedQualityOnPhotographs) {
    const auto pictures = kodak();
    if (pictures.empty()) GTEST_SKIP() << "no photos";
    double sum = 0;
    for (const KodakPicture& picture : pictures) {
        const int width = picture.light.width, height = picture.light.height,
                  stride = (width + 63) / 64 * 64;
        double worst = 100, best = 0;
        for (int phase = 0; phase < 4; ++phase) {
            const auto got = demosaiced(picture.light, {phase / 2, phase % 2}, stride);
            const double psnr = picture.psnr(
                {got.data(), got.data() + stride * height, got.data() + 2 * stride * height},
                stride);
            worst = std::min(worst, psnr);
            best = std::max(best, psnr);
            sum += psnr / 4;
        }
        EXPECT_LT(best - worst, 1.0) << "the phases differ on " << picture.name;
    }
    const double mean = sum / double(pictures.size());
    std::printf("Bayer: mean %.3f dB\n", mean);
    EXPECT_GE(mean, 38.5);
}

TEST(Demosaic, SixBySixPatternsReachTheirQuality) {
    const auto pictures = kodak();
    if (pictures.empty()) GTEST_SKIP() << "no photos";
    constexpr const char* pattern = "GGRGGB"
                                    "GGBGGR"
                                    "BRGRBG"
                                    "GGBGGR"
                                    "GGRGGB"
                                    "RBGBRG";
    ColourFilters filters;
    filters.period = 6;
    for (std::size_t i = 0; i < 36; ++i)
        filters.channels[i] = pattern[i] == 'R' ? 0 : pattern[i] == 'G' ? 1 : 2;
    double sum = 0;
    constexpr int pad = XTransDemosaic::kBorder;
    for (const KodakPicture& picture : pictures) {
        const int width = picture.light.width + 2 * pad, height = picture.light.height + 2 * pad;
        std::vector<float> mosaic, planes[3];
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x)
                mosaic.push_back(picture.light.at(y - pad, x - pad, filters.at(y, x)));
        }
        for (auto& plane : planes)
            plane.assign(std::size_t(width) * std::size_t(height), 0.0f);
        XTransDemosaic demosaic(filters, width, height);
        demosaic.run(mosaic.data(), width, width, height, 0, 0, kLeastToe,
                     {planes[0].data(), planes[1].data(), planes[2].data()});
        const std::ptrdiff_t first = pad * width + pad;
        const double psnr = picture.psnr(
            {planes[0].data() + first, planes[1].data() + first, planes[2].data() + first}, width);
        std::printf("%s %.2f dB\n", picture.name.c_str(), psnr);
        sum += psnr;
    }
    const double mean = sum / double(pictures.size());
    std::printf("6 x 6: mean %.3f dB\n", mean);
    EXPECT_GE(mean, 36.5);
}

} // namespace
} // namespace kelvaro
