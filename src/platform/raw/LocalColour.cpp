#include "platform/raw/LocalColour.h"

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

LocalColour::LocalColour(const SensorImage& sensor, const MosaicReader& reader,
                         const std::array<float, 3>& saturation) {
    const SensorRect& active = sensor.active;
    columns_ = (active.width + kCell - 1) / kCell;
    rows_ = (active.height + kCell - 1) / kCell;
    std::vector<Cell> cells(std::size_t(columns_) * std::size_t(rows_), Cell{});
    const BayerPhase phase = reader.phase();
    const int redRow = (phase.redRow + active.top) & 1,
              redColumn = (phase.redColumn + active.left) & 1;
    std::atomic<bool> isSaturated{false};
    tbb::parallel_for(0, rows_, [&](int row) {
        const int pairs = columns_ * kCell / 2;
        std::vector<float> values(std::size_t(4 * pairs));
        // [row of the quad][parity of the column]
        float* const v[2][2] = {{values.data(), values.data() + pairs},
                                {values.data() + 2 * pairs, values.data() + 3 * pairs}};
        bool saturated = false;
        for (int y = 0; y < kCell; y += 2) {
            for (int k = 0; k < 2; ++k) {
                reader.split(active.top + row * kCell + y + k, active.left, pairs, v[k][0],
                             v[k][1]);
            }
            for (int x = 0; x < pairs; ++x) {
                const float r = v[redRow][redColumn][x], b = v[1 - redRow][1 - redColumn][x];
                const float g1 = v[redRow][1 - redColumn][x], g2 = v[1 - redRow][redColumn][x];
                const float g = 0.5f * (g1 + g2);
                if (r > kSound * saturation[0] || std::max(g1, g2) > kSound * saturation[1] ||
                    b > kSound * saturation[2]) {
                    saturated = true;
                    continue;
                }
                const float sum = r + g + b;
                if (!(sum > 0.05f)) continue;
                Cell& cell = cells[std::size_t(row * columns_ + x / (kCell / 2))];
                const float weight = weightOf(sum / 3);
                const float part = weight / sum;
                cell[0] += part * std::max(r, 0.0f);
                cell[1] += part * std::max(g, 0.0f);
                cell[2] += part * std::max(b, 0.0f);
                cell[3] += weight;
            }
        }
        if (saturated) isSaturated = true;
    });
    if (!isSaturated) return;
    cells_ = std::move(cells);
    fill();
}

void LocalColour::fill() {
    struct Level {
        int columns, rows;
        std::vector<Cell> cells;
    };
    std::vector<Level> levels{{columns_, rows_, cells_}};
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
        for (int y = 0; y < fine.rows; ++y) {
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
        }
    }
    cells_ = std::move(levels.front().cells);
}

std::array<float, 3> LocalColour::at(float row, float column) const {
    const float y = std::clamp(row / kCell - 0.5f, 0.0f, float(rows_ - 1));
    const float x = std::clamp(column / kCell - 0.5f, 0.0f, float(columns_ - 1));
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
