#include "platform/raw/EmbeddedJpeg.h"

#include <algorithm>
#include <array>

namespace kelvaro {

namespace {

enum Tag : std::uint16_t {
    panasonicJpeg = 46, // the whole JPEG as the value of one tag
    compression = 259,
    stripOffsets = 273,
    stripByteCounts = 279,
    jpegInterchangeFormat = 513,
    jpegInterchangeFormatLength = 514,
};

std::optional<JpegPlace> placeNamedBy(const TiffDirectory& directory, std::uint16_t offsetTag,
                                      std::uint16_t lengthTag) {
    const auto offsets = directory.numbers(offsetTag, 2), lengths = directory.numbers(lengthTag, 2);
    if (offsets.size() != 1 || lengths.size() != 1 || !(offsets[0] > 0) || !(lengths[0] > 0)) {
        return std::nullopt;
    }
    return JpegPlace{std::uint64_t(offsets[0]), std::uint64_t(lengths[0]), 0};
}

} // namespace

std::optional<JpegPlace> jpegAt(const ReadAt& read, std::uint64_t offset, std::uint64_t bytes,
                                std::uint64_t fileBytes) {
    if (offset >= fileBytes) return std::nullopt;
    const std::uint64_t end = offset + std::min(bytes, fileBytes - offset);
    std::array<std::byte, 10> head{};
    const auto at = [&](std::size_t i) { return std::to_integer<unsigned>(head[i]); };
    std::uint64_t position = offset + 2; // some cameras spoil the first two bytes
    for (int segment = 0; segment < 200 && position + 4 < end; ++segment) {
        if (read(position, head) != head.size() || at(0) != 0xff) return std::nullopt;
        const unsigned marker = at(1), length = at(2) << 8 | at(3);
        if (marker == 0xff) { // fill byte
            ++position;
            continue;
        }
        if (marker == 0xda || marker == 0xd9 || length < 2) return std::nullopt;
        if (marker >= 0xc0 && marker <= 0xc2) {
            const unsigned height = at(5) << 8 | at(6), width = at(7) << 8 | at(8);
            if (at(4) > 8 || width == 0 || height == 0) return std::nullopt;
            return JpegPlace{offset, end - offset, std::int64_t(width) * height};
        }
        if (marker >= 0xc3 && marker <= 0xcf && marker != 0xc4 && marker != 0xc8 &&
            marker != 0xcc) {
            return std::nullopt;
        }
        position += 2 + length;
    }
    return std::nullopt;
}

std::vector<JpegPlace> jpegCandidates(const TiffFile& file) {
    std::vector<JpegPlace> places;
    const auto add = [&](std::optional<JpegPlace> place) {
        if (place) places.push_back(*place);
    };
    for (const TiffDirectory& directory : file.directories()) {
        add(placeNamedBy(directory, jpegInterchangeFormat, jpegInterchangeFormatLength));
        const double packing = directory.number(compression).value_or(0);
        if (packing == 6 || packing == 7)
            add(placeNamedBy(directory, stripOffsets, stripByteCounts));
        if (const TiffEntry* entry = directory.find(panasonicJpeg); entry && entry->count > 1024) {
            places.push_back({entry->offset, entry->count, 0});
        }
    }
    return places;
}

} // namespace kelvaro
