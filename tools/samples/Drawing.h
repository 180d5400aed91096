// A scene drawn to pixels: upright or as a turned camera stores it, and as a camera's JPEG would
// look.
#pragma once

#include "platform/Bitmap.h"
#include "samples/Scene.h"

#include <vector>

namespace kelvaro::samples {

// Scene-linear pixels, Rec. 709, rows top-down.
struct Picture {
    PixelSize size;
    std::vector<float> rgb; // size.width × size.height × 3

    float* pixel(int x, int y) {
        return &rgb[(std::size_t(y) * std::size_t(size.width) + std::size_t(x)) * 3];
    }
    const float* pixel(int x, int y) const {
        return &rgb[(std::size_t(y) * std::size_t(size.width) + std::size_t(x)) * 3];
    }
};

// Draws the upright scene, rows spread over all processors.
Picture draw(SceneKind kind, std::uint32_t seed, PixelSize size);

// The pixels as a file with this EXIF orientation (1, 3, 6 or 8) stores the upright picture.
Picture stored(const Picture& upright, int orientation);

// Averages blocks of `by` × `by` pixels; remainders at the right and bottom are left out.
Picture reduced(const Picture& picture, int by);

// What the camera itself makes of the light: exposure, a shoulder for the highlights, sRGB curve.
// `type` is u8 or u16.
Bitmap rendered(const Picture& picture, double exposureStops, SampleType type);

} // namespace kelvaro::samples
