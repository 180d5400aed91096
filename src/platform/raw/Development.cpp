#include "platform/raw/Development.h"

#include "platform/raw/CameraPicture.h"
#include "platform/raw/ColourBlotches.h"
#include "platform/raw/ColourStep.h"
#include "platform/raw/FineHalving.h"
#include "platform/raw/PlaceMap.h"
#include "platform/raw/UprightWriter.h"

#include <tbb/blocked_range2d.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <memory>
#include <utility>

namespace kelvaro {

namespace {

// A single row or column cannot be halved.
int usedReduction(const SensorImage& sensor, int reduction) {
    const bool isTiny = sensor.crop.width < 2 || sensor.crop.height < 2;
    return sensor.isReduced || isTiny ? 1 : reduction;
}

// The colour offsets of one tile.
class TileOffsets final : public ColourOffsets {
public:
    TileOffsets(const ColourBlotches& blotches, const PlaceMap& places, const SensorRect& tile)
        : blotches_(blotches), places_(places), tile_(tile) {}
    void add(int row, int count, float* u, float* v) const override {
        const int y = tile_.top + row;
        if (places_.isIdentity()) {
            blotches_.add(y, tile_.left, count, u, v);
            return;
        }
        // Green stands for all; blotches are much wider than what the channels differ.
        float rows[2], columns[2];
        places_.row(y, tile_.left, 1, 1, rows, columns);
        places_.row(y, tile_.left + count - 1, 1, 1, rows + 1, columns + 1);
        const double steps = std::max(1, count - 1);
        blotches_.addAlong(rows[0], columns[0], (rows[1] - rows[0]) / steps,
                           (columns[1] - columns[0]) / steps, count, u, v);
    }

private:
    const ColourBlotches& blotches_;
    const PlaceMap& places_;
    const SensorRect tile_;
};

} // namespace

class Development::Developer {
public:
    Developer(const SensorImage& sensor, const RawDevelopSettings& settings)
        : halves_(isFinelyHalved(sensor, settings)),
          picture_(sensor, halves_ ? 1 : usedReduction(sensor, settings.reduction)),
          places_(picture_.sensor(), picture_.reduction()),
          size_(pictureSize(picture_.sensor(), usedReduction(sensor, settings.reduction))),
          colour_(sensor),
          workshops_(workshopsFor(settings)) {
        finishing_.toe = picture_.toe() * float(std::exp2(sensor.exposureStops));
        if (!settings.captureOnly) {
            finishing_.sharpening = sharpeningOf(settings.sharpness, picture_.reduction());
            finishing_.reducesColourNoise = sensor.colours >= 3;
            finishing_.removesFalseColour = picture_.interpolates();
        }
        if (sensor.corrections && !sensor.corrections->lateGains.isEmpty())
            lateGains_.emplace(picture_.sensor(), sensor.corrections->lateGains);
        measureNoise();
    }
    Developer(const Developer&) = delete;
    Developer& operator=(const Developer&) = delete;

    int columns() const { return size_.width; }
    int rows() const { return size_.height; }

    // What one tile may cover, so that it fits the workshop with its border.
    int tileWidth() const { return tileSide(Workshop::kWidth); }
    int tileHeight() const {
        // What is only halved passes over its rows several times, and reaches for few others. What
        // goes on from tile to tile reaches for none twice.
        const bool isLow = (picture_.reduction() == 2 && border() == 0) || goesOn();
        return std::min(tileSide(Workshop::kHeight), isLow ? kLowTile : kTile);
    }

    // One tile of the picture, in its own coordinates before orientation.
    void tile(const SensorRect& tile, const UprightWriter& writer) const {
        if (goesOn() && writer.place(tile, 0)) return tileBelow(tile, writer);
        const WorkshopPool::Lease lease(workshops_);
        Workshop& shop = *lease;
        const int scale = halves_ ? 2 : 1;
        const SensorRect wide = withBorder(
            {scale * tile.left, scale * tile.top, scale * tile.width, scale * tile.height});
        std::optional<TileOffsets> offsets;
        if (blotches_) offsets.emplace(*blotches_, places_, wide);
        const int finished = Finishing::border(finishing_);
        const std::ptrdiff_t inner = finished * Workshop::kStride + finished;
        float* planes[3] = {shop.row(0, 0) + inner, shop.row(1, 0) + inner, shop.row(2, 0) + inner};
        Finishing::Target target{{planes[0], planes[1], planes[2]}, Workshop::kStride};
        // Straight to where it belongs, if nothing is to be done with it on the way.
        const bool isDirect = finished > 0 && !halves_ && writer.place(tile, 0);
        if (isDirect) target = targetOf(tile, writer);
        finish(wide, shop,
               {wide.width, wide.height, noise_, finishing_, target, offsets ? &*offsets : nullptr,
                0});
        if (isDirect) return;
        if (halves_) {
            constexpr int kSpare = kAroundHalved - kHalvingBorder;
            for (float*& plane : planes) {
                plane += kSpare * Workshop::kStride + kSpare;
                halveFinely(plane, Workshop::kStride, tile.width, tile.height);
            }
        }
        writer.write(tile, planes, Workshop::kStride);
    }

private:
    static constexpr int kTile = 256, kLowTile = 64; // rows of a tile at most
    // Finishing makes every second row and column differ: an even number.
    static constexpr int kAroundHalved = kHalvingBorder + 1;

