#include "platform/imaging/BitmapSource.h"

#include "base/Require.h"
#include "platform/imaging/ImageSpace.h"

#include <limits>

namespace kelvaro {

namespace {

// Where one row of a tile begins in the bitmap, and where it goes.
struct RowTask {
    int count;
    int channels;
    float* planes[4];
};

template<class T>
void tabulateRow(const T* from, const ColourDecoding& colour, const RowTask& row) {
    const float* r = colour.tone[0]->data();
    const float* g = colour.tone[1]->data();
    const float* b = colour.tone[2]->data();
    for (int i = 0; i < row.count; ++i, from += row.channels) {
        row.planes[0][i] = r[from[0]];
        row.planes[1][i] = g[from[1]];
        row.planes[2][i] = b[from[2]];
    }
}

void copyRow(const float* from, const RowTask& row) {
    for (int i = 0; i < row.count; ++i, from += row.channels)
        for (int c = 0; c < 3; ++c)
            row.planes[c][i] = from[c];
}

template<class T>
void alphaRow(const T* from, const RowTask& row) {
    const float scale =
        std::is_same_v<T, float> ? 1.0f : 1.0f / float(std::numeric_limits<T>::max());
    for (int i = 0; i < row.count; ++i)
        row.planes[3][i] = float(from[4 * i + 3]) * scale;
}

void matrixRow(const ColourDecoding& colour, const RowTask& row) {
    const auto& m = colour.toWorking;
    for (int i = 0; i < row.count; ++i) {
        const float r = row.planes[0][i], g = row.planes[1][i], b = row.planes[2][i];
        for (int k = 0; k < 3; ++k)
            row.planes[k][i] = m[k][0] * r + m[k][1] * g + m[k][2] * b;
    }
}

void premultiplyRow(const RowTask& row) {
    for (int c = 0; c < 3; ++c)
        for (int i = 0; i < row.count; ++i)
            row.planes[c][i] *= row.planes[3][i];
}

} // namespace

BitmapSource::BitmapSource(Bitmap pixels, ColourDecoding colour)
    : pixels_(std::move(pixels)), colour_(std::move(colour)) {
    KELVARO_REQUIRE(pixels_.channels == 3 || pixels_.channels == 4);
    if (pixels_.type == SampleType::f32) return;
    for (const auto& tone : colour_.tone)
        KELVARO_REQUIRE(tone && tone->size() == (pixels_.type == SampleType::u8 ? 256u : 65536u));
}

PixelRect BitmapSource::extent() const {
    return {0, 0, pixels_.size.width, pixels_.size.height};
}

void BitmapSource::read(const TileView& tile) const {
    for (int r = 0; r < tile.rect.height; ++r) {
        const int stored = rowOfLine(extent(), lineOfRow(tile.rect, r));
        RowTask row{tile.rect.width, pixels_.channels, {}};
        for (int c = 0; c < pixels_.channels; ++c)
            row.planes[c] = tile.row(c, r);
        const auto from = [&]<class T>() {
            return pixels_.row<T>(stored) + std::size_t(tile.rect.x) * std::size_t(row.channels);
        };
        if (pixels_.type == SampleType::u8)
            tabulateRow(from.template operator()<std::uint8_t>(), colour_, row);
        else if (pixels_.type == SampleType::u16)
            tabulateRow(from.template operator()<std::uint16_t>(), colour_, row);
        else
            copyRow(from.template operator()<float>(), row);
        if (!colour_.matrixIsIdentity) matrixRow(colour_, row);
        if (row.channels < 4) continue;
        if (pixels_.type == SampleType::u8)
            alphaRow(from.template operator()<std::uint8_t>(), row);
        else if (pixels_.type == SampleType::u16)
            alphaRow(from.template operator()<std::uint16_t>(), row);
        else
            alphaRow(from.template operator()<float>(), row);
        premultiplyRow(row);
    }
}

} // namespace kelvaro
