#include "samples/Drawing.h"

#include "samples/Noise.h"

#include <atomic>
#include <cmath>
#include <thread>

namespace kelvaro::samples {
namespace {

// Calls row(y) for every row, on all processors.
template<class Row>
void forEachRow(int rows, Row row) {
    std::atomic<int> next{0};
    const auto work = [&] {
        for (int y = next++; y < rows; y = next++)
            row(y);
    };
    std::vector<std::jthread> others;
    for (unsigned i = 1; i < std::thread::hardware_concurrency(); ++i)
        others.emplace_back(work);
    work();
}

// The sRGB curve (IEC 61966-2-1) of 0 … 1, from a table: a power for each sample would take
// seconds.
class SRGBCurve {
public:
    SRGBCurve() : table_(kSteps + 2) {
        for (int i = 0; i < kSteps + 2; ++i) {
            const double x = double(i) / kSteps;
            table_[std::size_t(i)] =
                x <= 0.0031308 ? 12.92 * x : 1.055 * std::pow(x, 1 / 2.4) - 0.055;
        }
    }
    double operator()(double x) const {
        const auto index = std::size_t(x * kSteps);
        const double share = x * kSteps - double(index);
        return table_[index] * (1 - share) + table_[index + 1] * share;
    }

private:
    static constexpr int kSteps = 1 << 14;
    std::vector<double> table_;
};

// Linear below 0.5, then an exponential approach to 1.
double shoulder(double x) {
    return x < 0.5 ? x : 1 - 0.5 * std::exp(-(x - 0.5) / 0.5);
}

} // namespace

Picture draw(SceneKind kind, std::uint32_t seed, PixelSize size) {
    Picture picture{size,
                    std::vector<float>(std::size_t(size.width) * std::size_t(size.height) * 3)};
    const double pixel = 1.0 / size.height;
    const Scene scene(kind, seed, size.width * pixel);
    forEachRow(size.height, [&](int y) {
        for (int x = 0; x < size.width; ++x) {
            const Colour c = scene.at((x + 0.5) * pixel, (y + 0.5) * pixel, pixel);
            float* to = picture.pixel(x, y);
            to[0] = float(c.r), to[1] = float(c.g), to[2] = float(c.b);
        }
    });
    return picture;
}

Picture stored(const Picture& upright, int orientation) {
    const int w = upright.size.width, h = upright.size.height;
    const bool turned = orientation == 6 || orientation == 8;
    Picture result{turned ? PixelSize{h, w} : upright.size, std::vector<float>(upright.rgb.size())};
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            float* to = orientation == 3   ? result.pixel(w - 1 - x, h - 1 - y)
                        : orientation == 6 ? result.pixel(y, w - 1 - x)
                        : orientation == 8 ? result.pixel(h - 1 - y, x)
                                           : result.pixel(x, y);
            std::copy_n(upright.pixel(x, y), 3, to);
        }
    return result;
}

Picture reduced(const Picture& picture, int by) {
    const PixelSize size{picture.size.width / by, picture.size.height / by};
    Picture result{size,
                   std::vector<float>(std::size_t(size.width) * std::size_t(size.height) * 3)};
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            for (int c = 0; c < 3; ++c) {
                float sum = 0;
                for (int v = 0; v < by; ++v)
                    for (int u = 0; u < by; ++u)
                        sum += picture.pixel(x * by + u, y * by + v)[c];
                result.pixel(x, y)[c] = sum / float(by * by);
            }
    return result;
}

Bitmap rendered(const Picture& picture, double exposureStops, SampleType type) {
    Bitmap bitmap(picture.size, 3, type);
    const double gain = std::exp2(exposureStops);
    const SRGBCurve curve;
    forEachRow(picture.size.height, [&](int y) {
        for (int i = 0; i < picture.size.width * 3; ++i) {
            const double light = gain * double(picture.pixel(0, y)[i]);
            const double value = curve(unit(shoulder(light)));
            // A touch of noise keeps smooth skies from banding at 8 bits.
            const double noise = hashedUnit(i, y, 5) - 0.5;
            if (type == SampleType::u8)
                bitmap.row<std::uint8_t>(y)[i] =
                    std::uint8_t(std::clamp(value * 255 + 0.5 + 1.5 * noise, 0.0, 255.0));
            else
                bitmap.row<std::uint16_t>(y)[i] =
                    std::uint16_t(std::clamp(value * 65535 + 0.5 + 200 * noise, 0.0, 65535.0));
        }
    });
    return bitmap;
}

} // namespace kelvaro::samples
