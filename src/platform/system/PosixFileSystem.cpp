#include "platform/system/PosixFileSystem.h"

#include "platform/system/Descriptor.h"
#include "platform/system/FileStatusReading.h"
#include "platform/system/PosixFolderLock.h"
#include "platform/system/PosixPendingFile.h"
#include "platform/system/SystemFailure.h"

#include <algorithm>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <limits>
#include <new>
#include <string_view>
#include <sys/stat.h>

namespace kelvaro {
namespace {

namespace fs = std::filesystem;

FileStatus::Kind kindOf(const dirent& entry, int folder) {
    switch (entry.d_type) {
    case DT_REG:
        return FileStatus::Kind::file;
    case DT_DIR:
        return FileStatus::Kind::folder;
    case DT_LNK:
    case DT_UNKNOWN:
        break;
    default:
        return FileStatus::Kind::other;
    }
    struct stat found {};
    if (::fstatat(folder, entry.d_name, &found, 0) != 0) return FileStatus::Kind::other;
    return kindOfMode(found.st_mode);
}

// Of an entry whose status the system does not give: a link has led into a circle, anything else is
// taken for what the folder says, or for a file where it says nothing.
FileStatus::Kind statuslessKind(const dirent& entry) {
    const bool mayBeFile = entry.d_type == DT_REG || entry.d_type == DT_UNKNOWN;
    if (entry.d_type == DT_LNK)
        return errno == ELOOP ? FileStatus::Kind::other : FileStatus::Kind::file;
    if (mayBeFile) return FileStatus::Kind::file;
    return entry.d_type == DT_DIR ? FileStatus::Kind::folder : FileStatus::Kind::other;
}

struct FolderCloser {
    void operator()(DIR* open) const { ::closedir(open); }
};
using OpenFolder = std::unique_ptr<DIR, FolderCloser>;

Failure tooLarge(const fs::path& path) {
    return {FailureKind::tooLarge, fmt::format("“{}” is too large.", nameForMessage(path))};
}

// The content of an open regular file, which may grow or shrink while it is read.
Result<std::vector<std::byte>> readAll(const Descriptor& file, const fs::path& path,
                                       std::size_t expected, std::size_t limit) {
    std::vector<std::byte> content(std::min(expected, limit) + 1); // one more, to meet the end
    std::size_t done = 0;
    for (;;) {
        if (done == content.size()) content.resize(std::min(2 * done, limit) + 1);
        const ssize_t got = uninterrupted(
            [&] { return ::read(file.number(), content.data() + done, content.size() - done); });
        if (got < 0) return fail(systemFailure(FileAction::reading, path, errno));
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
        if (done > limit) return fail(tooLarge(path));
    }
    content.resize(done);
    return content;
}

Result<void> flushFolderAt(const fs::path& path, FileAction action, const fs::path& blamed) {
    const auto folder = path.empty() ? fs::path(".") : path;
    const Descriptor open(
        uninterrupted([&] { return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!open || !flushFolder(open)) return fail(systemFailure(action, blamed, errno));
    return {};
}

} // namespace

Result<FileStatus> PosixFileSystem::status(const fs::path& path) {
    const auto found = readStatus(AT_FDCWD, path.c_str());
    if (!found) return fail(systemFailure(FileAction::reading, path, errno));
    return *found;
}

Result<std::vector<FolderEntry>> PosixFileSystem::list(const fs::path& folder) {
    const OpenFolder open(::opendir(folder.c_str()));
    if (!open) return fail(systemFailure(FileAction::listing, folder, errno));
    std::vector<FolderEntry> entries;
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(open.get());
        if (!entry) break;
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") continue;
        entries.push_back({std::string(name), kindOf(*entry, ::dirfd(open.get()))});
    }
    if (errno != 0) return fail(systemFailure(FileAction::listing, folder, errno));
    return entries;
}

Result<std::vector<ListedFile>>
PosixFileSystem::listWithStatus(const fs::path& folder,
                                const std::function<bool(std::string_view name)>& wanted) {
    const OpenFolder open(::opendir(folder.c_str()));
    if (!open) return fail(systemFailure(FileAction::listing, folder, errno));
    std::vector<ListedFile> files;
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(open.get());
        if (!entry) break;
        const std::string_view name = entry->d_name;
        if (name == "." || name == ".." || !wanted(name)) continue;
        if (const auto found = readStatus(::dirfd(open.get()), entry->d_name)) {
            files.push_back({std::string(name), *found});
        } else if (errno != ENOENT) { // not removed since it was listed
            files.push_back({std::string(name), {statuslessKind(*entry), 0, {}}});
        }
    }
    if (errno != 0) return fail(systemFailure(FileAction::listing, folder, errno));
    return files;
}

Result<fs::path> PosixFileSystem::resolved(const fs::path& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr),
                                                           &std::free);
    if (!real) return fail(systemFailure(FileAction::reading, path, errno));
    return fs::path(real.get());
}

