#include "platform/raw/Development.h"

#include "platform/raw/ColourStep.h"
#include "platform/raw/Demosaic.h"
#include "platform/raw/Finishing.h"
#include "platform/raw/Highlights.h"
#include "platform/raw/LocalColour.h"
#include "platform/raw/MosaicGains.h"
#include "platform/raw/MosaicReader.h"
#include "platform/raw/SensorStatistics.h"
#include "platform/raw/UprightWriter.h"
#include "platform/raw/XTransDemosaic.h"

#include <tbb/blocked_range2d.h>
#include <tbb/enumerable_thread_specific.h>
#include <tbb/parallel_for.h>

#include <atomic>
#include <cmath>
#include <memory>

#include <sys/mman.h>

namespace kelvaro {

namespace {

// Tiles with the border that finishing needs.
constexpr int kTileWidth = BayerDemosaic::kMaximumWidth, kTileHeight = 160;
constexpr int kTileStride = kTileWidth + 64; // room for the last vector of a row

constexpr float kToePerNoise = 5;

// What one thread needs for one tile.
struct Workshop {
    Workshop() {
        for (auto& plane : planes)
            plane.resize(std::size_t(kTileStride) * kTileHeight);
    }
    std::vector<float> planes[kMaximumChannels + 1]; // channels, then rows of the mosaic
    float* row(int channel, int y) { return planes[channel].data() + y * kTileStride; }
    BayerDemosaic demosaic;
    Finishing finishing;
    std::optional<XTransDemosaic> xTrans; // made when first needed
    std::vector<float> wide[4];           // its mosaic and planes
};

// Fresh memory costs more than the pixels when it comes in pages of 4 KiB.
void useLargePages(Raster& raster) {
#ifdef MADV_HUGEPAGE
    constexpr std::uintptr_t kPage = 2 << 20;
    const auto begin = reinterpret_cast<std::uintptr_t>(raster.row(0, 0));
    const std::uintptr_t from = (begin + kPage - 1) / kPage * kPage;
    const std::uintptr_t to = (begin + raster.bytes()) / kPage * kPage;
    if (to > from) ::madvise(reinterpret_cast<void*>(from), to - from, MADV_HUGEPAGE);
#else
    (void)raster;
#endif
}

// A single row or column cannot be halved.
int usedReduction(const SensorImage& sensor, int reduction) {
    const bool isTiny = sensor.crop.width < 2 || sensor.crop.height < 2;
    return sensor.isReduced || isTiny ? 1 : reduction;
}

std::array<float, 3> saturationOf(const SensorImage& sensor) {
    return {sensor.saturation[0], sensor.saturation[1], sensor.saturation[2]};
}

// None where nothing is saturated.
std::unique_ptr<const LocalColour> surroundingsOf(const SensorImage& sensor,
                                                  const MosaicReader& reader) {
    if (sensor.layout != SensorLayout::bayer) return nullptr;
    auto map = std::make_unique<const LocalColour>(sensor, reader, saturationOf(sensor));
    if (map->isEmpty()) return nullptr;
    return map;
}

} // namespace

class Development::Developer {
public:
    Developer(const SensorImage& sensor, const RawDevelopSettings& settings)
        : sensor_(sensor),
          reader_(sensor_),
          toe_(std::max(kLeastToe, kToePerNoise * darkNoise(sensor_, reader_))),
          surroundings_(surroundingsOf(sensor_, reader_)),
          highlights_(saturationOf(sensor_), surroundings_.get()),
          mosaic_(&reader_),
          colour_(sensor_),
          reduction_(usedReduction(sensor_, settings.reduction)) {
        finishing_.toe = toe_ * float(std::exp2(sensor.exposureStops));
        if (!settings.captureOnly) {
            finishing_.sharpening = sharpeningOf(settings.sharpness, reduction_);
            finishing_.reducesColourNoise = sensor.colours >= 3;
        }
        if (surroundings_) mosaic_ = &recovered_.emplace(sensor_, reader_, highlights_);
        if (sensor_.corrections && sensor_.corrections->hasGains()) {
            mosaic_ = &gained_.emplace(sensor_, *sensor_.corrections, *mosaic_);
        }
        measureNoise(workshops_.local());
    }
    Developer(const Developer&) = delete;
    Developer& operator=(const Developer&) = delete;

