#include "platform/FileSystem.h"

#include <limits>

namespace kelvaro {

FileTime timeFromSeconds(double seconds) {
    constexpr auto limits = std::numeric_limits<std::int64_t>();
    const double nanoseconds = seconds * 1e9;
    if (!(nanoseconds > -9.2e18)) return {nanoseconds <= -9.2e18 ? limits.min() : 0};
    if (nanoseconds > 9.2e18) return {limits.max()};
    return {static_cast<std::int64_t>(nanoseconds)};
}

Result<void> writeAtomically(FileSystem& files, const std::filesystem::path& target,
                             std::span<const std::byte> bytes) {
    auto pending = files.create(target);
    if (!pending) return fail(std::move(pending).error());
    if (auto written = (*pending)->writeAt(0, bytes); !written) return written;
    return (*pending)->commit();
}

} // namespace kelvaro
