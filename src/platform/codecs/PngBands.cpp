#include "platform/codecs/PngBands.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <zlib.h>

namespace kelvaro {

namespace {

constexpr std::size_t kBandBytes = std::size_t(1) << 20;
// Paeth's predictor on every row and no search for repetitions, which photographic noise does not
// have. With 8 bits a search for runs
// still pays (9% of a photo's file, and flat pictures stay small), with 16 bits it finds nothing.
constexpr int kLevel = 1;
int strategyFor(SampleType type) {
    return type == SampleType::u8 ? Z_RLE : Z_HUFFMAN_ONLY;
}
constexpr std::byte kPaethFilter{4};

// One row in PNG's byte order.
void serialise(const Bitmap& pixels, int y, unsigned char* to) {
    std::memcpy(to, pixels.row<std::byte>(y), pixels.rowBytes());
    if (pixels.type == SampleType::u16 && std::endian::native == std::endian::little)
        for (std::size_t i = 0; i + 1 < pixels.rowBytes(); i += 2)
            std::swap(to[i], to[i + 1]);
}

// Of left, above and upper left the one nearest to left + above - upper left. Written without
// branches so that the compiler turns rows into vectors.
inline int paeth(int left, int above, int corner) {
    const int towardsLeft = std::abs(above - corner), towardsAbove = std::abs(left - corner);
    const int towardsCorner = std::abs(left + above - 2 * corner);
    const int upper = towardsAbove <= towardsCorner ? above : corner;
    return towardsLeft <= towardsAbove && towardsLeft <= towardsCorner ? left : upper;
}

void filterRow(const unsigned char* row, const unsigned char* above, std::size_t count,
               std::size_t pixelBytes, unsigned char* to) {
    *to++ = std::to_integer<unsigned char>(kPaethFilter);
    const std::size_t first = std::min(pixelBytes, count);
    for (std::size_t i = 0; i < first; ++i)
        to[i] = static_cast<unsigned char>(row[i] - above[i]);
    for (std::size_t i = first; i < count; ++i)
        to[i] = static_cast<unsigned char>(
            row[i] - paeth(row[i - pixelBytes], above[i], above[i - pixelBytes]));
}

std::vector<unsigned char> filtered(const Bitmap& pixels, int firstRow, int rows) {
    const std::size_t rowBytes = pixels.rowBytes();
    const std::size_t pixelBytes = std::size_t(pixels.channels) * sampleBytes(pixels.type);
    std::vector<unsigned char> above(rowBytes), row(rowBytes);
    std::vector<unsigned char> out((rowBytes + 1) * std::size_t(rows));
    if (firstRow > 0) serialise(pixels, firstRow - 1, above.data());
    for (int i = 0; i < rows; ++i) {
        serialise(pixels, firstRow + i, row.data());
        filterRow(row.data(), above.data(), rowBytes, pixelBytes,
                  out.data() + (rowBytes + 1) * std::size_t(i));
        std::swap(row, above);
    }
    return out;
}

} // namespace

int pngBandRows(const Bitmap& pixels) {
    return int(std::clamp<std::size_t>(kBandBytes / (pixels.rowBytes() + 1), 1,
                                       std::size_t(pixels.size.height)));
}

PngBand deflateBand(const Bitmap& pixels, int firstRow, int rows) {
    auto input = filtered(pixels, firstRow, rows);
    PngBand band;
    band.filteredBytes = input.size();
    band.adler = std::uint32_t(adler32_z(1, input.data(), input.size()));
    z_stream stream{};
    // Negative window bits: deflate data alone, the joined stream gets its own frame.
    if (deflateInit2(&stream, kLevel, Z_DEFLATED, -MAX_WBITS, MAX_MEM_LEVEL,
                     strategyFor(pixels.type)) != Z_OK)
        return band;
    const bool isLast = firstRow + rows == pixels.size.height;
    try {
        band.deflated.resize(deflateBound(&stream, uLong(input.size())) + 16);
    } catch (...) {
        deflateEnd(&stream);
        throw;
    }
    stream.next_in = input.data();
    stream.avail_in = uInt(input.size());
    stream.next_out = reinterpret_cast<Bytef*>(band.deflated.data());
    stream.avail_out = uInt(band.deflated.size());
    const int status = deflate(&stream, isLast ? Z_FINISH : Z_SYNC_FLUSH);
    const bool done =
        status == (isLast ? Z_STREAM_END : Z_OK) && stream.avail_in == 0 && stream.avail_out > 0;
    band.deflated.resize(done ? stream.total_out : 0);
    deflateEnd(&stream);
    return band;
}

std::uint32_t joinedAdler(std::uint32_t before, const PngBand& band) {
    return std::uint32_t(adler32_combine(before, band.adler, z_off_t(band.filteredBytes)));
}

} // namespace kelvaro
