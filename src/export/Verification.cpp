#include "export/Verification.h"

#include "base/Bands.h"
#include "export/RenderedStrips.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <optional>
#include <string>

namespace kelvaro {

namespace {

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

// The rows that a block's pixels share their colour with.
PixelRect rowsAbout(const PixelRect& block, PixelSize picture) {
    const int top = block.y & ~1;
    const int bottom = std::min(picture.height, (block.y + block.height + 1) & ~1);
    return {0, top, picture.width, bottom - top};
}

// The first block of a row of blocks that is not near what was rendered, of which `Rendered` tells
// the sums of a block and the pixels of some rows.
template<class Rendered>
Result<std::optional<PixelRect>> differingBlock(const Rendered& rendered, const Bitmap& read,
                                                int row, double allowed) {
    const BlockGrid grid(read.size);
    const PixelRect left = grid.block(0, row);
    const auto sums = rowSumsOf(read, grid, left.y, left.height);
    std::optional<Bitmap> rows;
    for (int column = 0; column < grid.columns(); ++column) {
        const PixelRect block = grid.block(column, row);
        const BlockSums& found = sums[std::size_t(column)];
        const int count = block.width * block.height;
        if (isNear(rendered.sums(column, row), found, count, allowed)) continue;
        const PixelRect about = rowsAbout(block, read.size);
        if (!rows) {
            auto made = rendered.rows(about.y, about.height);
            if (!made) return fail(std::move(made).error());
            rows = std::move(*made);
        }
        const PixelRect inRows{block.x, block.y - about.y, block.width, block.height};
        if (!isNear(subsampledSums(*rows, inRows), found, count, allowed))
            return std::optional(block);
    }
    return std::optional<PixelRect>();
}

template<class Rendered>
Result<void> compareBlocks(const Rendered& rendered, const Bitmap& read, double limit) {
    const BlockGrid grid(read.size);
    const PixelRect first = grid.block(0, 0);
    // The fewer pixels, the less their errors even out.
    const double allowed = limit * BlockGrid::side / std::sqrt(double(first.width) * first.height);
    // A task is worth its thread from a few rows of blocks on.
    constexpr int kRowsPerTask = 8;
    const auto look = [&](int task) -> Result<std::optional<PixelRect>> {
        const int end = std::min(grid.rows(), (task + 1) * kRowsPerTask);
        for (int row = task * kRowsPerTask; row < end; ++row) {
            auto found = differingBlock(rendered, read, row, allowed);
            if (!found || *found) return found;
        }
        return std::optional<PixelRect>();
    };
    return takeInOrder((grid.rows() + kRowsPerTask - 1) / kRowsPerTask, look,
                       [&](Result<std::optional<PixelRect>> found) -> Result<void> {
                           if (!found) return fail(std::move(found).error());
                           if (!*found) return {};
                           return fail(FailureKind::malformed,
                                       "The pixels about " + std::to_string((*found)->x) + ", " +
                                           std::to_string((*found)->y) +
                                           " are not those that were rendered.");
                       });
}

struct WholePicture {
    const Bitmap& pixels;
    BlockSums sums(int column, int row) const {
        return sumsOf(pixels, BlockGrid(pixels.size).block(column, row));
    }
    Result<Bitmap> rows(int top, int count) const {
        Bitmap part({pixels.size.width, count}, pixels.channels, pixels.type);
        std::memcpy(part.samples.get(), pixels.row<std::byte>(top), part.bytes());
        return part;
    }
};

struct Strips {
    const RenderedStrips& strips;
    BlockSums sums(int column, int row) const { return strips.sums().at(column, row); }
    Result<Bitmap> rows(int top, int count) const { return strips.again(top, count); }
};

Result<void> checkShape(PixelSize size, SampleType type, int channels,
                        const EncodeSettings& settings, const DecodedBitmap& read) {
    const auto wrong = [](std::string sentence) {
        return fail(FailureKind::malformed, std::move(sentence));
    };
    if (read.pixels.size != size) return wrong("The size is not that of the rendered picture.");
    if (read.profileName != profileNameOf(settings.space))
        return wrong("The colour profile is \"" + read.profileName + "\".");
    if (read.pixels.type != type || read.pixels.channels != channels)
        return wrong("The depth or the channels are not those of the rendered picture.");
    return {};
}

} // namespace

Result<void> compare(const Bitmap& rendered, const EncodeSettings& settings,
                     const DecodedBitmap& read) {
    auto shape = checkShape(rendered.size, rendered.type, rendered.channels, settings, read);
    if (!shape) return shape;
    const bool isLossy = settings.format == FileFormat::jpeg || settings.format == FileFormat::heic;
    if (isLossy)
        return compareBlocks(WholePicture{rendered}, read.pixels, largestShift(settings.quality));
    if (!isEqual(rendered, read.pixels))
        return fail(FailureKind::malformed, "The pixels are not those that were rendered.");
    return {};
}

Result<void> compare(const RenderedStrips& rendered, const EncodeSettings& settings,
                     const DecodedBitmap& read) {
    auto shape = checkShape(rendered.size(), rendered.type(), rendered.channels(), settings, read);
    if (!shape) return shape;
    return compareBlocks(Strips{rendered}, read.pixels, largestShift(settings.quality));
}

} // namespace kelvaro
