#include "export/Verification.h"

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
// which even low qualities hold to a few steps; subsampled colour that leaves the gamut and is
// clipped moves them further. At 85 real photos stay below 2.
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

BlockSums sums(const Bitmap& pixels, int x, int y, int width, int height) {
    BlockSums sums;
    for (int row = y; row < y + height; ++row) {
        std::array<std::uint32_t, 3> sum{}, squares{};
        const auto* from = pixels.row<std::uint8_t>(row) + 3 * x;
        for (int i = 0; i < width; ++i, from += 3)
            for (std::size_t c = 0; c < 3; ++c) {
                sum[c] += from[c];
                squares[c] += std::uint32_t(from[c]) * from[c];
            }
        for (std::size_t c = 0; c < 3; ++c) {
            sums[c].sum += sum[c];
            sums[c].squares += squares[c];
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

std::optional<std::string> differingBlock(const Bitmap& rendered, const Bitmap& read,
                                          double limit) {
    const auto [width, height] = rendered.size;
    for (int y = 0; y < height; y += kBlock)
        for (int x = 0; x < width; x += kBlock) {
            const int w = std::min(kBlock, width - x), h = std::min(kBlock, height - y);
            if (!isNear(sums(rendered, x, y, w, h), sums(read, x, y, w, h), w * h, limit))
                return "The pixels about " + std::to_string(x) + ", " + std::to_string(y) +
                       " are not those that were rendered.";
        }
    return std::nullopt;
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
