// The stored form of a recipe: one JSON object. Pure functions between bytes and records; the same
// form serves sidecars, recipe files of the command line and the pasteboard.
#pragma once

#include "base/Result.h"
#include "recipe/Adjustments.h"
#include "recipe/Json.h"

#include <string>
#include <string_view>

namespace kelvaro {

// Why a document is no edit of ours, and the key that it lies in (empty where it is none of them).
struct DecodeFailure : Failure {
    std::string key;

    bool operator==(const DecodeFailure&) const = default;
};

// Reads a record. Absent and null keys take their defaults, unknown ones are passed over, values
// are clamped into their ranges, shapes are sanitised. `random` makes identifiers where they are
// bad. Fails with `newerVersion` for a later format, otherwise with `malformed` (`tooLarge`,
// `outOfMemory`).
Result<Adjustments, DecodeFailure> decodeAdjustments(std::string_view text, RandomSource& random);
Result<Adjustments, DecodeFailure> decodeAdjustments(const json::Value& document,
                                                     RandomSource& random);

// The version that a document of ours states; 1 where it states none.
std::int64_t storedVersion(const json::Object& document);

// Writes a record: the version, all catalogue values, and the masks if there are any. Fails with
// `malformed` when a value is not finite.
Result<json::Object> encodeAdjustments(const Adjustments& adjustments);
// The same as text, pretty-printed with sorted keys.
Result<std::string> encodedText(const Adjustments& adjustments);

// Adds to `encoded` what only `existing` has: keys that another program or a later version put into
// the object, into its masks and into their components. Those are matched by their identifiers.
void keepUnknownKeys(json::Object& encoded, const json::Object& existing);

} // namespace kelvaro
