// A photo's metadata as the bytes that are kept in the cache, and back. The layout is private to
// this pair of functions and told apart by the record's schema version.
#pragma once

#include "library/PhotoMeta.h"

#include <optional>
#include <string>
#include <string_view>

namespace kelvaro {

// Everything but the file's size and modification date, which the cache keeps beside the bytes.
std::string encodedMeta(const PhotoMeta& meta);

// None for bytes that are damaged or of another schema version. A capture time without an offset is
// read in the calendar's zone, so that a journey does not leave the cache wrong.
std::optional<PhotoMeta> decodedMeta(std::string_view bytes, std::int64_t size, FileTime modified,
                                     const LocalCalendar& calendar);

} // namespace kelvaro