    // One for each thread; and one for each column of tiles of what is read from top to bottom.
    std::size_t workshopsFor(const RawDevelopSettings& settings) const {
        const int threads = tbb::this_task_arena::max_concurrency();
        constexpr int kNarrowest = Workshop::kWidth - 64; // tiles with the widest border
        return std::size_t(threads + (settings.streamed ? size_.width / kNarrowest + 1 : 0));
    }
    // Whether tiles are made row by row and straight to where they belong, so that one can go on
    // where the one above it ended.
    bool goesOn() const { return finishesRows() && !halves_ && picture_.sensor().orientation <= 1; }
    bool finishesRows() const {
        return picture_.makesRows() && places_.isIdentity() && Finishing::border(finishing_) > 0;
    }

    SensorRect withBorder(const SensorRect& r) const {
        const int border = this->border();
        return {r.left - border, r.top - border, r.width + 2 * border, r.height + 2 * border};
    }
    static Finishing::Target targetOf(const SensorRect& tile, const UprightWriter& writer) {
        return {{writer.place(tile, 0), writer.place(tile, 1), writer.place(tile, 2)},
                writer.stride()};
    }

    // A tile that goes on with the one above it, if there is a workshop that made it.
    void tileBelow(const SensorRect& tile, const UprightWriter& writer) const {
        const WorkshopPool::Lease lease(workshops_, tile);
        Workshop& shop = *lease;
        const FinishedColumns above = std::exchange(shop.finished, {});
        const bool goesOn = above.width > 0;
        const int top = goesOn ? above.top : tile.top;
        const SensorRect wide = withBorder({tile.left, top, tile.width, tile.bottom() - top});
        const int done = goesOn ? wide.height - tile.height : 0;
        std::optional<TileOffsets> offsets;
        if (blotches_) offsets.emplace(*blotches_, places_, wide);
        finishRows({wide.left, wide.top + done, wide.width, wide.height - done}, done, shop,
                   {wide.width, wide.height, noise_, finishing_, targetOf(tile, writer),
                    offsets ? &*offsets : nullptr, tile.top - top});
        if (tile.bottom() < rows()) shop.finished = {tile.left, tile.width, top, tile.bottom()};
    }

    // Makes rows after the `done` first ones and finishes each while it is in the cache.
    void finishRows(const SensorRect& rows, int done, Workshop& shop,
                    const Finishing::Job& job) const {
        picture_.makeRows(rows, done > 0, shop,
                          [&](int row, float* red, float* green, float* blue) {
                              toWorkingColours(rows, row, {red, green, blue, nullptr});
                              shop.finishing.addRow(job, done + row, red, green, blue);
                          });
    }

    // Makes the rectangle and finishes it.
    void finish(const SensorRect& wide, Workshop& shop, const Finishing::Job& job) const {
        if (finishesRows()) {
            finishRows(wide, 0, shop, job);
            return;
        }
        make(wide, shop);
        shop.finishing.run({shop.row(0, 0), shop.row(1, 0), shop.row(2, 0)}, Workshop::kStride,
                           wide.width, wide.height, noise_, finishing_, job.target, job.offsets);
    }

    void toWorkingColours(const SensorRect& tile, int row,
                          float* const (&rows)[kMaximumChannels]) const {
        if (lateGains_) multiply(tile, row, rows);
        colour_.run(rows, tile.width);
    }

    static bool isFinelyHalved(const SensorImage& sensor, const RawDevelopSettings& settings) {
        return settings.fine && usedReduction(sensor, settings.reduction) == 2;
    }
    int border() const { return Finishing::border(finishing_) + (halves_ ? kAroundHalved : 0); }
    int tileSide(int workshop) const { return (workshop - 2 * border()) / (halves_ ? 2 : 1); }

    // Measures the noise on a few tiles over the whole picture; without visible colour noise that
    // step is left out.
    void measureNoise() {
        if (Finishing::border(finishing_) == 0) return;
        constexpr int kAcross = 5, kDown = 4, kSize = 96;
        std::array<std::vector<Finishing::Sample>, kAcross * kDown> parts;
        const auto [columns, rows] = pictureSize(picture_.sensor(), picture_.reduction());
        const int width = std::min(kSize, columns), height = std::min(kSize, rows);
        tbb::parallel_for(0, kAcross * kDown, [&, columns = columns, rows = rows](int i) {
            const WorkshopPool::Lease lease(workshops_);
            Workshop& shop = *lease;
            const SensorRect tile{(columns - width) * (i % kAcross) / (kAcross - 1),
                                  (rows - height) * (i / kAcross) / (kDown - 1), width, height};
            make(tile, shop);
            const float* const planes[3] = {shop.row(0, 0), shop.row(1, 0), shop.row(2, 0)};
            shop.finishing.sample(planes, Workshop::kStride, width, height, finishing_.toe,
                                  parts[std::size_t(i)]);
        });
        std::vector<Finishing::Sample> samples; // in their order, from any number of threads
        for (const auto& part : parts)
            samples.insert(samples.end(), part.begin(), part.end());
        noise_ = noiseModel(std::move(samples));
        finishing_.reducesColourNoise = finishing_.reducesColourNoise && noise_.hasColourNoise();
        if (finishing_.reducesColourNoise && picture_.sensor().colours == 3 &&
            ColourBlotches::areVisible(noise_))
            blotches_.emplace(picture_, colour_, noise_, finishing_.toe);
    }

