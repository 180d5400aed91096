#include "platform/raw/CameraPicture.h"

#include "platform/raw/PictureMeasure.h"
#include "platform/raw/QuadRows.h"
#include "platform/raw/SensorStatistics.h"

#include <algorithm>

namespace kelvaro {

namespace {

constexpr float kToePerNoise = 5;

std::array<float, 3> saturationOf(const SensorImage& sensor) {
    return {sensor.saturation[0], sensor.saturation[1], sensor.saturation[2]};
}

// None where nothing is saturated.
std::shared_ptr<const LocalColour> surroundingsOf(const SensorImage& sensor,
                                                  const MosaicReader& reader) {
    if (sensor.layout == SensorLayout::monochrome || sensor.colours != 3) return nullptr;
    auto map = std::make_shared<const LocalColour>(sensor, reader, saturationOf(sensor));
    if (map->isEmpty()) return nullptr;
    return map;
}

std::shared_ptr<const PictureMeasure> measureOf(const SensorImage& sensor,
                                                const MosaicReader& reader) {
    const auto measure = sensor.measure ? sensor.measure : std::make_shared<PictureMeasure>();
    std::call_once(measure->once, [&] {
        measure->darkNoise = darkNoise(sensor, reader);
        measure->surroundings = surroundingsOf(sensor, reader);
    });
    return measure;
}

} // namespace

CameraPicture::CameraPicture(const SensorImage& sensor, int reduction)
    : sensor_(sensor),
      reduction_(reduction),
      reader_(sensor_),
      measure_(measureOf(sensor_, reader_)),
      toe_(std::max(kLeastToe, kToePerNoise * measure_->darkNoise)),
      highlights_(saturationOf(sensor_), measure_->surroundings.get()),
      mosaic_(&reader_) {
    if (measure_->surroundings && sensor_.layout == SensorLayout::bayer)
        mosaic_ = &recovered_.emplace(sensor_, reader_, highlights_);
    if (sensor_.corrections && !sensor_.corrections->gains.isEmpty())
        mosaic_ = &gained_.emplace(gains_.emplace(sensor_, sensor_.corrections->gains), *mosaic_);
}

void CameraPicture::make(const SensorRect& tile, Workshop& shop) const {
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
    if (isMosaic) return;
    for (int row = 0; row < tile.height; ++row) {
        float* const rows[kMaximumChannels] = {shop.row(0, row), shop.row(1, row), shop.row(2, row),
                                               shop.row(3, row)};
        const int y = sensor_.crop.top - sensor_.active.top + reduction_ * (tile.top + row),
                  x = sensor_.crop.left - sensor_.active.left + reduction_ * tile.left;
        if (sensor_.colours == 3) {
            highlights_.run({rows[0], rows[1], rows[2]}, tile.width, float(y), float(x),
                            float(reduction_));
        }
        multiply(y, x, reduction_, tile.width, rows);
    }
}

void CameraPicture::multiply(int row, int column, int step, int count, float* const* rows) const {
    if (!gains_) return;
    for (int c = 0; c < std::min(sensor_.colours, kMaximumChannels); ++c)
        gains_->multiply(row, column, step, count, c, rows[c]);
}

void CameraPicture::means(int row, int side, int count, float* const (&rows)[3]) const {
    for (float* channel : rows)
        std::fill_n(channel, count, 0.0f);
    const int photosites = side * reduction_;
    const int top = sensor_.crop.top + row * photosites;
    if (sensor_.layout == SensorLayout::bayer) {
        bayerMeans(top, photosites, count, rows);
        return;
    }
    otherMeans(top, photosites, count, rows);
    multiply(top - sensor_.active.top, sensor_.crop.left - sensor_.active.left, photosites, count,
             rows);
}

// Rows are summed first, then the columns of each square.
void CameraPicture::bayerMeans(int top, int photosites, int count, float* const (&rows)[3]) const {
    const int left = sensor_.crop.left, each = photosites / 2; // columns of a colour in a square
    const auto pairs = std::size_t(count) * std::size_t(each);
    const auto memory = std::make_unique_for_overwrite<float[]>(6 * pairs);
    float* const halves[2] = {memory.get(), memory.get() + pairs};
    const auto sums = [&](int y, int half) {
        return memory.get() + std::size_t(2 + 2 * (y & 1) + half) * pairs;
    };
    for (int y = top; y < top + 2; ++y)
        mosaic_->split(y, left, int(pairs), sums(y, 0), sums(y, 1));
    for (int y = top + 2; y < top + photosites; ++y) {
        mosaic_->split(y, left, int(pairs), halves[0], halves[1]);
        for (int h = 0; h < 2; ++h) {
            float* sum = sums(y, h);
            for (std::size_t k = 0; k < pairs; ++k)
                sum[k] += halves[h][k];
        }
    }
    for (int y = 0; y < 2; ++y) {
        for (int h = 0; h < 2; ++h) {
            const int channel = sensor_.filters.at(y, (left + h) & 1);
            const float share = 1 / float(each * each * (channel == 1 ? 2 : 1));
            const float* sum = sums(y, h);
            float* out = rows[channel];
            if (each == 2) { // of every picture at full size; without a loop for each cell
                for (int cell = 0; cell < count; ++cell)
                    out[cell] += share * (sum[2 * cell] + sum[2 * cell + 1]);
                continue;
            }
            for (int cell = 0; cell < count; ++cell) {
                float all = 0;
                for (int k = 0; k < each; ++k)
                    all += sum[cell * each + k];
                out[cell] += share * all;
            }
        }
    }
}

void CameraPicture::otherMeans(int top, int photosites, int count, float* const (&rows)[3]) const {
    const int left = sensor_.crop.left;
    std::vector<float> line(std::size_t(count) * std::size_t(photosites));
    std::vector<float> counts(3 * std::size_t(count));
    const auto add = [&](int channel, int x, float value) {
        const auto cell = std::size_t(x / photosites);
        rows[channel][cell] += value;
        counts[std::size_t(channel) * std::size_t(count) + cell] += 1;
    };
    const int width = int(line.size());
    for (int y = top; y < top + photosites; ++y) {
        if (sensor_.layout == SensorLayout::xTrans) {
            reader_.row(y, left, width, 0, line.data());
            for (int x = 0; x < width; ++x)
                add(sensor_.filters.at(y + 6, left + x), x, line[std::size_t(x)]);
            continue;
        }
        for (int c = 0; c < std::min({sensor_.colours, sensor_.channels, 3}); ++c) {
            reader_.row(y, left, width, c, line.data());
            for (int x = 0; x < width; ++x)
                add(c, x, line[std::size_t(x)]);
        }
    }
    for (std::size_t c = 0; c < 3; ++c) {
        for (std::size_t x = 0; x < std::size_t(count); ++x)
            rows[c][x] /= std::max(1.0f, counts[c * std::size_t(count) + x]);
    }
}

void CameraPicture::demosaic(const SensorRect& tile, Workshop& shop) const {
    const SensorRect area{sensor_.crop.left + tile.left, sensor_.crop.top + tile.top, tile.width,
                          tile.height};
    float* const planes[3] = {shop.row(0, 0), shop.row(1, 0), shop.row(2, 0)};
    shop.demosaic.run(*mosaic_, reader_.phase(), area, toe_, planes, Workshop::kStride);
}

void CameraPicture::makeRows(const SensorRect& tile, bool goesOn, Workshop& shop,
                             const UseRow& use) const {
    const SensorRect area{sensor_.crop.left + tile.left, sensor_.crop.top + tile.top, tile.width,
                          tile.height};
    float* const rows[3] = {shop.lineOf(0), shop.lineOf(1), shop.lineOf(2)};
    const auto finished = [&](int row) { use(row, rows[0], rows[1], rows[2]); };
    if (goesOn)
        shop.demosaic.goOn(*mosaic_, area.height, rows, 0, finished);
    else
        shop.demosaic.run(*mosaic_, reader_.phase(), area, toe_, rows, 0, finished);
}

// At half size from means of 2 × 2 finished pixels: its pattern has no smaller unit with all
// colours.
void CameraPicture::demosaicXTrans(const SensorRect& tile, Workshop& shop) const {
    constexpr int kBorder = XTransDemosaic::kBorder;
    const int width = reduction_ * Workshop::kWidth + 2 * kBorder,
              height = reduction_ * Workshop::kHeight + 2 * kBorder;
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
    shop.xTrans->run(shop.wide[3].data(), width, usedWidth, usedHeight, top, left, toe_, planes);
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

// One pixel of every 2 × 2 photosites: the mean of the greens, and red and blue brought to the
// middle of the four, where that mean lies; left where they are, they would fringe every edge.
void CameraPicture::halve(const SensorRect& tile, Workshop& shop) const {
    constexpr int kReach = 2; // blocks to each side
    const int left = sensor_.crop.left + 2 * (tile.left - kReach);
    const int top = sensor_.crop.top + 2 * (tile.top - kReach);
    const int wide = tile.width + 2 * kReach;
    const int redColumn = (reader_.phase().redColumn + left) & 1;
    const int redRow = (reader_.phase().redRow + top) & 1;
    // [row][parity of the column]
    float* const site[2][2] = {{shop.row(4, 0), shop.row(4, 1)}, {shop.row(4, 2), shop.row(4, 3)}};
    // The last four rows of red and of blue, already in the middle across.
    const auto kept = [&](int colour, int row) { return shop.row(4, 4 + 4 * colour + (row & 3)); };
    const auto across = [&](const float* from, bool isLeft, float* to) {
        const int step = isLeft ? 1 : -1;
        const float* p = from + kReach;
        quarterWayRow(p - step, p, p + step, p + 2 * step, to, tile.width);
    };
    const auto down = [&](int colour, int row, bool isUpper, float* to) {
        const int step = isUpper ? 1 : -1;
        const float *a = kept(colour, row - step), *b = kept(colour, row);
        const float *c = kept(colour, row + step), *d = kept(colour, row + 2 * step);
        quarterWayRow(a, b, c, d, to, tile.width);
    };
    for (int row = -kReach; row < tile.height + kReach; ++row) {
        const int y = top + 2 * (row + kReach);
        for (int k = 0; k < 2; ++k)
            mosaic_->split(y + k, left, wide, site[k][0], site[k][1]);
        across(site[redRow][redColumn], redColumn == 0, kept(0, row));
        across(site[1 - redRow][1 - redColumn], redColumn == 1, kept(1, row));
        if (row >= 0 && row < tile.height) {
            const float* a = site[redRow][1 - redColumn] + kReach;
            const float* b = site[1 - redRow][redColumn] + kReach;
            float* green = shop.row(1, row);
            for (int x = 0; x < tile.width; ++x)
                green[x] = 0.5f * (a[x] + b[x]);
        }
        // Each needs one row beyond on its own side of the middle, and two on the other.
        for (int colour = 0; colour < 2; ++colour) {
            const bool isUpper = (colour == 0) == (redRow == 0);
            const int finished = row - (isUpper ? 2 : 1);
            if (finished < 0 || finished >= tile.height) continue;
            down(colour, finished, isUpper, shop.row(2 * colour, finished));
        }
    }
}

// Sensors with all colours, or one, at every photosite; means of 2 × 2 at half size.
void CameraPicture::read(const SensorRect& tile, Workshop& shop) const {
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

} // namespace kelvaro
