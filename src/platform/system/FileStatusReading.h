// The status of a file as the system tells it, turned into ours.
#pragma once

#include "platform/FileSystem.h"

#include <optional>
#include <sys/stat.h>

namespace kelvaro {

// Of `name` in the open folder `folder` (AT_FDCWD for a path), following links unless the flags, as
// statx takes them, say otherwise; none with errno set.
std::optional<FileStatus> readStatus(int folder, const char* name, int flags = 0);

FileStatus::Kind kindOfMode(mode_t mode);

} // namespace kelvaro