    // The default at 0, none at −100, three times as much at 100; half of it at half size, where a
    // pixel's own softness is halved too.
    static float sharpeningOf(double sharpness, int reduction) {
        const double s = std::isfinite(sharpness) ? std::clamp(sharpness, -100.0, 100.0) / 100 : 0;
        return float((s < 0 ? 1 + s : 1 + 2 * s) / reduction);
    }

    // The working colours of a rectangle, which may reach over the picture's edge.
    void make(const SensorRect& tile, Workshop& shop) const {
        if (places_.isIdentity()) {
            picture_.make(tile, shop);
        } else {
            resample(tile, shop);
        }
        for (int row = 0; row < tile.height; ++row) {
            float* const rows[kMaximumChannels] = {shop.row(0, row), shop.row(1, row),
                                                   shop.row(2, row), shop.row(3, row)};
            toWorkingColours(tile, row, rows);
        }
    }

    // The channels where the lens drew them. The part that they come from may be larger than a
    // workshop and is made in pieces.
    void resample(const SensorRect& tile, Workshop& shop) const {
        const SensorRect source = places_.source(tile);
        const int channels = std::clamp(picture_.sensor().colours, 1, kMaximumChannels);
        const auto stride = std::ptrdiff_t(source.width);
        for (int c = 0; c < channels; ++c) {
            const auto size = std::size_t(stride) * std::size_t(source.height);
            if (shop.source[c].size() < size) shop.source[c].resize(size);
        }
        for (int top = source.top; top < source.bottom(); top += Workshop::kHeight) {
            for (int left = source.left; left < source.right(); left += Workshop::kWidth) {
                const SensorRect piece =
                    intersection(source, {left, top, Workshop::kWidth, Workshop::kHeight});
                picture_.make(piece, shop);
                for (int c = 0; c < channels; ++c) {
                    float* to =
                        shop.source[c].data() + (top - source.top) * stride + (left - source.left);
                    for (int row = 0; row < piece.height; ++row)
                        std::copy_n(shop.row(c, row), piece.width, to + row * stride);
                }
            }
        }
        SourcePlanes planes;
        planes.stride = stride;
        planes.area = source;
        const bool isShared = places_.isShared();
        float rows[Workshop::kWidth], columns[Workshop::kWidth];
        for (int row = 0; row < tile.height; ++row) {
            planes.count = isShared ? channels : 1;
            for (int c = 0; c < channels; c += planes.count) {
                float* out[kMaximumChannels] = {};
                for (int k = 0; k < planes.count; ++k) {
                    planes.first[k] = shop.source[c + k].data();
                    out[k] = shop.row(c + k, row);
                }
                places_.row(tile.top + row, tile.left, tile.width, c, rows, columns);
                sampleRow(planes, rows, columns, tile.width, out);
            }
        }
    }

    void multiply(const SensorRect& tile, int row, float* const (&rows)[kMaximumChannels]) const {
        const SensorImage& sensor = picture_.sensor();
        const int r = picture_.reduction();
        const int y = sensor.crop.top - sensor.active.top + r * (tile.top + row),
                  x = sensor.crop.left - sensor.active.left + r * tile.left;
        for (int c = 0; c < std::min(sensor.colours, kMaximumChannels); ++c)
            lateGains_->multiply(y, x, r, tile.width, c, rows[c]);
    }

    const bool halves_; // the finished picture
    CameraPicture picture_;
    PlaceMap places_;
    PixelSize size_; // before orientation
    ColourStep colour_;
    std::optional<PlaceGains> lateGains_;
    FinishingSettings finishing_;
    NoiseModel noise_;
    std::optional<ColourBlotches> blotches_;
    mutable WorkshopPool workshops_;
};

PixelSize developedSize(const SensorImage& sensor, int reduction) {
    const auto [width, height] = pictureSize(sensor, usedReduction(sensor, reduction));
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
    const TileView target = raster.view();
    const auto [across, down] = development.tiles();
    std::atomic<bool> stopped{false};
    constexpr int kRowsTogether = 16; // of tiles: each goes on where the one above it ended
    const tbb::blocked_range2d<int> tiles(0, down, kRowsTogether, 0, across, 1);
    tbb::parallel_for(tiles, [&](const auto& range) {
        for (int c = range.cols().begin(); c < range.cols().end(); ++c) {
            for (int r = range.rows().begin(); r < range.rows().end(); ++r) {
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
