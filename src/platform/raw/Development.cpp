#include "platform/raw/Development.h"

#include "platform/raw/Demosaic.h"
#include "platform/raw/MosaicReader.h"
#include "platform/raw/UprightWriter.h"

#include <tbb/blocked_range2d.h>
#include <tbb/enumerable_thread_specific.h>
#include <tbb/parallel_for.h>

#include <atomic>
#include <cmath>

namespace kelvaro {

namespace {

constexpr int kTileWidth = BayerDemosaic::kMaximumWidth, kTileHeight = 128;

// What one thread needs for one tile.
struct Workshop {
    Workshop() {
        for (auto& plane : planes)
            plane.resize(std::size_t(kTileWidth) * kTileHeight);
    }
    std::vector<float> planes[kMaximumChannels + 1]; // channels, then rows of the mosaic
    BayerDemosaic demosaic;
};

// The camera matrix with the exposure, after clipping every channel where the first one saturates:
// blown areas become neutral.
class ColourStep {
public:
    explicit ColourStep(const SensorImage& sensor) {
        const double gain = std::exp2(sensor.exposureStops);
        for (std::size_t i = 0; i < 3; ++i) {
            for (std::size_t c = 0; c < kMaximumChannels; ++c) {
                matrix_[i][c] = float(sensor.colour.toWorking[i][c] * gain);
            }
        }
        const int used = sensor.layout == SensorLayout::monochrome ? 1 : 3;
        limit_ = *std::min_element(sensor.saturation.begin(), sensor.saturation.begin() + used);
    }
    void run(const float* const (&in)[kMaximumChannels], float* const (&out)[3], int count,
             int channels) const {
        for (int x = 0; x < count; ++x) {
            float v[kMaximumChannels] = {};
            for (int c = 0; c < channels; ++c)
                v[c] = std::min(in[c][x], limit_);
            for (int i = 0; i < 3; ++i) {
                const float* m = matrix_[i];
                const float sum = m[0] * v[0] + m[1] * v[1] + m[2] * v[2] + m[3] * v[3];
                out[i][x] = std::isfinite(sum) ? sum : 0.0f;
            }
        }
    }

private:
    float matrix_[3][kMaximumChannels] = {};
    float limit_ = 1;
};

class Developer {
public:
    Developer(const SensorImage& sensor, int reduction, Raster& target)
        : sensor_(sensor),
          reader_(sensor),
          colour_(sensor),
          writer_(target, sensor.orientation),
          reduction_(sensor.isReduced ? 1 : reduction) {}

    int columns() const { return sensor_.crop.width / reduction_; }
    int rows() const { return sensor_.crop.height / reduction_; }

