#include "platform/raw/CameraPicture.h"

#include "platform/raw/SensorStatistics.h"

#include <algorithm>

namespace kelvaro {

namespace {

constexpr float kToePerNoise = 5;

std::array<float, 3> saturationOf(const SensorImage& sensor) {
    return {sensor.saturation[0], sensor.saturation[1], sensor.saturation[2]};
}

// None where nothing is saturated.
std::unique_ptr<const LocalColour> surroundingsOf(const SensorImage& sensor,
                                                  const MosaicReader& reader) {
    if (sensor.layout == SensorLayout::monochrome || sensor.colours != 3) return nullptr;
    auto map = std::make_unique<const LocalColour>(sensor, reader, saturationOf(sensor));
    if (map->isEmpty()) return nullptr;
    return map;
}

} // namespace

Workshop::Workshop() {
    for (auto& plane : planes)
        plane.resize(std::size_t(kStride) * kHeight);
}

CameraPicture::CameraPicture(const SensorImage& sensor, int reduction)
    : sensor_(sensor),
      reduction_(reduction),
      reader_(sensor_),
      toe_(std::max(kLeastToe, kToePerNoise * darkNoise(sensor_, reader_))),
      surroundings_(surroundingsOf(sensor_, reader_)),
      highlights_(saturationOf(sensor_), surroundings_.get()),
      mosaic_(&reader_) {
    if (surroundings_ && sensor_.layout == SensorLayout::bayer)
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
    const int photosites = side * reduction_;
    const int top = sensor_.crop.top + row * photosites, left = sensor_.crop.left;
    std::vector<float> line(std::size_t(count) * std::size_t(photosites));
    std::vector<float> counts(3 * std::size_t(count));
    const auto add = [&](int channel, int x, float value) {
        const auto cell = std::size_t(x / photosites);
        rows[channel][cell] += value;
        counts[std::size_t(channel) * std::size_t(count) + cell] += 1;
    };
    for (float* channel : rows)
        std::fill_n(channel, count, 0.0f);
    const int width = int(line.size()), pairs = width / 2;
    for (int y = top; y < top + photosites; ++y) {
        switch (sensor_.layout) {
        case SensorLayout::bayer: {
            float* const halves[2] = {line.data(), line.data() + pairs};
            mosaic_->split(y, left, pairs, halves[0], halves[1]);
            for (int h = 0; h < 2; ++h) {
                const int channel = sensor_.filters.at(y & 1, (left + h) & 1);
                const int each = photosites / 2; // of a cell's columns
                for (int cell = 0; cell < count; ++cell) {
                    float sum = 0;
                    for (int k = cell * each; k < (cell + 1) * each; ++k)
                        sum += halves[h][k];
                    rows[channel][cell] += sum;
                    counts[std::size_t(channel * count + cell)] += float(each);
                }
            }
            break;
        }
        case SensorLayout::xTrans:
            reader_.row(y, left, width, 0, line.data());
            for (int x = 0; x < width; ++x)
                add(sensor_.filters.at(y + 6, left + x), x, line[std::size_t(x)]);
            break;
        default:
            for (int c = 0; c < std::min({sensor_.colours, sensor_.channels, 3}); ++c) {
                reader_.row(y, left, width, c, line.data());
                for (int x = 0; x < width; ++x)
                    add(c, x, line[std::size_t(x)]);
            }
        }
    }
    for (std::size_t c = 0; c < 3; ++c) {
        for (std::size_t x = 0; x < std::size_t(count); ++x)
            rows[c][x] /= std::max(1.0f, counts[c * std::size_t(count) + x]);
    }
    if (sensor_.layout != SensorLayout::bayer)
        multiply(top - sensor_.active.top, left - sensor_.active.left, photosites, count, rows);
}

void CameraPicture::demosaic(const SensorRect& tile, Workshop& shop) const {
    const SensorRect area{sensor_.crop.left + tile.left, sensor_.crop.top + tile.top, tile.width,
                          tile.height};
    float* const planes[3] = {shop.row(0, 0), shop.row(1, 0), shop.row(2, 0)};
    shop.demosaic.run(*mosaic_, reader_.phase(), area, toe_, planes, Workshop::kStride);
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

// One pixel of every 2 × 2 photosites: red, the mean of the greens, blue.
void CameraPicture::halve(const SensorRect& tile, Workshop& shop) const {
    const int left = sensor_.crop.left + 2 * tile.left;
    const int redColumn = (reader_.phase().redColumn + left) & 1;
    // [row][parity of the column]
    float* const site[2][2] = {{shop.row(4, 0), shop.row(4, 1)}, {shop.row(4, 2), shop.row(4, 3)}};
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
