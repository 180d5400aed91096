// The status of a file as the system tells it, turned into ours.
#pragma once

#include "platform/FileSystem.h"

#include <optional>
#include <sys/stat.h>

namespace kelvaro {

// Of `name` in the open folder `folder` (AT_FDCWD for a path), following links; none with errno
// set.
std::optional<FileStatus> readStatus(int folder, const char* name);

FileStatus::Kind kindOfMode(mode_t mode);

} // namespace kelvaro
