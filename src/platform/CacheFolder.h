// Keeping a folder of cached files small. Blocking; any thread, several programs at once.
#pragma once

#include "platform/FileSystem.h"

#include <cstdint>
#include <string_view>

namespace kelvaro {

// Among the files whose names end in `ending` (".jpg", say), removes those that were written
// longest ago, until at most `limitBytes` are left; and temporary files of such that died
// unfinished more than a day before the newest was written. Failures leave files where they are.
// Returns the bytes that are left.
std::int64_t trimCacheFolder(FileSystem& files, const std::filesystem::path& folder,
                             std::string_view ending, std::int64_t limitBytes);

} // namespace kelvaro