    int columns() const { return sensor_.crop.width / reduction_; }
    int rows() const { return sensor_.crop.height / reduction_; }

    // Measures the noise on a few tiles over the whole picture; without visible colour noise that
    // step is left out.
    void measureNoise(Workshop& shop) {
        if (Finishing::border(finishing_) == 0) return;
        constexpr int kAcross = 5, kDown = 4, kSize = 96;
        std::vector<Finishing::Sample> samples;
        for (int i = 0; i < kAcross * kDown; ++i) {
            const int width = std::min(kSize, columns()), height = std::min(kSize, rows());
            const SensorRect tile{(columns() - width) * (i % kAcross) / (kAcross - 1),
                                  (rows() - height) * (i / kAcross) / (kDown - 1), width, height};
            make(tile, shop);
            const float* const planes[3] = {shop.row(0, 0), shop.row(1, 0), shop.row(2, 0)};
            shop.finishing.sample(planes, kTileStride, width, height, finishing_.toe, samples);
        }
        noise_ = noiseModel(std::move(samples));
        finishing_.reducesColourNoise = finishing_.reducesColourNoise && noise_.hasColourNoise();
    }

    // What one tile may cover, so that it fits the workshop with its border.
    int tileWidth() const { return kTileWidth - 2 * Finishing::border(finishing_); }
    int tileHeight() const { return kTileHeight - 2 * Finishing::border(finishing_); }

    // One tile of the picture, in its own coordinates before orientation.
    void tile(const SensorRect& tile, const UprightWriter& writer) const {
        Workshop& shop = workshops_.local();
        const int border = Finishing::border(finishing_);
        const SensorRect wide{tile.left - border, tile.top - border, tile.width + 2 * border,
                              tile.height + 2 * border};
        make(wide, shop);
        float* const planes[3] = {shop.row(0, 0), shop.row(1, 0), shop.row(2, 0)};
        shop.finishing.run(planes, kTileStride, wide.width, wide.height, noise_, finishing_);
        const std::ptrdiff_t inner = border * kTileStride + border;
        writer.write(tile, {planes[0] + inner, planes[1] + inner, planes[2] + inner}, kTileStride);
    }

private:
    // The default at 0, none at −100, three times as much at 100; half of it at half size, where a
    // pixel's own softness is halved too.
    static float sharpeningOf(double sharpness, int reduction) {
        const double s = std::isfinite(sharpness) ? std::clamp(sharpness, -100.0, 100.0) / 100 : 0;
        return float((s < 0 ? 1 + s : 1 + 2 * s) / reduction);
    }

    // The working colours of a rectangle, which may reach over the picture's edge.
    void make(const SensorRect& tile, Workshop& shop) const {
        const bool isMosaic = sensor_.layout == SensorLayout::bayer;
        if (isMosaic && reduction_ == 1) {
            demosaic(tile, shop);
        } else if (isMosaic) {
            halve(tile, shop);
        } else if (sensor_.layout == SensorLayout::xTrans) {
            demosaicXTrans(tile, shop);
        } else {
            read(tile, shop);
        }
        for (int row = 0; row < tile.height; ++row) {
            float* const rows[kMaximumChannels] = {shop.row(0, row), shop.row(1, row),
                                                   shop.row(2, row), shop.row(3, row)};
            if (!isMosaic && sensor_.colours == 3) {
                highlights_.run({rows[0], rows[1], rows[2]}, tile.width, 0, 0, 0);
            }
            if (!isMosaic && gained_) gain(tile, row, rows);
            colour_.run(rows, tile.width);
        }
    }

