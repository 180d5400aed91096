#include "platform/system/FileStatusReading.h"

#include <algorithm>
#include <fcntl.h>
#include <limits>

namespace kelvaro {
namespace {

// Damaged disks report years that nanoseconds cannot count: those become the nearest end.
FileTime timeOf(const struct statx_timestamp& time) {
    constexpr std::int64_t perSecond = 1'000'000'000;
    constexpr auto limits = std::numeric_limits<std::int64_t>();
    const std::int64_t seconds = time.tv_sec;
    if (seconds >= limits.max() / perSecond) return {limits.max()};
    if (seconds <= limits.min() / perSecond) return {limits.min()};
    return {seconds * perSecond + time.tv_nsec};
}

} // namespace

FileStatus::Kind kindOfMode(mode_t mode) {
    if (S_ISREG(mode)) return FileStatus::Kind::file;
    if (S_ISDIR(mode)) return FileStatus::Kind::folder;
    return FileStatus::Kind::other;
}

std::optional<FileStatus> readStatus(int folder, const char* name, int flags) {
    constexpr unsigned wanted =
        STATX_TYPE | STATX_SIZE | STATX_MTIME | STATX_CTIME | STATX_BTIME | STATX_INO;
    struct statx found {};
    if (::statx(folder, name, AT_NO_AUTOMOUNT | flags, wanted, &found) != 0) return std::nullopt;
    FileStatus status{kindOfMode(found.stx_mode), static_cast<std::int64_t>(found.stx_size),
                      timeOf(found.stx_mtime)};
    const std::int64_t changed = timeOf(found.stx_ctime).nanoseconds;
    status.created = (found.stx_mask & STATX_BTIME)
                         ? timeOf(found.stx_btime)
                         : FileTime{std::min(status.modified.nanoseconds, changed)};
    status.identity = found.stx_ino;
    return status;
}

} // namespace kelvaro
