// Bayer mosaic to red, green and blue: L. Sanz Rodríguez, "Ratio Corrected Demosaicing" (2017).
// Green is interpolated along the locally smoother direction from neighbours corrected by the ratio
// of low-pass values; red and blue follow as differences from green. Input and output are balanced
// camera values, full float range; non-finite input is not allowed.
#pragma once

#include <cstddef>
#include <vector>

namespace kelvaro {

// Rows and columns at each side of a tile whose results are not valid.
inline constexpr int kDemosaicBorder = 10;

// Where red stands in the 2 × 2 pattern, from the tile's corner.
struct BayerPhase {
    int redRow = 0, redColumn = 0;
};

class BayerDemosaic {
public:
    // Tiles of at most this size, border included.
    BayerDemosaic(int maximumWidth, int maximumHeight);
    // `mosaic` and the planes are width × height with `stride` floats from row to row.
    void run(const float* mosaic, std::ptrdiff_t stride, int width, int height, BayerPhase phase,
             float* const (&planes)[3]);

private:
    std::vector<float> vertical_, diagonal_, lowPass_, highPassA_, highPassB_;
};

} // namespace kelvaro
