// The file system of a POSIX machine. Holds no state; every call may run on any thread. Files are
// replaced by writing a hidden temporary beside them, flushing it and moving it into place.
#pragma once

#include "platform/FileSystem.h"

namespace kelvaro {

class PosixFileSystem final : public FileSystem {
public:
    // Devices, pipes and sockets are Kind::other.
    Result<FileStatus> status(const std::filesystem::path& path) override;
    // Kinds are those that symbolic links lead to; a link that leads nowhere is Kind::other.
    Result<std::vector<FolderEntry>> list(const std::filesystem::path& folder) override;
    Result<std::vector<ListedFile>>
    listWithStatus(const std::filesystem::path& folder,
                   const std::function<bool(std::string_view name)>& wanted) override;
    Result<std::filesystem::path> resolved(const std::filesystem::path& path) override;
    Result<std::unique_ptr<FolderLock>> lockFolder(const std::filesystem::path& folder,
                                                   double patienceSeconds) override;
    // Refuses everything but regular files, and never waits for a pipe or a device.
    Result<std::vector<std::byte>> read(const std::filesystem::path& path,
                                        std::int64_t limit) override;
    Result<void> createFolder(const std::filesystem::path& folder) override;
    // An existing target hands its permissions on; a symbolic link is replaced, not followed.
    Result<std::unique_ptr<PendingFile>> create(const std::filesystem::path& target) override;
    Result<std::unique_ptr<PendingFile>> createWith(const std::filesystem::path& target,
                                                    const PendingOptions& options) override;
    Result<bool> removeAbandoned(const std::filesystem::path& temporary, FileTime before) override;
    Result<FileStatus> linkStatus(const std::filesystem::path& path) override;
    Result<void> remove(const std::filesystem::path& path) override;
};

} // namespace kelvaro
