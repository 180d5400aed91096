#include "platform/raw/UprightWriter.h"

#include <algorithm>

namespace kelvaro {

// Orientation names which stored row and column become the top row and left column of the picture.
UprightWriter::UprightWriter(Raster& target, int orientation)
    : target_(target.view()),
      isTransposed_(orientation >= 5),
      mirrorsRows_(orientation == 3 || orientation == 4 || orientation == 7 || orientation == 8),
      mirrorsColumns_(orientation == 2 || orientation == 3 || orientation == 6 ||
                      orientation == 7) {}

void UprightWriter::write(const SensorRect& tile, const float* const (&planes)[3],
                          std::ptrdiff_t stride) const {
    const int width = target_.rect.width, height = target_.rect.height;
    for (int plane = 0; plane < 3; ++plane) {
        if (!isTransposed_) {
            for (int row = 0; row < tile.height; ++row) {
                const float* in = planes[plane] + row * stride;
                const int y = mirrorsRows_ ? height - 1 - (tile.top + row) : tile.top + row;
                float* out = target_.row(plane, y);
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
            float* out = target_.row(plane, y);
            const float* in = planes[plane] + column;
            for (int row = 0; row < tile.height; ++row) {
                const int x = mirrorsColumns_ ? width - 1 - (tile.top + row) : tile.top + row;
                out[x] = in[row * stride];
            }
        }
    }
}

} // namespace kelvaro
