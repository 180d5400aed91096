#include "platform/raw/PreviewLight.h"

namespace kelvaro {

namespace {

template<class T>
float toned(const ColourDecoding& colour, std::size_t channel, T sample) {
    if constexpr (std::is_same_v<T, float>) {
        return sample;
    } else {
        const auto& curve = colour.tone[channel];
        return curve && sample < curve->size() ? (*curve)[sample] : 0.0f;
    }
}

template<class T>
std::array<float, 3> light(const DecodedBitmap& preview, int x, int y) {
    const T* p = preview.pixels.row<T>(y) + x * preview.pixels.channels;
    const auto& m = preview.colour.toWorking;
    std::array<float, 3> v{}, rgb{};
    for (std::size_t c = 0; c < 3; ++c)
        v[c] = toned(preview.colour, c, p[c]);
    for (std::size_t i = 0; i < 3; ++i)
        rgb[i] = m[i][0] * v[0] + m[i][1] * v[1] + m[i][2] * v[2];
    return rgb;
}

} // namespace

std::array<float, 3> lightAt(const DecodedBitmap& preview, int x, int y) {
    switch (preview.pixels.type) {
    case SampleType::u8:
        return light<std::uint8_t>(preview, x, y);
    case SampleType::u16:
        return light<std::uint16_t>(preview, x, y);
    case SampleType::f32:
        break;
    }
    return light<float>(preview, x, y);
}

} // namespace kelvaro
