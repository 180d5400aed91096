// Bayer mosaic to red, green and blue. Directions and colour differences follow L. Sanz Rodríguez,
// "Ratio Corrected Demosaicing" (2017), with windows of 3 × 3. The work is done in a compressive
// domain, nearly a square root, where ratios of light become differences: there the correction of
// J. F. Hamilton and J. E. Adams, US patent 5,629,734 (1997), replaces the ratio, which gains 2.5
// dB, and the domain itself 4.5 dB at high-contrast edges. Input and output are linear balanced
// camera values, full float range.
#pragma once

#include "platform/raw/SensorImage.h"

#include <cstddef>
#include <functional>
#include <memory>

namespace kelvaro {

// The compressive domain is linear up to about this value, and at least up to a few times the
// noise, or its averages would darken noisy shadows.
inline constexpr float kLeastToe = 0.016f;

// How far a result reaches for its input.
inline constexpr int kDemosaicBorder = 10;

// Where red stands in the 2 × 2 pattern.
struct BayerPhase {
    int redRow = 0, redColumn = 0;
};

// Rows of a mosaic split into the columns of even and of odd distance from the first one, so that
// vector code meets one colour at a time.
class SplitRows {
public:
    virtual ~SplitRows() = default;
    // `pairs` values each: column, column + 2, … and column + 1, column + 3, …
    virtual void split(int row, int column, int pairs, float* even, float* odd) const = 0;
};

// Works through a rectangle row by row with the last few rows of every intermediate plane at hand,
// so that they stay in the second level cache. One thread at a time.
class BayerDemosaic {
public:
    static constexpr int kMaximumWidth = 512;
    BayerDemosaic();
    ~BayerDemosaic();
    // At most kMaximumWidth columns. `source` is asked for kDemosaicBorder rows and columns around
    // the area too; `phase` is the one at the source's (0, 0). Plane rows are `stride` floats apart
    // and written up to the next multiple of 64 columns. `finished`, where there is one, is called
    // with the number of each row once it is written, so that with a stride of 0 all rows may pass
    // through the same memory.
    void run(const SplitRows& source, BayerPhase phase, const SensorRect& area, float toe,
             float* const (&planes)[3], std::ptrdiff_t stride,
             const std::function<void(int)>& finished = {});
    // The next `height` rows below those that were worked through last, from the same source: the
    // same values, but nothing is worked out twice.
    void goOn(const SplitRows& source, int height, float* const (&planes)[3], std::ptrdiff_t stride,
              const std::function<void(int)>& finished = {});

private:
    struct Rings;
    std::unique_ptr<Rings> rings_;
};

} // namespace kelvaro
