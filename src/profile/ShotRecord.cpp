#include "profile/ShotRecord.h"

#include <cmath>

namespace kelvaro {
namespace {

constexpr double longestFocal = 10'000;   // mm
constexpr double largestAperture = 1000;  // f-number
constexpr double longestShutter = 86'400; // seconds; nobody exposes for more than a day

std::optional<double> sane(const std::optional<double>& value, double largest) {
    return value && *value > 0 && *value <= largest ? value : std::nullopt;
}

std::optional<std::string> named(const std::optional<std::string>& name) {
    const bool isBlank = !name || name->find_first_not_of(" \t\r\n") == std::string::npos;
    return isBlank ? std::nullopt : name;
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
