// A scene given by a formula, stored as a RAW file and compared with what is developed of it.
#pragma once

#include "platform/raw/DevelopedPhoto.h"
#include "platform/raw/SyntheticDng.h"

#include <algorithm>
#include <cmath>

namespace kelvaro::test {

// Smooth in both directions and different in each channel, so that no exchange goes unseen.
inline double ramp(int row, int column, int channel) {
    const double r = row / 100.0, c = column / 100.0;
    return channel == 0 ? 0.1 + 0.5 * c : channel == 1 ? 0.15 + 0.3 * r + 0.1 * c : 0.5 - 0.4 * r;
}

struct Place {
    int row, column;
};
// Where EXIF orientation puts stored (row, column) of a width × height picture.
inline Place upright(int orientation, int row, int column, int width, int height) {
    switch (orientation) {
    case 2:
        return {row, width - 1 - column};
    case 3:
        return {height - 1 - row, width - 1 - column};
    case 4:
        return {height - 1 - row, column};
    case 5:
        return {column, row};
    case 6:
        return {column, height - 1 - row};
    case 7:
        return {width - 1 - column, height - 1 - row};
    case 8:
        return {width - 1 - column, row};
    default:
        return {row, column};
    }
}

// The largest error of a developed file against the scene, over the whole crop, borders included.
inline double worst(const SyntheticDng& dng, int reduction = 1) {
    const auto path = dng.write("worst.dng");
    RawDevelopSettings settings;
    settings.reduction = reduction;
    settings.captureOnly = true;
    const Raster raster = developed(path, settings);
    std::filesystem::remove(path);
    const int width = dng.crop[2] / reduction, height = dng.crop[3] / reduction;
    const bool swaps = dng.orientation >= 5;
    EXPECT_EQ(raster.extent(), (PixelRect{0, 0, swaps ? height : width, swaps ? width : height}));
    if (raster.extent().size() != PixelSize{swaps ? height : width, swaps ? width : height})
        return 1e9;
    double error = 0;
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            const Place at = upright(dng.orientation, row, column, width, height);
            for (int c = 0; c < 3; ++c) {
                double expected = 0;
                const int r = dng.crop[1] + row * reduction, k = dng.crop[0] + column * reduction;
                for (int i = 0; i < reduction * reduction; ++i) {
                    expected += dng.scene(r + i / reduction, k + i % reduction, c);
                }
                expected *= std::exp2(dng.exposureStops) / (reduction * reduction);
                error = std::max(error, std::abs(raster.row(c, at.row)[at.column] - expected));
            }
        }
    }
    return error;
}

// Half a step of the stored value and what the directional weights leave on a two-way ramp; the
// mirrored border adds the ramp's own slope over two photosites.
inline constexpr double kTolerance = 0.004, kBorderTolerance = 0.016;

} // namespace kelvaro::test
