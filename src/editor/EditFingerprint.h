// A short number that stands for a recipe's stored form, to tell on the next start whether a
// sidecar holds what this program wrote. The same in every run of it.
#pragma once

#include "recipe/Adjustments.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace kelvaro {

// Made of the length and checksums of what is stored; equal recipes have equal fingerprints.
std::uint64_t editFingerprint(const Adjustments& edit);

std::uint32_t crc32Of(std::string_view bytes);

} // namespace kelvaro
