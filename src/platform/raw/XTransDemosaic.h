// 6 × 6 mosaics (X-Trans) to red, green and blue, by a method of our own in the compressive domain
// of the Bayer demosaic: green between its nearest neighbours across and down, weighted by how
// rough each direction is; red and blue as differences from green, averaged over the samples in 5 ×
// 5 photosites that look alike; then green at red and blue twice more, half of it from the
// difference that the others predict.
#pragma once

#include "platform/raw/SensorImage.h"

#include <array>
#include <cstddef>
#include <vector>

namespace kelvaro {

class XTransDemosaic {
public:
    // How far a result reaches for its input.
    static constexpr int kBorder = 12;

    // Tiles of at most this size, border included. `filters` has period 6.
    XTransDemosaic(const ColourFilters& filters, int maximumWidth, int maximumHeight);
    // `mosaic` holds width × height linear balanced values, `stride` floats from row to row; its
    // first is the photosite (row, column) of the sensor. Results are valid kBorder inside; one of
    // the planes may be the mosaic itself. `toe` as for the Bayer demosaic.
    void run(const float* mosaic, std::ptrdiff_t stride, int width, int height, int row, int column,
             float toe, float* const (&planes)[3]);

private:
    struct Neighbour {
        int dy, dx;
        float weight;
    };
    // Per place in the pattern.
    struct Place {
        int channel = 0;
        int left = 1, right = 1, up = 1, down = 1; // distances of the nearest greens
        std::vector<Neighbour> red, blue;          // in 5 × 5, without the photosite itself
    };
    const Place& place(int row, int column) const {
        return places_[std::size_t((row % 6) * 6 + column % 6)];
    }
    void measureRoughness(int row, int column);
    void interpolateGreen(int row, int column);
    float predicted(const std::vector<Neighbour>& among, const float* green,
                    const float* difference) const;
    void refineGreen(int row, int column);
    void boxSum(const std::vector<float>& in, std::vector<float>& out);

    ColourFilters filters_;
    std::array<Place, 36> places_;
    int width_ = 0, height_ = 0;
    std::vector<float> encoded_, green_, difference_, across_, down_, sums_, scratch_;
};

} // namespace kelvaro
