// Colour noise that is coarser than the finishing of a tile can see: it stays as blotches in the
// shadows of photos at high sensitivity. The picture's means over squares of 4 × 4 pixels are
// decomposed and shrunk as the finishing does, and what that takes away from the colour differences
// is interpolated over the pixels. Immutable; any thread.
#pragma once

#include "platform/Raster.h"
#include "platform/raw/CameraPicture.h"
#include "platform/raw/ColourStep.h"
#include "platform/raw/Finishing.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelvaro {

class ColourBlotches {
public:
    // Whether noise of this kind would be seen.
    static bool areVisible(const NoiseModel& noise);

    // `noise` and `toe` are those of the finishing.
    ColourBlotches(const CameraPicture& picture, const ColourStep& colour, const NoiseModel& noise,
                   float toe);

    // Adds what the two colour differences lack to `count` pixels of a row: those of the camera's
    // picture from (row, column) on,
    void add(int row, int column, int count, float* u, float* v) const;
    // or those at (row, column) and, one after the other, `rowStep` and `columnStep` further.
    void addAlong(double row, double column, double rowStep, double columnStep, int count, float* u,
                  float* v) const;

private:
    static constexpr int kSide = 4; // pixels of a cell
    std::size_t size() const { return std::size_t(columns_) * std::size_t(rows_); }
    struct Cells {
        AlignedFloats luminance, differences[2], smoothed;
        std::vector<std::uint8_t>
            isTrusted; // not where nearly saturated: colours tell nothing there
    };
    Cells measured(const CameraPicture& picture, const ColourStep& colour, float toe) const;
    void decompose(Cells& cells, std::size_t which, const NoiseModel& noise);

    int columns_, rows_;
    AlignedFloats offsets_[2];
};

} // namespace kelvaro
