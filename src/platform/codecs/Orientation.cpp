#include "platform/codecs/Orientation.h"

#include "base/Require.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace kelvaro {

namespace {

// Turned pictures are collected in bands, so that each stretch written to a column is some cache
// lines long.
constexpr int kBandRows = 64;

class BlockReader {
public:
    BlockReader(std::span<const std::byte> block, bool bigEndian)
        : block_(block), bigEndian_(bigEndian) {}

    std::optional<std::uint32_t> number(std::size_t offset, int bytes) const {
        if (offset > block_.size() || block_.size() - offset < std::size_t(bytes))
            return std::nullopt;
        std::uint32_t value = 0;
        for (int i = 0; i < bytes; ++i) {
            const int from = bigEndian_ ? i : bytes - 1 - i;
            value = value << 8 | std::to_integer<std::uint32_t>(block_[offset + std::size_t(from)]);
        }
        return value;
    }

private:
    std::span<const std::byte> block_;
    bool bigEndian_;
};

bool swapsSides(int orientation) {
    return orientation >= 5;
}

// The upright position of stored pixel (0, y) and the step from one stored pixel of a row to the
// next.
struct RowPath {
    int x, y, dx, dy;
};

RowPath pathOfRow(PixelSize stored, int orientation, int y) {
    const int right = stored.width - 1, bottom = stored.height - 1;
    switch (orientation) {
    case 2:
        return {right, y, -1, 0};
    case 3:
        return {right, bottom - y, -1, 0};
    case 4:
        return {0, bottom - y, 1, 0};
    case 5:
        return {y, 0, 0, 1};
    case 6:
        return {bottom - y, 0, 0, 1};
    case 7:
        return {bottom - y, right, 0, -1};
    case 8:
        return {y, right, 0, -1};
    default:
        return {0, y, 1, 0};
    }
}

template<std::size_t Bytes>
void placeAlongRow(const std::byte* from, std::byte* to, int count, bool backwards) {
    for (int x = 0; x < count; ++x)
        std::memcpy(to + Bytes * std::size_t(backwards ? count - 1 - x : x),
                    from + Bytes * std::size_t(x), Bytes);
}

// `rows` stored rows from `firstRow` on become columns. The inner loop runs down the band, because
// that writes neighbouring pixels of one upright row.
template<std::size_t Bytes>
void placeColumns(const std::byte* band, std::size_t bandStride, int firstRow, int rows,
                  PixelSize stored, int orientation, Bitmap& upright) {
    const RowPath first = pathOfRow(stored, orientation, firstRow);
    const bool leftwards = orientation == 6 || orientation == 7;
    for (int x = 0; x < stored.width; ++x) {
        std::byte* to =
            upright.row<std::byte>(first.y + first.dy * x) + Bytes * std::size_t(first.x);
        const std::byte* from = band + Bytes * std::size_t(x);
        for (int i = 0; i < rows; ++i) {
            std::memcpy(to, from, Bytes);
            from += bandStride;
            to = leftwards ? to - Bytes : to + Bytes;
        }
    }
}

// Calls `use` with the pixel size as a constant.
template<class Use>
void withPixelBytes(std::size_t bytes, Use use) {
    switch (bytes) {
    case 3:
        return use(std::integral_constant<std::size_t, 3>{});
    case 4:
        return use(std::integral_constant<std::size_t, 4>{});
    case 6:
        return use(std::integral_constant<std::size_t, 6>{});
    case 8:
        return use(std::integral_constant<std::size_t, 8>{});
    case 12:
        return use(std::integral_constant<std::size_t, 12>{});
    case 16:
        return use(std::integral_constant<std::size_t, 16>{});
    default:
        KELVARO_REQUIRE(bytes == 0); // pixels have 3 or 4 samples of 1, 2 or 4 bytes
    }
}

} // namespace

