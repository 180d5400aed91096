#include "platform/raw/EmbeddedBitmap.h"

#include "platform/raw/TiffTags.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {

namespace {

using namespace tiff;

constexpr double kRgb = 2, kLongest = 4096;

struct Place {
    PixelSize size;
    std::uint64_t offset = 0;
    std::uint64_t bytes() const {
        return std::uint64_t(size.width) * std::uint64_t(size.height) * 3;
    }
};

std::optional<Place> placeIn(const TiffDirectory& directory, std::uint64_t fileBytes) {
    const auto is = [&](std::uint16_t tag, double value) { return directory.number(tag) == value; };
    if (!is(compression, 1) || !is(photometricInterpretation, kRgb) || !is(samplesPerPixel, 3) ||
        !is(bitsPerSample, 8) || directory.number(planarConfiguration).value_or(1) != 1)
        return std::nullopt;
    const double width = directory.number(imageWidth).value_or(0),
                 height = directory.number(imageLength).value_or(0);
    const auto offsets = directory.numbers(stripOffsets, 2);
    if (!(width >= 1 && width <= kLongest && height >= 1 && height <= kLongest)) return {};
    if (offsets.size() != 1 || !(offsets[0] > 0 && offsets[0] < double(fileBytes))) return {};
    const Place place{{int(width), int(height)}, std::uint64_t(offsets[0])};
    if (place.offset + place.bytes() > fileBytes) return std::nullopt;
    return place;
}

float lightOf(std::byte sample) {
    const double v = std::to_integer<int>(sample) / 255.0;
    return float(v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4));
}

} // namespace

std::optional<DecodedBitmap> embeddedBitmap(const TiffFile& file, const ReadAt& read,
                                            std::uint64_t fileBytes) {
    std::optional<Place> best;
    for (const TiffDirectory& directory : file.directories()) {
        const auto place = placeIn(directory, fileBytes);
        if (place && (!best || place->bytes() > best->bytes())) best = place;
    }
    if (!best) return std::nullopt;
    std::vector<std::byte> samples(best->bytes());
    if (read(best->offset, samples) != samples.size()) return std::nullopt;
    DecodedBitmap picture;
    picture.pixels = Bitmap(best->size, 3, SampleType::f32);
    const auto row = std::size_t(best->size.width) * 3;
    for (int y = 0; y < best->size.height; ++y) {
        const std::byte* from = samples.data() + std::size_t(y) * row;
        std::transform(from, from + row, picture.pixels.row<float>(y), lightOf);
    }
    return picture;
}

} // namespace kelvaro
