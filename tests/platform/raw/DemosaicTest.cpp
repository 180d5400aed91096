#include "platform/raw/ReferenceDemosaic.h"

#include "platform/raw/DevelopedPhoto.h"

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
    std::vector<float> planes(std::size_t(3 * stride * picture.height + 64));
    const MosaicOf mosaic(picture, phase);
    BayerDemosaic demosaic;
    for (int left = 0; left < picture.width; left += BayerDemosaic::kMaximumWidth) {
        const int width = std::min(BayerDemosaic::kMaximumWidth, picture.width - left);
        float* out[3];
        for (int c = 0; c < 3; ++c)
            out[c] = planes.data() + c * stride * picture.height + left;
        demosaic.run(mosaic, phase, {left, 0, width, picture.height}, {out[0], out[1], out[2]},
                     stride);
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

TEST(Demosaic, ReachesTheExpectedQualityOnPhotographs) {
    if (!std::filesystem::exists(test::photos() / "kodak")) GTEST_SKIP() << "no photos";
    double sum = 0;
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(test::photos() / "kodak")) {
        if (entry.path().extension() != ".png") continue;
        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        ASSERT_TRUE(png_image_begin_read_from_file(&image, entry.path().c_str()));
        image.format = PNG_FORMAT_RGB;
        std::vector<png_byte> samples(PNG_IMAGE_SIZE(image));
        ASSERT_TRUE(png_image_finish_read(&image, nullptr, samples.data(), 0, nullptr));
        Picture picture{int(image.width), int(image.height), {}};
        for (const png_byte v : samples)
            picture.rgb.push_back(float(linear(v)));
        const int stride = (picture.width + 63) / 64 * 64;
        double worst = 100, best = 0;
        for (int phase = 0; phase < 4; ++phase) {
            const auto got = demosaiced(picture, {phase / 2, phase % 2}, stride);
            double error = 0, n = 0;
            for (int c = 0; c < 3; ++c) {
                for (int y = 4; y < picture.height - 4; ++y) {
                    for (int x = 4; x < picture.width - 4; ++x) {
                        const float v = got[std::size_t((c * picture.height + y) * stride + x)];
                        const double d = std::floor(display(v) * 255 + 0.5) -
                                         samples[std::size_t((y * picture.width + x) * 3 + c)];
                        error += d * d;
                        ++n;
                    }
                }
            }
            const double psnr = 10 * std::log10(255 * 255 * n / error);
            worst = std::min(worst, psnr);
            best = std::max(best, psnr);
            sum += psnr;
            ++count;
        }
        std::printf("%s %.2f to %.2f dB\n", entry.path().filename().c_str(), worst, best);
        EXPECT_LT(best - worst, 1.0) << "the phases differ";
    }
    std::printf("mean %.3f dB\n", sum / count);
    EXPECT_GE(sum / count, 38.5);
}

} // namespace
} // namespace kelvaro