int exifOrientation(std::span<const std::byte> block) {
    if (block.size() < 8) return 1;
    const char mark = std::to_integer<char>(block[0]);
    if ((mark != 'I' && mark != 'M') || block[0] != block[1]) return 1;
    const BlockReader reader(block, mark == 'M');
    if (reader.number(2, 2) != 42u) return 1;
    const auto directory = reader.number(4, 4);
    const auto entries = directory ? reader.number(*directory, 2) : std::nullopt;
    if (!entries) return 1;
    for (std::uint32_t i = 0; i < *entries; ++i) {
        const std::size_t entry = std::size_t(*directory) + 2 + 12 * std::size_t(i);
        const auto tag = reader.number(entry, 2), type = reader.number(entry + 2, 2);
        if (!tag || !type) return 1;
        if (*tag != 274) continue;
        // A SHORT, as the standard has it; some writers use LONG or BYTE.
        const int bytes = *type == 3 ? 2 : *type == 4 ? 4 : *type == 1 ? 1 : 0;
        const auto value = bytes ? reader.number(entry + 8, bytes) : std::nullopt;
        return value && *value >= 1 && *value <= 8 ? int(*value) : 1;
    }
    return 1;
}

PixelSize uprightSize(PixelSize stored, int orientation) {
    return swapsSides(orientation) ? PixelSize{stored.height, stored.width} : stored;
}

UprightBitmap::UprightBitmap(PixelSize stored, int orientation, int channels, SampleType type)
    : stored_(stored),
      orientation_(orientation),
      bitmap_(uprightSize(stored, orientation), channels, type) {
    KELVARO_REQUIRE(orientation >= 1 && orientation <= 8);
    const std::size_t rowBytes =
        std::size_t(stored.width) * std::size_t(channels) * sampleBytes(type);
    if (orientation != 1 && orientation != 4)
        band_.resize(rowBytes *
                     std::size_t(swapsSides(orientation) ? std::min(kBandRows, stored.height) : 1));
}

std::byte* UprightBitmap::row() {
    KELVARO_REQUIRE(nextRow_ < stored_.height);
    if (band_.empty()) return bitmap_.row<std::byte>(pathOfRow(stored_, orientation_, nextRow_).y);
    const std::size_t rowBytes =
        bitmap_.rowBytes() / std::size_t(bitmap_.size.width) * std::size_t(stored_.width);
    return band_.data() + rowBytes * std::size_t(bandRows_);
}

void UprightBitmap::rowDone() {
    ++nextRow_;
    if (band_.empty()) return;
    ++bandRows_;
    const bool full = !swapsSides(orientation_) || bandRows_ == kBandRows;
    if (full || nextRow_ == stored_.height) flush();
}

void UprightBitmap::flush() {
    const std::size_t pixelBytes = std::size_t(bitmap_.channels) * sampleBytes(bitmap_.type);
    const std::size_t stride = pixelBytes * std::size_t(stored_.width);
    const int firstRow = nextRow_ - bandRows_;
    withPixelBytes(pixelBytes, [&](auto bytes) {
        if (swapsSides(orientation_)) {
            placeColumns<bytes()>(band_.data(), stride, firstRow, bandRows_, stored_, orientation_,
                                  bitmap_);
        } else {
            const RowPath path = pathOfRow(stored_, orientation_, firstRow);
            placeAlongRow<bytes()>(band_.data(), bitmap_.row<std::byte>(path.y), stored_.width,
                                   path.dx < 0);
        }
    });
    bandRows_ = 0;
}

Bitmap UprightBitmap::take() {
    KELVARO_REQUIRE(nextRow_ == stored_.height);
    return std::move(bitmap_);
}

Bitmap upright(Bitmap stored, int orientation) {
    if (orientation == 1) return stored;
    UprightBitmap turned(stored.size, orientation, stored.channels, stored.type);
    for (int y = 0; y < stored.size.height; ++y) {
        std::memcpy(turned.row(), stored.row<std::byte>(y), stored.rowBytes());
        turned.rowDone();
    }
    return turned.take();
}

} // namespace kelvaro
