#include "recipe/Adjustments.h"

#include "recipe/AdjustmentCatalogue.h"
#include "recipe/Hashing.h"

namespace kelvaro {

bool isEdited(const Adjustments& adjustments) {
    const auto differs = [&](const AdjustmentSpec& spec) { return spec.value(adjustments) != 0; };
    const auto stored = storedKeyCatalogue();
    return !adjustments.masks.empty() || std::any_of(stored.begin(), stored.end(), differs);
}

RawParams::RawParams(const Adjustments& a)
    : contrast(a.contrast),
      white(a.white),
      black(a.black),
      dehaze(a.dehaze),
      shadows(a.shadows),
      highlights(a.highlights),
      exposure(a.exposure),
      temperature(a.temperature),
      tint(a.tint),
      sharpness(a.sharpness) {}

} // namespace kelvaro

std::size_t
std::hash<kelvaro::Adjustments>::operator()(const kelvaro::Adjustments& adjustments) const {
    using namespace kelvaro;
    std::size_t seed = foldValue(0, adjustments.processVersion);
    for (const AdjustmentSpec& spec : storedKeyCatalogue()) {
        seed = foldValue(seed, spec.value(adjustments));
    }
    for (const LocalMask& mask : adjustments.masks)
        seed = foldHash(seed, hashOf(mask));
    return seed;
}
