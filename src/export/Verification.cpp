#include "export/Verification.h"

#include "base/Bands.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace kelvaro {

namespace {

constexpr int kBlock = 32; // pixels; two macro blocks of either codec

const char* profileName(OutputSpace space) {
    switch (space) {
    case OutputSpace::displayP3:
        return "Display P3";
    case OutputSpace::linearRec709:
        return "Linear Rec. 709";
    case OutputSpace::sRGB:
        break;
    }
    return "sRGB";
}

// Largest difference of a block's mean, in 8-bit steps. Means come from the coarsest coefficients,
// which even low qualities hold to a few steps. At 85 real photos stay below 2, but for fine
// saturated detail, whose subsampled colour is clipped; such blocks are compared with what that
// does to them.
double largestShift(double quality) {
    return 6 + 14 * std::clamp(1 - quality, 0.0, 1.0);
}

bool isEqual(const Bitmap& a, const Bitmap& b) {
    return std::memcmp(a.samples.get(), b.samples.get(), a.bytes()) == 0;
}

struct BlockSum {
    double sum = 0, squares = 0;
    double mean(int count) const { return sum / count; }
    double deviation(int count) const {
        return std::sqrt(std::max(0.0, squares / count - mean(count) * mean(count)));
    }
};
using BlockSums = std::array<BlockSum, 3>;

// Columns are summed first, side by side as they lie in memory.
BlockSums sums(const Bitmap& pixels, const PixelRect& block) {
    std::array<std::uint32_t, 3 * kBlock> sum{}, squares{};
    const auto columns = std::size_t(3 * block.width);
    for (int row = block.y; row < block.y + block.height; ++row) {
        const auto* from = pixels.row<std::uint8_t>(row) + 3 * block.x;
        for (std::size_t i = 0; i < columns; ++i) {
            const std::uint32_t value = from[i];
            sum[i] += value;
            squares[i] += value * value;
        }
    }
    BlockSums sums;
    for (std::size_t i = 0; i < columns; ++i) {
        sums[i % 3].sum += sum[i];
        sums[i % 3].squares += squares[i];
    }
    return sums;
}

// ITU-T T.871, which HEIF pictures use too.
std::array<double, 3> toLuma(const std::uint8_t* rgb) {
    const double r = rgb[0], g = rgb[1], b = rgb[2], y = 0.299 * r + 0.587 * g + 0.114 * b;
    return {y, (b - y) / 1.772, (r - y) / 1.402};
}

// The colour that a quad of four pixels shares.
std::array<double, 2> sharedColour(const Bitmap& pixels, int x, int y) {
    std::array<double, 2> sum{};
    int count = 0;
    for (int row = y; row < std::min(y + 2, pixels.size.height); ++row)
        for (int column = x; column < std::min(x + 2, pixels.size.width); ++column, ++count) {
            const auto luma = toLuma(pixels.row<std::uint8_t>(row) + 3 * column);
            sum[0] += luma[1];
            sum[1] += luma[2];
        }
    return {sum[0] / count, sum[1] / count};
}

// Of what a codec that subsamples colour makes of the block at best: with the colour of one pixel
// and the brightness of its neighbour a pixel may leave the gamut, and is clipped.
BlockSums subsampledSums(const Bitmap& pixels, const PixelRect& block) {
    BlockSums sums;
    for (int row = block.y; row < block.y + block.height; ++row)
        for (int column = block.x; column < block.x + block.width; ++column) {
            const double y = toLuma(pixels.row<std::uint8_t>(row) + 3 * column)[0];
            const auto [cb, cr] = sharedColour(pixels, column & ~1, row & ~1);
            const std::array rgb{y + 1.402 * cr,
                                 y - (0.299 * 1.402 * cr + 0.114 * 1.772 * cb) / 0.587,
                                 y + 1.772 * cb};
            for (std::size_t c = 0; c < 3; ++c) {
                const double value = std::clamp(rgb[c], 0.0, 255.0);
                sums[c].sum += value;
                sums[c].squares += value * value;
            }
        }
    return sums;
}

// A block that lost its content is flat where the rendered one has strong detail in every channel.
bool isNear(const BlockSums& rendered, const BlockSums& read, int count, double limit) {
    constexpr double strongDetail = 24, flat = 1;
    bool lostAll = true;
    for (std::size_t c = 0; c < 3; ++c) {
        if (std::abs(rendered[c].mean(count) - read[c].mean(count)) > limit) return false;
        lostAll = lostAll && rendered[c].deviation(count) > strongDetail &&
                  read[c].deviation(count) < flat;
    }
    return !lostAll;
}

// In rows firstRow … firstRow + h − 1.
std::optional<PixelRect> differingBlock(const Bitmap& rendered, const Bitmap& read, int firstRow,
                                        int w, int h, double allowed) {
    const int width = rendered.size.width;
    for (int column = 0; column < width; column += kBlock) {
        // The last blocks overlap those before them.
        const PixelRect block{std::min(column, width - w), firstRow, w, h};
        const BlockSums found = sums(read, block);
        const bool isRight = isNear(sums(rendered, block), found, w * h, allowed) ||
                             isNear(subsampledSums(rendered, block), found, w * h, allowed);
        if (!isRight) return block;
    }
    return std::nullopt;
}

std::optional<std::string> differingBlock(const Bitmap& rendered, const Bitmap& read,
                                          double limit) {
    const auto [width, height] = rendered.size;
    const int w = std::min(kBlock, width), h = std::min(kBlock, height);
    // The fewer pixels, the less their errors even out.
    const double allowed = limit * kBlock / std::sqrt(double(w) * h);
    // A task is worth its thread from a few rows of blocks on.
    constexpr int kRowsPerTask = 8;
    const int rows = (height + kBlock - 1) / kBlock;
    std::optional<PixelRect> wrong;
    const auto look = [&, height = height](int task) {
        std::optional<PixelRect> found;
        const int end = std::min(rows, (task + 1) * kRowsPerTask);
        for (int row = task * kRowsPerTask; row < end && !found; ++row)
            found =
                differingBlock(rendered, read, std::min(row * kBlock, height - h), w, h, allowed);
        return found;
    };
    (void)takeInOrder((rows + kRowsPerTask - 1) / kRowsPerTask, look,
                      [&](std::optional<PixelRect> found) -> Result<void> {
                          if (!wrong) wrong = found;
                          return {};
                      })
        .has_value();
    if (!wrong) return std::nullopt;
    return "The pixels about " + std::to_string(wrong->x) + ", " + std::to_string(wrong->y) +
           " are not those that were rendered.";
}

} // namespace

std::optional<std::string> mismatch(const Bitmap& rendered, const EncodeSettings& settings,
                                    const DecodedBitmap& read) {
    if (read.pixels.size != rendered.size) return "The size is not that of the rendered picture.";
    if (read.profileName != profileName(settings.space))
        return "The colour profile is \"" + read.profileName + "\".";
    if (read.pixels.type != rendered.type || read.pixels.channels != rendered.channels)
        return "The depth or the channels are not those of the rendered picture.";
    const bool isLossy = settings.format == FileFormat::jpeg || settings.format == FileFormat::heic;
    if (isLossy) return differingBlock(rendered, read.pixels, largestShift(settings.quality));
    if (!isEqual(rendered, read.pixels)) return "The pixels are not those that were rendered.";
    return std::nullopt;
}

} // namespace kelvaro
