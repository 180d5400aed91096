#include "platform/raw/EmbeddedJpeg.h"

#include "platform/raw/TiffTags.h"

#include <array>
#include <cstring>

namespace kelvaro {

namespace {

using namespace tiff;

std::optional<JpegPlace> placeNamedBy(const TiffDirectory& directory, std::uint16_t offsetTag,
                                      std::uint16_t lengthTag) {
    const auto offsets = directory.numbers(offsetTag, 2), lengths = directory.numbers(lengthTag, 2);
    if (offsets.size() != 1 || lengths.size() != 1 || !(offsets[0] > 0) || !(lengths[0] > 0)) {
        return std::nullopt;
    }
    JpegPlace place;
    place.offset = std::uint64_t(offsets[0]);
    place.bytes = std::uint64_t(lengths[0]);
    const auto space = directory.number(previewColorSpace);
    if (space == 2.0) place.colour = PreviewColour::sRgb;
    if (space == 3.0) place.colour = PreviewColour::adobeRgb;
    if (space == 4.0) place.colour = PreviewColour::proPhotoRgb;
    return place;
}

// An APP1 or APP2 segment whose content begins at `offset`.
void readSegment(const ReadAt& read, unsigned marker, std::uint64_t offset, std::uint64_t bytes,
                 JpegPlace& place) {
    constexpr char kExif[6] = {'E', 'x', 'i', 'f', 0, 0};
    std::array<std::byte, 12> start{};
    if (bytes < start.size() || read(offset, start) != start.size()) return;
    if (marker == 0xe2 && std::memcmp(start.data(), "ICC_PROFILE", 12) == 0) {
        place.hasProfile = true;
    }
    if (marker != 0xe1 || std::memcmp(start.data(), kExif, sizeof kExif) != 0) return;
    const std::uint64_t begin = offset + sizeof kExif, end = offset + bytes;
    const TiffFile exif([&](std::uint64_t at, std::span<std::byte> out) {
        const std::uint64_t left = at < end - begin ? end - begin - at : 0;
        return read(begin + at, out.first(std::min<std::uint64_t>(out.size(), left)));
    });
    if (exif.directories().empty()) return;
    const auto turn = exif.directories().front().number(orientation);
    if (turn && *turn >= 1 && *turn <= 8) place.orientation = int(*turn);
    if (const auto colour = statedColour(exif)) place.colour = colour;
}

} // namespace

std::optional<JpegPlace> jpegAt(const ReadAt& read, const JpegPlace& named,
                                std::uint64_t fileBytes) {
    if (named.offset >= fileBytes) return std::nullopt;
    JpegPlace place = named;
    place.bytes = std::min(named.bytes, fileBytes - named.offset);
    const std::uint64_t end = place.offset + place.bytes;
    std::array<std::byte, 10> head{};
    const auto at = [&](std::size_t i) { return std::to_integer<unsigned>(head[i]); };
    std::uint64_t position = place.offset + 2; // some cameras spoil the first two bytes
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
            place.size = {int(width), int(height)};
            return place;
        }
        if (marker >= 0xc3 && marker <= 0xcf && marker != 0xc4 && marker != 0xc8 &&
            marker != 0xcc) {
            return std::nullopt;
        }
        readSegment(read, marker, position + 4, length - 2, place);
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
            JpegPlace place;
            place.offset = entry->offset;
            place.bytes = entry->count;
            places.push_back(place);
        }
    }
    return places;
}

std::optional<PreviewColour> statedColour(const TiffFile& file) {
    std::optional<PreviewColour> stated;
    for (const TiffDirectory& directory : file.directories()) {
        if (directory.text(interoperabilityIndex) == "R03") return PreviewColour::adobeRgb;
        const auto space = directory.number(colorSpace);
        if (space == 1.0) stated = PreviewColour::sRgb;
        if (space == 2.0) stated = PreviewColour::adobeRgb; // not in the standard, but in cameras
    }
    return stated;
}

const JpegPlace* chosenJpeg(const std::vector<JpegPlace>& places, int atLeastPx) {
    const JpegPlace* best = nullptr;
    for (const JpegPlace& place : places) {
        if (!best) {
            best = &place;
            continue;
        }
        const int side = place.longerSide(), bestSide = best->longerSide();
        const bool isEnough = bestSide >= atLeastPx;
        if (isEnough ? side >= atLeastPx && side < bestSide : side > bestSide) best = &place;
    }
    return best;
}

} // namespace kelvaro
