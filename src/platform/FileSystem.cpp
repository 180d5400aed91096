#include "platform/FileSystem.h"

namespace kelvaro {

Result<void> writeAtomically(FileSystem& files, const std::filesystem::path& target,
                             std::span<const std::byte> bytes) {
    auto pending = files.create(target);
    if (!pending) return fail(std::move(pending).error());
    if (auto written = (*pending)->writeAt(0, bytes); !written) return written;
    return (*pending)->commit();
}

} // namespace kelvaro