Result<std::unique_ptr<FolderLock>> PosixFileSystem::lockFolder(const fs::path& folder,
                                                                double patienceSeconds) {
    return lockFolderPosix(folder, patienceSeconds);
}

Result<std::vector<std::byte>> PosixFileSystem::read(const fs::path& path, std::int64_t limit) {
    KELVARO_REQUIRE(limit >= 0);
    // Without O_NONBLOCK the call would wait for a writer at the other end of a pipe.
    const Descriptor file(uninterrupted(
        [&] { return ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
    struct stat found {};
    if (!file || ::fstat(file.number(), &found) != 0) {
        return fail(systemFailure(FileAction::reading, path, errno));
    }
    if (!S_ISREG(found.st_mode)) {
        return fail(FailureKind::unreadable,
                    fmt::format("“{}” couldn't be read: it is not a file.", nameForMessage(path)));
    }
    if (found.st_size > limit) return fail(tooLarge(path));
    try {
        return readAll(file, path, static_cast<std::size_t>(found.st_size),
                       static_cast<std::size_t>(limit));
    } catch (const std::bad_alloc&) {
        return fail(systemFailure(FileAction::reading, path, ENOMEM));
    }
}

Result<void> PosixFileSystem::createFolder(const fs::path& folder) {
    if (folder.empty()) return fail(systemFailure(FileAction::creatingFolder, folder, ENOENT));
    // Trailing slashes would make the folder its own parent.
    const fs::path path = folder.has_filename() ? folder : folder.parent_path();
    if (::mkdir(path.c_str(), 0777) == 0) {
        return flushFolderAt(path.parent_path(), FileAction::creatingFolder, path);
    }
    const int reason = errno;
    struct stat found {};
    if (::stat(path.c_str(), &found) == 0) {
        if (S_ISDIR(found.st_mode)) return {};
        return fail(systemFailure(FileAction::creatingFolder, path, ENOTDIR));
    }
    const fs::path parent = path.parent_path();
    if (reason != ENOENT || parent.empty() || parent == path) {
        return fail(systemFailure(FileAction::creatingFolder, path, reason));
    }
    if (auto made = createFolder(parent); !made) return made;
    if (::mkdir(path.c_str(), 0777) != 0 && errno != EEXIST) {
        return fail(systemFailure(FileAction::creatingFolder, path, errno));
    }
    return flushFolderAt(parent, FileAction::creatingFolder, path);
}

Result<std::unique_ptr<PendingFile>> PosixFileSystem::create(const fs::path& target) {
    return PosixPendingFile::begin(target, {});
}

Result<std::unique_ptr<PendingFile>> PosixFileSystem::createWith(const fs::path& target,
                                                                 const PendingOptions& options) {
    return PosixPendingFile::begin(target, options);
}

Result<FileStatus> PosixFileSystem::linkStatus(const fs::path& path) {
    const auto found = readStatus(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW);
    if (!found) return fail(systemFailure(FileAction::reading, path, errno));
    return *found;
}

Result<bool> PosixFileSystem::removeAbandoned(const fs::path& temporary, FileTime before) {
    const Descriptor file(uninterrupted([&] {
        return ::open(temporary.c_str(), O_RDWR | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC);
    }));
    const auto found = file ? readStatus(file.number(), "", AT_EMPTY_PATH) : std::nullopt;
    if (!found) return fail(systemFailure(FileAction::removing, temporary, errno));
    if (found->kind != FileStatus::Kind::file) return false;
    switch (markAsWritten(file)) {
    case WriterMark::othersHoldIt:
        return false;
    case WriterMark::unknown:
        if (found->modified.nanoseconds >= before.nanoseconds) return false;
        break;
    case WriterMark::ours:
        break;
    }
    if (auto removed = remove(temporary); !removed) return fail(std::move(removed).error());
    return true;
}

Result<void> PosixFileSystem::remove(const fs::path& path) {
    if (::unlink(path.c_str()) != 0) {
        return fail(systemFailure(FileAction::removing, path, errno));
    }
    return flushFolderAt(path.parent_path(), FileAction::removing, path);
}

} // namespace kelvaro
