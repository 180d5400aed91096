#include "platform/raw/UprightWriter.h"

#include <algorithm>

namespace kelvaro {

namespace {

// Orientation names which stored row and column become the top row and left column of the picture.
bool transposes(int orientation) {
    return orientation >= 5;
}
bool mirrorsRows(int orientation) {
    return orientation == 3 || orientation == 4 || orientation == 7 || orientation == 8;
}
bool mirrorsColumns(int orientation) {
    return orientation == 2 || orientation == 3 || orientation == 6 || orientation == 7;
}

} // namespace

PixelRect uprightRect(const SensorRect& stored, PixelSize upright, int orientation) {
    SensorRect r = stored; // from the upper-left corner
    if (transposes(orientation)) r = {stored.top, stored.left, stored.height, stored.width};
    if (mirrorsColumns(orientation)) r.left = upright.width - r.right();
    if (mirrorsRows(orientation)) r.top = upright.height - r.bottom();
    return {r.left, upright.height - r.bottom(), r.width, r.height};
}

UprightWriter::UprightWriter(const TileView& target, PixelSize whole, int orientation)
    : target_(target),
      whole_(whole),
      left_(target.rect.x),
      top_(whole.height - (target.rect.y + target.rect.height)),
      isTransposed_(transposes(orientation)),
      mirrorsRows_(mirrorsRows(orientation)),
      mirrorsColumns_(mirrorsColumns(orientation)) {}

float* UprightWriter::place(const SensorRect& tile, int plane) const {
    if (isTransposed_ || mirrorsRows_ || mirrorsColumns_) return nullptr;
    return target_.row(plane, tile.top - top_) + (tile.left - left_);
}

void UprightWriter::write(const SensorRect& tile, const float* const (&planes)[3],
                          std::ptrdiff_t stride) const {
    const int width = whole_.width, height = whole_.height;
    for (int plane = 0; plane < 3; ++plane) {
        if (!isTransposed_) {
            for (int row = 0; row < tile.height; ++row) {
                const float* in = planes[plane] + row * stride;
                const int y = mirrorsRows_ ? height - 1 - (tile.top + row) : tile.top + row;
                float* out = target_.row(plane, y - top_) - left_;
                if (mirrorsColumns_) {
                    std::reverse_copy(in, in + tile.width, out + width - tile.right());
                } else {
                    std::copy_n(in, tile.width, out + tile.left);
                }
            }
            continue;
        }
        for (int column = 0; column < tile.width; ++column) {
            const int y = mirrorsRows_ ? height - 1 - (tile.left + column) : tile.left + column;
            float* out = target_.row(plane, y - top_) - left_;
            const float* in = planes[plane] + column;
            for (int row = 0; row < tile.height; ++row) {
                const int x = mirrorsColumns_ ? width - 1 - (tile.top + row) : tile.top + row;
                out[x] = in[row * stride];
            }
        }
    }
}

} // namespace kelvaro
