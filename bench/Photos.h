// The pictures that benches work on, made by code: soft shapes and fine texture, as a camera's file
// decodes to 8 bits.
#pragma once

#include "platform/Image.h"

#include <cmath>

namespace kelvaro::bench {

inline constexpr PixelSize k24MP{6000, 4000};

inline Bitmap photoSamples(PixelSize size) {
    Bitmap bitmap(size, 3, SampleType::u8);
    std::vector<double> across(std::size_t(3 * size.width));
    for (std::size_t x = 0; x < across.size(); ++x)
        across[x] = 100 * std::sin(double(x) / 900);
    for (int y = 0; y < size.height; ++y) {
        const double down = std::cos(y / 700.0);
        auto* row = bitmap.row<std::uint8_t>(y);
        for (int x = 0; x < 3 * size.width; ++x)
            row[x] =
                std::uint8_t(120 + across[std::size_t(x)] * down + (x * 7919 ^ y * 104729) % 23);
    }
    return bitmap;
}

inline Image photo(PixelSize size) {
    auto table = std::make_shared<std::vector<float>>(256);
    for (int i = 0; i < 256; ++i) {
        const double v = i / 255.0;
        (*table)[std::size_t(i)] =
            float(v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4));
    }
    return imageFrom(sourceFrom(photoSamples(size), {{table, table, table}}));
}

} // namespace kelvaro::bench
