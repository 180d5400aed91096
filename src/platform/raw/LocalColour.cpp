#include "platform/raw/LocalColour.h"

#include "platform/raw/QuadRows.h"

#include <tbb/parallel_for.h>

#include <algorithm>
#include <atomic>
#include <cmath>

namespace kelvaro {

namespace {

// Brighter surfaces are likelier to be the one that runs into saturation.
float weightOf(float brightness) {
    return brightness * brightness;
}
constexpr float kSound = 0.9f; // of the saturation
// A neutral surface counts like this much of a white one: what far or dim colours cannot outweigh.
constexpr float kNeutralWeight = 0.02f;

} // namespace

// Takes red, green and blue of one place at a time.
struct LocalColour::Sum {
    Cell* cells;
    float limits[3]; // from which a channel counts as saturated
    bool isSaturated = false;

    // `most` are the largest values that the three are means of.
    void add(int cell, const float (&rgb)[3], const float (&most)[3]) {
        if (most[0] > limits[0] || most[1] > limits[1] || most[2] > limits[2]) {
            isSaturated = true;
            return;
        }
        const float sum = rgb[0] + rgb[1] + rgb[2];
        if (!(sum > 0.05f)) return;
        const float weight = weightOf(sum / 3), part = weight / sum;
        for (std::size_t c = 0; c < 3; ++c)
            cells[cell][c] += part * std::max(rgb[c], 0.0f);
        cells[cell][3] += weight;
    }
};

LocalColour::LocalColour(const SensorImage& sensor, const MosaicReader& reader,
                         const std::array<float, 3>& saturation)
    : active_(sensor.active), cell_(sensor.layout == SensorLayout::xTrans ? 12 : 8) {
    columns_ = (active_.width + cell_ - 1) / cell_;
    rows_ = (active_.height + cell_ - 1) / cell_;
    std::vector<Cell> cells(std::size_t(columns_) * std::size_t(rows_), Cell{});
    std::atomic<bool> isSaturated{false};
    tbb::parallel_for(0, rows_, [&](int row) {
        Sum sum{cells.data() + row * columns_,
                {kSound * saturation[0], kSound * saturation[1], kSound * saturation[2]}};
        if (sensor.layout == SensorLayout::bayer) {
            addBayer(reader, row, sum);
        } else if (sensor.layout == SensorLayout::xTrans) {
            addXTrans(sensor, reader, row, sum);
        } else {
            addFullColour(reader, row, sum);
        }
        if (sum.isSaturated) isSaturated = true;
    });
    if (!isSaturated) return;
    cells_ = std::move(cells);
    fill();
}

void LocalColour::addBayer(const MosaicReader& reader, int row, Sum& sum) const {
    const BayerPhase phase = reader.phase();
    const int redRow = (phase.redRow + active_.top) & 1,
              redColumn = (phase.redColumn + active_.left) & 1;
    const int pairs = columns_ * cell_ / 2;
    std::vector<float> values(std::size_t(8 * pairs), 0.0f);
    float* const totals = values.data() + 4 * pairs;
    const ColourSums sums{totals, totals + pairs, totals + 2 * pairs, totals + 3 * pairs};
    // [row of the quad][parity of the column]
    float* const v[2][2] = {{values.data(), values.data() + pairs},
                            {values.data() + 2 * pairs, values.data() + 3 * pairs}};
    for (int y = 0; y < cell_; y += 2) {
        for (int k = 0; k < 2; ++k)
            reader.split(active_.top + row * cell_ + y + k, active_.left, pairs, v[k][0], v[k][1]);
        const QuadRow quads{v[redRow][redColumn], v[redRow][1 - redColumn],
                            v[1 - redRow][redColumn], v[1 - redRow][1 - redColumn]};
        if (addQuads(quads, sum.limits, pairs, sums)) sum.isSaturated = true;
    }
    for (int x = 0; x < pairs; ++x) {
        LocalColour::Cell& cell = sum.cells[x / (cell_ / 2)];
        cell[0] += sums.red[x];
        cell[1] += sums.green[x];
        cell[2] += sums.blue[x];
        cell[3] += sums.weight[x];
    }
}

// Means of 6 × 6 photosites.
void LocalColour::addXTrans(const SensorImage& sensor, const MosaicReader& reader, int row,
                            Sum& sum) const {
    const int width = columns_ * cell_;
    std::vector<float> values(std::size_t(6 * width));
    for (int y = 0; y < cell_; y += 6) {
        const int top = active_.top + row * cell_ + y;
        for (int k = 0; k < 6; ++k)
            reader.row(top + k, active_.left, width, 0, values.data() + k * width);
        for (int x = 0; x < width; x += 6) {
            float mean[3] = {}, most[3] = {}, counts[3] = {};
            for (int i = 0; i < 36; ++i) {
                const int c = sensor.filters.at(top + i / 6, active_.left + x + i % 6);
                const float v = values[std::size_t(i / 6 * width + x + i % 6)];
                mean[c] += v;
                most[c] = std::max(most[c], v);
                counts[c] += 1;
            }
            for (int c = 0; c < 3; ++c)
                mean[c] /= std::max(1.0f, counts[c]);
            sum.add(x / cell_, mean, most);
        }
    }
}

void LocalColour::addFullColour(const MosaicReader& reader, int row, Sum& sum) const {
    const int width = columns_ * cell_;
    std::vector<float> values(std::size_t(3 * width));
    for (int y = 0; y < cell_; y += 2) {
        for (int c = 0; c < 3; ++c) {
            reader.row(active_.top + row * cell_ + y, active_.left, width, c,
                       values.data() + c * width);
        }
        for (int x = 0; x < width; x += 2) {
            const auto at = [&](int c) { return values[std::size_t(c * width + x)]; };
            sum.add(x / cell_, {at(0), at(1), at(2)}, {at(0), at(1), at(2)});
        }
    }
}

void LocalColour::fill() {
    struct Level {
        int columns, rows;
        std::vector<Cell> cells;
    };
    std::vector<Level> levels;
    levels.push_back({columns_, rows_, std::move(cells_)});
    while (levels.back().columns > 1 || levels.back().rows > 1) {
        const Level& fine = levels.back();
        Level coarse{(fine.columns + 1) / 2, (fine.rows + 1) / 2, {}};
        coarse.cells.assign(std::size_t(coarse.columns) * std::size_t(coarse.rows), Cell{});
        for (int y = 0; y < fine.rows; ++y) {
            for (int x = 0; x < fine.columns; ++x) {
                const Cell& from = fine.cells[std::size_t(y * fine.columns + x)];
                Cell& to = coarse.cells[std::size_t(y / 2 * coarse.columns + x / 2)];
                for (std::size_t i = 0; i < 4; ++i)
                    to[i] += from[i];
            }
        }
        levels.push_back(std::move(coarse));
    }
    Cell& whole = levels.back().cells[0];
    for (std::size_t i = 0; i < 3; ++i)
        whole[i] += kNeutralWeight / 3;
    whole[3] += kNeutralWeight;
    // Downwards every cell becomes a colour of weight 1; what it lacks of full weight comes from
    // above.
    constexpr float kFull = 2; // eight of sixteen quads at half brightness
    for (std::size_t l = levels.size(); l-- > 0;) {
        Level& fine = levels[l];
        tbb::parallel_for(0, fine.rows, [&](int y) {
            for (int x = 0; x < fine.columns; ++x) {
                Cell& cell = fine.cells[std::size_t(y * fine.columns + x)];
                if (l + 1 == levels.size()) {
                    for (std::size_t i = 0; i < 3; ++i)
                        cell[i] /= cell[3];
                    continue;
                }
                const Level& coarse = levels[l + 1];
                // The nearer three of four coarse cells' mixture: bilinear between their centres.
                const int cx = x / 2, cy = y / 2;
                const int nx = std::clamp(cx + (x & 1 ? 1 : -1), 0, coarse.columns - 1);
                const int ny = std::clamp(cy + (y & 1 ? 1 : -1), 0, coarse.rows - 1);
                const auto above = [&](int r, int c, std::size_t i) {
                    return coarse.cells[std::size_t(r * coarse.columns + c)][i];
                };
                const float own = std::min(1.0f, cell[3] / kFull);
                for (std::size_t i = 0; i < 3; ++i) {
                    const float smooth = 0.5625f * above(cy, cx, i) +
                                         0.1875f * (above(cy, nx, i) + above(ny, cx, i)) +
                                         0.0625f * above(ny, nx, i);
                    const float mean = cell[3] > 0 ? cell[i] / cell[3] : 0;
                    cell[i] = own * mean + (1 - own) * smooth;
                }
            }
        });
    }
    cells_ = std::move(levels.front().cells);
}

std::array<float, 3> LocalColour::at(float row, float column) const {
    const auto side = float(cell_);
    const float y = std::clamp(row / side - 0.5f, 0.0f, float(rows_ - 1));
    const float x = std::clamp(column / side - 0.5f, 0.0f, float(columns_ - 1));
    const int r = int(y), c = int(x);
    const int r1 = std::min(r + 1, rows_ - 1), c1 = std::min(c + 1, columns_ - 1);
    const float fy = y - float(r), fx = x - float(c);
    std::array<float, 3> colour{};
    const auto cell = [&](int i, int k) -> const Cell& {
        return cells_[std::size_t(i * columns_ + k)];
    };
    for (std::size_t i = 0; i < 3; ++i) {
        const float top = cell(r, c)[i] + fx * (cell(r, c1)[i] - cell(r, c)[i]);
        const float bottom = cell(r1, c)[i] + fx * (cell(r1, c1)[i] - cell(r1, c)[i]);
        colour[i] = top + fy * (bottom - top);
    }
    return colour;
}

} // namespace kelvaro
