// What we ask of the file system. Every call may block and may run on any thread; messages name the
// path. Paths are byte strings as the system gives them, not necessarily UTF-8.
#pragma once

#include "base/Result.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvaro {

// Nanoseconds since 1970-01-01 00:00 UTC; negative before.
struct FileTime {
    std::int64_t nanoseconds = 0;
    double seconds() const { return static_cast<double>(nanoseconds) / 1e9; }
    bool operator==(const FileTime&) const = default;
};

// Seconds since 1970 as a time; what nanoseconds can't count becomes the nearest end, NaN 1970.
FileTime timeFromSeconds(double seconds);

struct FileStatus {
    enum class Kind { file, folder, other };
    Kind kind = Kind::file;
    std::int64_t size = 0; // bytes
    FileTime modified;
    FileTime created{};         // the birth time, else the earlier of modification and change
    std::uint64_t identity = 0; // the file's number on its disk; a replaced file has another
    bool operator==(const FileStatus&) const = default;
};

struct FolderEntry {
    std::string name;
    FileStatus::Kind kind = FileStatus::Kind::file;
};

struct ListedFile {
    std::string name;
    FileStatus status;
    bool operator==(const ListedFile&) const = default;
};

// Keeps other programs that ask for the same lock out, until it is destroyed.
class FolderLock {
public:
    virtual ~FolderLock() = default;
};

// A file that is being written under a hidden temporary name beside its target. Nothing is seen
// under the target's name before `commit`; without it the destructor removes the temporary file.
class PendingFile {
public:
    virtual ~PendingFile() = default;
    // Writes all bytes at `offset`, which may lie past the end (the gap reads as zeros).
    virtual Result<void> writeAt(std::int64_t offset, std::span<const std::byte> bytes) = 0;
    // Fills `bytes` with what was written at `offset`; returns how many bytes there were.
    virtual Result<std::size_t> readAt(std::int64_t offset, std::span<std::byte> bytes) = 0;
    virtual std::int64_t size() const = 0;
    // Flushes to the disk, moves into place over whatever is there, and flushes the folder.
    virtual Result<void> commit() = 0;
};

struct PendingOptions {
    // The temporary file's name; one made from the target's where it is empty.
    std::string temporaryName;
    // Fails with FailureKind::alreadyThere, in `commit` at the latest, where anything stands under
    // the target's name. Otherwise whatever is there is replaced.
    bool mustBeNew = false;
};

class FileSystem {
public:
    virtual ~FileSystem() = default;
    // Follows symbolic links. A missing file is FailureKind::notFound.
    virtual Result<FileStatus> status(const std::filesystem::path& path) = 0;
    // The names directly inside, in no particular order, without "." and "..".
    virtual Result<std::vector<FolderEntry>> list(const std::filesystem::path& folder) = 0;
    // The same with the status of each entry, in one pass over the folder. Only names that `wanted`
    // accepts. Where a status can't be read the kind is what the folder says, the rest is zero; a
    // link in a circle is Kind::other, one that leads nowhere is left out.
    virtual Result<std::vector<ListedFile>>
    listWithStatus(const std::filesystem::path& folder,
                   const std::function<bool(std::string_view name)>& wanted) = 0;
    // The absolute path without links and dots; the file or folder must exist.
    virtual Result<std::filesystem::path> resolved(const std::filesystem::path& path) = 0;
    // Waits for the lock of a folder, at most so long, then fails with `unwritable`. Disks that
    // know no locks give one that keeps nobody out. Threads of one program exclude each other too.
    virtual Result<std::unique_ptr<FolderLock>> lockFolder(const std::filesystem::path& folder,
                                                           double patienceSeconds) = 0;
    // The whole content; FailureKind::tooLarge when it has more than `limit` bytes.
    virtual Result<std::vector<std::byte>> read(const std::filesystem::path& path,
                                                std::int64_t limit) = 0;
    // Creates the folder and its missing parents; an existing folder is a success.
    virtual Result<void> createFolder(const std::filesystem::path& folder) = 0;
    // Begins an atomic write of `target`, whose folder must exist.
    virtual Result<std::unique_ptr<PendingFile>> create(const std::filesystem::path& target) = 0;
    // The same, with a say in how. While it is open, the temporary file is marked as being written.
    virtual Result<std::unique_ptr<PendingFile>> createWith(const std::filesystem::path& target,
                                                            const PendingOptions& options) = 0;
    // Removes a temporary file that a program which ended in the middle has left; true when it did.
    // One that is still being written, by any process, stays. On a disk that cannot tell, a file
    // counts as left when it was last written before `before`.
    virtual Result<bool> removeAbandoned(const std::filesystem::path& temporary,
                                         FileTime before) = 0;
    // Like `status`, but of a symbolic link itself, which is Kind::other.
    virtual Result<FileStatus> linkStatus(const std::filesystem::path& path) = 0;
    // Removes a file and flushes its folder; a missing file is FailureKind::notFound.
    virtual Result<void> remove(const std::filesystem::path& path) = 0;
};

// create, write, commit.
Result<void> writeAtomically(FileSystem& files, const std::filesystem::path& target,
                             std::span<const std::byte> bytes);

} // namespace kelvaro
