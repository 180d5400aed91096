// The hidden temporary files of exports, and how those go that an export left when it was killed.
// Blocking; any thread.
#pragma once

#include "platform/FileSystem.h"
#include "platform/Random.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace kelvaro {

// ".kelvaro-export-", a new UUID, ".", the extension.
std::string temporaryExportName(RandomSource& random, std::string_view extension);
bool isTemporaryExportName(std::string_view name);

// Removes from a folder what no process writes any more; on disks that cannot tell, what nobody has
// written to for some minutes. Returns how many went; a folder that cannot be listed has none.
std::size_t removeLeftovers(FileSystem& files, const std::filesystem::path& folder,
                            double wallSeconds);

} // namespace kelvaro