    void gain(const SensorRect& tile, int row, float* const (&rows)[kMaximumChannels]) const {
        const int y = sensor_.crop.top - sensor_.active.top + reduction_ * (tile.top + row),
                  x = sensor_.crop.left - sensor_.active.left + reduction_ * tile.left;
        for (int c = 0; c < std::min(sensor_.colours, kMaximumChannels); ++c)
            gained_->multiply(y, x, reduction_, tile.width, c, rows[c]);
    }

    void demosaic(const SensorRect& tile, Workshop& shop) const {
        const SensorRect area{sensor_.crop.left + tile.left, sensor_.crop.top + tile.top,
                              tile.width, tile.height};
        float* const planes[3] = {shop.row(0, 0), shop.row(1, 0), shop.row(2, 0)};
        shop.demosaic.run(*mosaic_, reader_.phase(), area, toe_, planes, kTileStride);
    }
    // At half size from means of 2 × 2 finished pixels: its pattern has no smaller unit with all
    // colours.
    void demosaicXTrans(const SensorRect& tile, Workshop& shop) const {
        constexpr int kBorder = XTransDemosaic::kBorder;
        const int width = reduction_ * kTileWidth + 2 * kBorder,
                  height = reduction_ * kTileHeight + 2 * kBorder;
        if (!shop.xTrans) {
            shop.xTrans.emplace(sensor_.filters, width, height);
            for (auto& plane : shop.wide)
                plane.resize(std::size_t(width) * std::size_t(height));
        }
        const int top = sensor_.crop.top + reduction_ * tile.top - kBorder;
        const int left = sensor_.crop.left + reduction_ * tile.left - kBorder;
        const int usedWidth = reduction_ * tile.width + 2 * kBorder;
        const int usedHeight = reduction_ * tile.height + 2 * kBorder;
        for (int y = 0; y < usedHeight; ++y) {
            reader_.row(top + y, left, usedWidth, 0, shop.wide[3].data() + y * width);
        }
        float* const planes[3] = {shop.wide[0].data(), shop.wide[1].data(), shop.wide[2].data()};
        shop.xTrans->run(shop.wide[3].data(), width, usedWidth, usedHeight, top, left, toe_,
                         planes);
        for (int c = 0; c < 3; ++c) {
            for (int row = 0; row < tile.height; ++row) {
                const float* from = planes[c] + (reduction_ * row + kBorder) * width + kBorder;
                float* out = shop.row(c, row);
                if (reduction_ == 1) {
                    std::copy_n(from, tile.width, out);
                    continue;
                }
                for (int x = 0; x < tile.width; ++x) {
                    out[x] = 0.25f * (from[2 * x] + from[2 * x + 1] + from[2 * x + width] +
                                      from[2 * x + 1 + width]);
                }
            }
        }
    }
    // One pixel of every 2 × 2 photosites: red, the mean of the greens, blue.
    void halve(const SensorRect& tile, Workshop& shop) const {
        const int left = sensor_.crop.left + 2 * tile.left;
        const int redColumn = (reader_.phase().redColumn + left) & 1;
        // [row][parity of the column]
        float* const site[2][2] = {{shop.row(4, 0), shop.row(4, 1)},
                                   {shop.row(4, 2), shop.row(4, 3)}};
        for (int row = 0; row < tile.height; ++row) {
            const int top = sensor_.crop.top + 2 * (tile.top + row);
            for (int k = 0; k < 2; ++k)
                mosaic_->split(top + k, left, tile.width, site[k][0], site[k][1]);
            const int redRow = (reader_.phase().redRow + top) & 1;
            const float *a = site[redRow][1 - redColumn], *b = site[1 - redRow][redColumn];
            std::copy_n(site[redRow][redColumn], tile.width, shop.row(0, row));
            std::copy_n(site[1 - redRow][1 - redColumn], tile.width, shop.row(2, row));
            float* green = shop.row(1, row);
            for (int x = 0; x < tile.width; ++x)
                green[x] = 0.5f * (a[x] + b[x]);
        }
    }
    // Sensors with all colours, or one, at every photosite; means of 2 × 2 at half size.
    void read(const SensorRect& tile, Workshop& shop) const {
        const int colours = std::min(sensor_.colours, sensor_.channels);
        const int r = reduction_;
        float* line = shop.row(4, 0);
        for (int row = 0; row < tile.height; ++row) {
            for (int c = 0; c < colours; ++c) {
                float* out = shop.row(c, row);
                for (int k = 0; k < r; ++k) {
                    reader_.row(sensor_.crop.top + r * (tile.top + row) + k,
                                sensor_.crop.left + r * tile.left, r * tile.width, c,
                                r == 1 ? out : line);
                    if (r == 1) continue;
                    for (int x = 0; x < tile.width; ++x) {
                        const float half = 0.25f * (line[2 * x] + line[2 * x + 1]);
                        out[x] = k == 0 ? half : out[x] + half;
                    }
                }
            }
        }
    }

