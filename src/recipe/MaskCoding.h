// The stored form of one mask, a JSON object.
#pragma once

#include "recipe/StoredFields.h"

namespace kelvaro {

// Failures are noted in the fields; the mask is then worth nothing.
LocalMask decodeMask(const StoredFields& fields, RandomSource& random);

// All numbers finite and the components sanitised, see `isFinite`.
json::Object encodeMask(const LocalMask& mask);

// Whether the numbers that reading refuses when they are not finite are: amount and controls.
bool isFinite(const LocalMask& mask);

} // namespace kelvaro
