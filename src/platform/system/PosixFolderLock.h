// An advisory lock on a folder, held by its open descriptor: a process that dies lets go of it, and
// nothing is left in the folder.
#pragma once

#include "platform/FileSystem.h"

namespace kelvaro {

Result<std::unique_ptr<FolderLock>> lockFolderPosix(const std::filesystem::path& folder,
                                                    double patienceSeconds);

} // namespace kelvaro
