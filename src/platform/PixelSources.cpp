// The pixel sources behind sourceFrom(): decoded bitmaps, whose integer samples are kept as stored
// and become linear light for each tile that is read, and finished rasters.
#include "base/Require.h"
#include "platform/Image.h"
#include "platform/ImageSpace.h"

#include <cstring>
#include <limits>

namespace kelvaro {

namespace {

// Where one row of a tile begins in the bitmap, and where it goes.
struct RowTask {
    int count;
    int channels;
    float* planes[4];
};

using Four [[gnu::vector_size(16)]] = float;

// Four pixels at a time: the samples of a plane are stored together, because single stores to three
// planes are what a row waits for.
template<int channels, class T>
void tabulatePixels(const T* from, const ColourDecoding& colour, const RowTask& row) {
    const float* const tables[3] = {colour.tone[0]->data(), colour.tone[1]->data(),
                                    colour.tone[2]->data()};
    int i = 0;
    for (; i + 4 <= row.count; i += 4, from += 4 * channels)
        for (int c = 0; c < 3; ++c) {
            const float* table = tables[c];
            const Four four = {table[from[c]], table[from[channels + c]],
                               table[from[2 * channels + c]], table[from[3 * channels + c]]};
            std::memcpy(row.planes[c] + i, &four, sizeof four);
        }
    for (; i < row.count; ++i, from += channels)
        for (int c = 0; c < 3; ++c)
            row.planes[c][i] = tables[c][from[c]];
}

template<class T>
void tabulateRow(const T* from, const ColourDecoding& colour, const RowTask& row) {
    if (row.channels == 4)
        tabulatePixels<4>(from, colour, row);
    else
        tabulatePixels<3>(from, colour, row);
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

class BitmapSource final : public PixelSource {
public:
    BitmapSource(Bitmap pixels, ColourDecoding colour)
        : pixels_(std::move(pixels)), colour_(std::move(colour)) {
        KELVARO_REQUIRE(pixels_.channels == 3 || pixels_.channels == 4);
        if (pixels_.type == SampleType::f32) return;
        const std::size_t entries = pixels_.type == SampleType::u8 ? 256 : 65536;
        for (const auto& tone : colour_.tone)
            KELVARO_REQUIRE(tone && tone->size() == entries);
    }
    PixelRect extent() const override { return {0, 0, pixels_.size.width, pixels_.size.height}; }
    bool hasAlpha() const override { return pixels_.channels == 4; }
    std::size_t bytes() const override { return pixels_.bytes(); }
    void read(const TileView& tile) const override;

private:
    Bitmap pixels_;
    ColourDecoding colour_;
};

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

class RasterSource final : public PixelSource {
public:
    explicit RasterSource(Raster raster) : raster_(std::move(raster)) {}
    PixelRect extent() const override { return raster_.extent(); }
    bool hasAlpha() const override { return raster_.hasAlpha(); }
    std::size_t bytes() const override { return raster_.bytes(); }
    ConstTileView standing() const override { return raster_.view(); }

    void read(const TileView& tile) const override {
        const ConstTileView from = raster_.view();
        const int firstRow = rowOfLine(from.rect, lineOfRow(tile.rect, 0));
        const int firstColumn = tile.rect.x - from.rect.x;
        for (int plane = 0; plane < (from.hasAlpha() ? 4 : 3); ++plane)
            for (int row = 0; row < tile.rect.height; ++row)
                std::memcpy(tile.row(plane, row), from.row(plane, firstRow + row) + firstColumn,
                            std::size_t(tile.rect.width) * sizeof(float));
    }

private:
    Raster raster_;
};

} // namespace

std::shared_ptr<const PixelSource> sourceFrom(Bitmap pixels, ColourDecoding colour) {
    return std::make_shared<const BitmapSource>(std::move(pixels), std::move(colour));
}

std::shared_ptr<const PixelSource> sourceFrom(Raster raster) {
    return std::make_shared<const RasterSource>(std::move(raster));
}

} // namespace kelvaro
