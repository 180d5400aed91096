#include "profile/ShotRecord.h"

#include <cmath>

namespace kelvaro {
namespace {

constexpr double longestFocal = 10'000;   // mm
constexpr double largestAperture = 1000;  // f-number
constexpr std::size_t longestName = 80;   // bytes
constexpr double longestShutter = 86'400; // seconds; nobody exposes for more than a day

std::optional<double> sane(const std::optional<double>& value, double largest) {
    return value && *value > 0 && *value <= largest ? value : std::nullopt;
}

// Damaged files have names of any length: such a name is cut, where a character ends.
std::optional<std::string> named(const std::optional<std::string>& name) {
    const bool isBlank = !name || name->find_first_not_of(" \t\r\n") == std::string::npos;
    if (isBlank) return std::nullopt;
    if (name->size() <= longestName) return name;
    std::size_t end = longestName;
    while (end > 0 && (static_cast<unsigned char>((*name)[end]) & 0xC0) == 0x80)
        --end;
    return name->substr(0, end) + "…";
}

} // namespace

ShotRecord makeShotRecord(const Photo& photo, const PhotoMeta* meta, bool favorite) {
    ShotRecord record;
    record.isRaw = photo.isRaw;
    record.favorite = favorite;
    if (!meta) return record;
    record.taken = meta->takenOnWall;
    record.camera = named(meta->camera);
    record.lens = named(meta->lens);
    record.focal = sane(meta->focalLength, longestFocal);
    if (meta->iso && *meta->iso > 0) record.iso = meta->iso;
    record.aperture = sane(meta->aperture, largestAperture);
    record.shutter = sane(meta->shutter, longestShutter);
    return record;
}

} // namespace kelvaro
