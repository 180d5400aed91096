#include "platform/codecs/TiffRows.h"

#include <algorithm>
#include <cstring>

namespace kelvaro {

namespace {

// A tile may stick out of a small picture; beyond this it has to be smaller than the picture.
constexpr double kHarmlessBytes = double(std::size_t(64) << 20);

} // namespace

TiffRows::TiffRows(const DecodeJob& job, TIFF* tiff, const TiffLayout& layout)
    : job_(&job), tiff_(tiff), layout_(layout) {}

Result<TiffRows> TiffRows::begin(const DecodeJob& job, TIFF* tiff, const TiffLayout& layout) {
    TiffRows rows(job, tiff, layout);
    double bytes = 0, tileBytes = 0;
    if (layout.isTiled) {
        tileBytes = double(TIFFTileSize64(tiff));
        const auto tileRow = std::int64_t(TIFFTileRowSize64(tiff));
        if (layout.tileWidth <= 0 || layout.tileLength <= 0 || tileRow <= 0 || !(tileBytes > 0))
            return fail(job.damaged());
        // Tiles are put side by side as bytes.
        if (std::int64_t(layout.tileWidth) * layout.samplesPerPlane() * layout.bits % 8 != 0)
            return fail(job.unsupported("tiles of an odd width"));
        const auto across =
            (std::int64_t(layout.size.width) + layout.tileWidth - 1) / layout.tileWidth;
        rows.rowBytes_ = std::size_t(tileRow * across);
        rows.bandRows_ = layout.tileLength;
    } else {
        rows.rowBytes_ = std::size_t(TIFFScanlineSize64(tiff));
        rows.bandRows_ = layout.isPlanar ? layout.rowsPerStrip : 1;
    }
    const double packedRow = double(layout.size.width) * layout.samplesPerPlane() * layout.bits / 8;
    if (double(rows.rowBytes_) < packedRow) return fail(job.damaged());
    bytes = double(rows.rowBytes_) * rows.bandRows_ * layout.planes();
    const double picture = packedRow * layout.planes() * layout.size.height;
    if (std::max(bytes, tileBytes) > 4 * picture + kHarmlessBytes) return fail(job.tooLarge());
    rows.band_ = std::make_unique_for_overwrite<std::byte[]>(std::size_t(bytes));
    rows.tile_ = std::make_unique_for_overwrite<std::byte[]>(std::size_t(tileBytes));
    rows.firstRow_ = -rows.bandRows_; // nothing is loaded
    return rows;
}

std::byte* TiffRows::bandRow(int plane, int row) const {
    return band_.get() +
           rowBytes_ * (std::size_t(plane) * std::size_t(bandRows_) + std::size_t(row));
}

const std::byte* TiffRows::row(int plane) const {
    return bandRow(plane, current_ - firstRow_);
}

Result<void> TiffRows::load(int y) {
    current_ = y;
    if (y < firstRow_ + bandRows_) return {};
    firstRow_ = y;
    if (job_->isCancelled()) return fail(job_->cancelled());
    bool sound = false;
    if (layout_.isTiled)
        sound = loadTiles(y);
    else if (layout_.isPlanar)
        sound = loadStrips(y);
    else
        sound = TIFFReadScanline(tiff_, band_.get(), std::uint32_t(y), 0) == 1;
    if (!sound) return fail(job_->afterLibraryError(job_->damaged()));
    return {};
}

bool TiffRows::loadStrips(int y) {
    const int count = std::min(bandRows_, layout_.size.height - y);
    const auto bytes = tmsize_t(rowBytes_) * count;
    for (int plane = 0; plane < layout_.planes(); ++plane) {
        const auto strip = TIFFComputeStrip(tiff_, std::uint32_t(y), std::uint16_t(plane));
        if (TIFFReadEncodedStrip(tiff_, strip, bandRow(plane, 0), bytes) != bytes) return false;
    }
    return true;
}

bool TiffRows::loadTiles(int y) {
    const auto tileRow = std::size_t(TIFFTileRowSize64(tiff_));
    const auto tileBytes = tmsize_t(tileRow) * layout_.tileLength;
    const int count = std::min(bandRows_, layout_.size.height - y);
    for (int plane = 0; plane < layout_.planes(); ++plane) {
        std::size_t at = 0;
        for (int x = 0; x < layout_.size.width; x += layout_.tileWidth, at += tileRow) {
            const auto index =
                TIFFComputeTile(tiff_, std::uint32_t(x), std::uint32_t(y), 0, std::uint16_t(plane));
            if (TIFFReadEncodedTile(tiff_, index, tile_.get(), tileBytes) != tileBytes)
                return false;
            for (int row = 0; row < count; ++row)
                std::memcpy(bandRow(plane, row) + at, tile_.get() + tileRow * std::size_t(row),
                            tileRow);
        }
    }
    return true;
}

} // namespace kelvaro