    const SensorImage sensor_;
    MosaicReader reader_;
    float toe_; // of the compressive domain, in balanced values
    std::unique_ptr<const LocalColour> surroundings_;
    HighlightRecovery highlights_;
    std::optional<RecoveredMosaic> recovered_;
    std::optional<GainedMosaic> gained_;
    const SplitRows* mosaic_; // the last of these that there is
    ColourStep colour_;
    FinishingSettings finishing_;
    NoiseModel noise_;
    int reduction_;
    mutable tbb::enumerable_thread_specific<Workshop> workshops_;
};

PixelSize developedSize(const SensorImage& sensor, int reduction) {
    const int by = usedReduction(sensor, reduction);
    const int width = sensor.crop.width / by, height = sensor.crop.height / by;
    return sensor.orientation >= 5 ? PixelSize{height, width} : PixelSize{width, height};
}

Development::Development(const SensorImage& sensor, const RawDevelopSettings& settings)
    : developer_(std::make_unique<const Developer>(sensor, settings)),
      size_(developedSize(sensor, settings.reduction)),
      orientation_(sensor.orientation) {}

Development::~Development() = default;

PixelSize Development::tiles() const {
    const int width = developer_->tileWidth(), height = developer_->tileHeight();
    return {(developer_->columns() + width - 1) / width,
            (developer_->rows() + height - 1) / height};
}

SensorRect Development::stored(int column, int row) const {
    const int width = developer_->tileWidth(), height = developer_->tileHeight();
    return intersection(SensorRect{0, 0, developer_->columns(), developer_->rows()},
                        SensorRect{column * width, row * height, width, height});
}

PixelRect Development::tile(int column, int row) const {
    return uprightRect(stored(column, row), size_, orientation_);
}

void Development::run(int column, int row, const TileView& target) const {
    developer_->tile(stored(column, row), UprightWriter(target, size_, orientation_));
}

std::optional<Raster> develop(const SensorImage& sensor, const RawDevelopSettings& settings,
                              const Cancellation* cancellation) {
    const Development development(sensor, settings);
    Raster raster({0, 0, development.size().width, development.size().height}, false);
    useLargePages(raster);
    const TileView target = raster.view();
    const auto [across, down] = development.tiles();
    std::atomic<bool> stopped{false};
    tbb::parallel_for(tbb::blocked_range2d<int>(0, down, 0, across), [&](const auto& range) {
        for (int r = range.rows().begin(); r < range.rows().end(); ++r) {
            for (int c = range.cols().begin(); c < range.cols().end(); ++c) {
                if (stopped || (cancellation && cancellation->isCancelled())) {
                    stopped = true;
                    return;
                }
                development.run(c, r, target);
            }
        }
    });
    if (stopped) return std::nullopt;
    return raster;
}

} // namespace kelvaro