    // One tile of the picture, in its own coordinates before orientation.
    void tile(const SensorRect& tile, Workshop& shop) const {
        const int channels = reduction_ == 2                              ? halve(tile, shop)
                             : sensor_.layout == SensorLayout::fullColour ? readFull(tile, shop)
                             : sensor_.layout == SensorLayout::monochrome
                                 ? readMonochrome(tile, shop)
                                 : demosaic(tile, shop);
        for (int row = 0; row < tile.height; ++row) {
            const std::ptrdiff_t at = row * kTileWidth;
            const float* in[kMaximumChannels];
            for (int c = 0; c < kMaximumChannels; ++c)
                in[c] = shop.planes[c].data() + at;
            float* const out[3] = {shop.planes[0].data() + at, shop.planes[1].data() + at,
                                   shop.planes[2].data() + at};
            colour_.run(in, out, tile.width, channels);
        }
        const float* const planes[3] = {shop.planes[0].data(), shop.planes[1].data(),
                                        shop.planes[2].data()};
        writer_.write(tile, planes, kTileWidth);
    }

private:
    // Each returns the number of channels.
    int demosaic(const SensorRect& tile, Workshop& shop) const {
        const SensorRect area{sensor_.crop.left + tile.left, sensor_.crop.top + tile.top,
                              tile.width, tile.height};
        float* const planes[3] = {shop.planes[0].data(), shop.planes[1].data(),
                                  shop.planes[2].data()};
        shop.demosaic.run(reader_, reader_.phase(), area, planes, kTileWidth);
        return 3;
    }
    int readFull(const SensorRect& tile, Workshop& shop) const {
        const int channels = std::min(sensor_.channels, kMaximumChannels);
        for (int row = 0; row < tile.height; ++row) {
            for (int c = 0; c < channels; ++c) {
                reader_.row(sensor_.crop.top + tile.top + row, sensor_.crop.left + tile.left,
                            tile.width, c, shop.planes[c].data() + row * kTileWidth);
            }
        }
        return channels;
    }
    int readMonochrome(const SensorRect& tile, Workshop& shop) const {
        for (int row = 0; row < tile.height; ++row) {
            reader_.row(sensor_.crop.top + tile.top + row, sensor_.crop.left + tile.left,
                        tile.width, 0, shop.planes[0].data() + row * kTileWidth);
        }
        return 1;
    }
    // Means of the photosites of each channel in 2 × 2 blocks.
    int halve(const SensorRect& tile, Workshop& shop) const {
        const bool isMosaic = sensor_.layout == SensorLayout::bayer;
        const int channels = isMosaic ? 3 : std::min(sensor_.channels, kMaximumChannels);
        float* rows[2] = {shop.planes[kMaximumChannels].data(),
                          shop.planes[kMaximumChannels].data() + 2 * kTileWidth};
        for (int row = 0; row < tile.height; ++row) {
            const int top = sensor_.crop.top + 2 * (tile.top + row);
            const int left = sensor_.crop.left + 2 * tile.left;
            for (int c = 0; c < (isMosaic ? 1 : channels); ++c) {
                for (int k = 0; k < 2; ++k)
                    reader_.row(top + k, left, 2 * tile.width, c, rows[k]);
                const BayerPhase phase{(reader_.phase().redRow + top) & 1,
                                       (reader_.phase().redColumn + left) & 1};
                for (int x = 0; x < tile.width; ++x) {
                    const std::ptrdiff_t at = row * kTileWidth + x;
                    const auto site = [&](int r, int k) { return rows[r][2 * x + k]; };
                    if (isMosaic) {
                        const int r = phase.redRow, k = phase.redColumn;
                        shop.planes[0][std::size_t(at)] = site(r, k);
                        shop.planes[1][std::size_t(at)] = 0.5f * (site(r, 1 - k) + site(1 - r, k));
                        shop.planes[2][std::size_t(at)] = site(1 - r, 1 - k);
                    } else {
                        shop.planes[c][std::size_t(at)] =
                            0.25f * (site(0, 0) + site(0, 1) + site(1, 0) + site(1, 1));
                    }
                }
            }
        }
        return channels;
    }

    const SensorImage& sensor_;
    MosaicReader reader_;
    ColourStep colour_;
    UprightWriter writer_;
    int reduction_;
};

} // namespace

PixelSize developedSize(const SensorImage& sensor, int reduction) {
    const int by = sensor.isReduced ? 1 : reduction;
    const int width = std::max(1, sensor.crop.width / by),
              height = std::max(1, sensor.crop.height / by);
    return sensor.orientation >= 5 ? PixelSize{height, width} : PixelSize{width, height};
}

std::optional<Raster> develop(const SensorImage& sensor, int reduction,
                              const Cancellation* cancellation) {
    const PixelSize size = developedSize(sensor, reduction);
    Raster raster({0, 0, size.width, size.height}, false);
    const Developer developer(sensor, reduction, raster);
    tbb::enumerable_thread_specific<Workshop> workshops;
    std::atomic<bool> stopped{false};
    const int across = (developer.columns() + kTileWidth - 1) / kTileWidth;
    const int down = (developer.rows() + kTileHeight - 1) / kTileHeight;
    tbb::parallel_for(tbb::blocked_range2d<int>(0, down, 0, across), [&](const auto& range) {
        for (int r = range.rows().begin(); r < range.rows().end(); ++r) {
            for (int c = range.cols().begin(); c < range.cols().end(); ++c) {
                if (stopped || (cancellation && cancellation->isCancelled())) {
                    stopped = true;
                    return;
                }
                const SensorRect whole{0, 0, developer.columns(), developer.rows()};
                developer.tile(
                    intersection(whole, {c * kTileWidth, r * kTileHeight, kTileWidth, kTileHeight}),
                    workshops.local());
            }
        }
    });
    if (stopped) return std::nullopt;
    return raster;
}

} // namespace kelvaro
