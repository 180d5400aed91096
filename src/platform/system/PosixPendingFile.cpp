#include "platform/system/PosixPendingFile.h"

#include "platform/system/SystemFailure.h"
#include "platform/system/SystemRandom.h"

#include <algorithm>
#include <fcntl.h>
#include <limits>
#include <sys/file.h>
#include <sys/stat.h>

namespace kelvaro {
namespace {

constexpr int attempts = 100; // names tried before we believe that something else is wrong
constexpr mode_t permissionBits = 0777;

std::string randomSuffix() {
    static constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz234567";
    std::array<std::byte, 6> bytes;
    SystemRandom().fill(bytes);
    std::string suffix;
    for (const std::byte byte : bytes)
        suffix += letters[std::to_integer<std::size_t>(byte) % 32];
    return suffix;
}

std::size_t longestName(const Descriptor& folder) {
    const long longest = ::fpathconf(folder.number(), _PC_NAME_MAX);
    return longest > 0 ? static_cast<std::size_t>(longest) : NAME_MAX;
}

} // namespace

std::string temporaryName(std::string_view name, std::string_view suffix, std::size_t longest) {
    constexpr std::string_view mark = ".kelvaro-";
    const std::size_t added = 1 + mark.size() + suffix.size();
    std::size_t kept = std::min(name.size(), longest - std::min(longest, added));
    const auto continues = [&](std::size_t i) {
        return i < name.size() && (static_cast<unsigned char>(name[i]) & 0xC0) == 0x80;
    };
    while (kept > 0 && continues(kept))
        --kept;
    std::string hidden;
    hidden.append(1, '.').append(name.substr(0, kept)).append(mark).append(suffix);
    return hidden;
}

bool flushFolder(const Descriptor& folder) {
    return uninterrupted([&] { return ::fsync(folder.number()); }) == 0 || errno == EINVAL ||
           errno == ENOTSUP;
}

WriterMark markAsWritten(const Descriptor& file) {
    if (uninterrupted([&] { return ::flock(file.number(), LOCK_EX | LOCK_NB); }) == 0)
        return WriterMark::ours;
    return errno == EWOULDBLOCK ? WriterMark::othersHoldIt : WriterMark::unknown;
}

bool renameToNew(const Descriptor& folder, const std::string& from, const std::string& to) {
    const int at = folder.number();
    if (::renameat2(at, from.c_str(), at, to.c_str(), RENAME_NOREPLACE) == 0) return true;
    if (errno != EINVAL && errno != ENOSYS) return false;
    // A second name never replaces anything either, where a disk has such names.
    if (::linkat(at, from.c_str(), at, to.c_str(), 0) == 0)
        return ::unlinkat(at, from.c_str(), 0) == 0;
    if (errno == EEXIST) return false;
    struct stat found {};
    if (::fstatat(at, to.c_str(), &found, AT_SYMLINK_NOFOLLOW) == 0) {
        errno = EEXIST;
        return false;
    }
    return ::renameat(at, from.c_str(), at, to.c_str()) == 0;
}

Result<std::unique_ptr<PendingFile>> PosixPendingFile::begin(const std::filesystem::path& target,
                                                             const PendingOptions& options) {
    const auto folderPath = target.has_parent_path() ? target.parent_path() : ".";
    Descriptor folder(uninterrupted(
        [&] { return ::open(folderPath.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!folder) return fail(systemFailure(FileAction::writing, target, errno));
    std::unique_ptr<PosixPendingFile> pending(
        new PosixPendingFile(target, options, std::move(folder)));
    if (auto opened = pending->openTemporary(); !opened) return fail(std::move(opened).error());
    return std::unique_ptr<PendingFile>(std::move(pending));
}

PosixPendingFile::PosixPendingFile(std::filesystem::path target, PendingOptions options,
                                   Descriptor folder)
    : target_(std::move(target)), options_(std::move(options)), folder_(std::move(folder)) {}

PosixPendingFile::~PosixPendingFile() {
    file_.close();
    if (!temporaryName_.empty()) ::unlinkat(folder_.number(), temporaryName_.c_str(), 0);
}

Result<void> PosixPendingFile::openTemporary() {
    const std::string name = target_.filename().string();
    const std::size_t longest = longestName(folder_);
    if (name.empty() || name == "." || name == "..") return failed(EISDIR);
    if (name.size() > longest) return failed(ENAMETOOLONG);

    struct stat existing {};
    const int flags = options_.mustBeNew ? AT_SYMLINK_NOFOLLOW : 0;
    const bool exists = ::fstatat(folder_.number(), name.c_str(), &existing, flags) == 0;
    if (exists && options_.mustBeNew) return failed(EEXIST);
    if (exists && S_ISDIR(existing.st_mode)) return failed(EISDIR);
    const bool keepsPermissions = exists && S_ISREG(existing.st_mode);
    const mode_t permissions = existing.st_mode & permissionBits;

    for (int attempt = 0; attempt < attempts && !file_; ++attempt) {
        const std::string candidate = options_.temporaryName.empty()
                                          ? temporaryName(name, randomSuffix(), longest)
                                          : options_.temporaryName;
        if (openMarked(candidate, keepsPermissions ? permissions : 0666))
            temporaryName_ = candidate;
        else if (errno != EEXIST)
            return failed(errno);
    }
    if (!file_) return failed(EEXIST);
    // The mask of the process took bits away above. Disks without permissions refuse; they need
    // none.
    if (keepsPermissions) static_cast<void>(::fchmod(file_.number(), permissions));
    return {};
}

// A file that another process took for abandoned, in the moment before it was marked, is on its way
// out: then another one is made.
bool PosixPendingFile::openMarked(const std::string& candidate, unsigned permissions) {
    Descriptor file(uninterrupted([&] {
        return ::openat(folder_.number(), candidate.c_str(),
                        O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, permissions);
    }));
    if (!file) return false;
    struct stat found {};
    const bool isTaken = markAsWritten(file) == WriterMark::othersHoldIt ||
                         (::fstat(file.number(), &found) == 0 && found.st_nlink == 0);
    if (isTaken) {
        errno = EEXIST;
        return false;
    }
    file_ = std::move(file);
    return true;
}

// The temporary file goes at once: whoever keeps a failed write around keeps no room on the disk.
Result<void> PosixPendingFile::failed(int errorNumber) {
    file_.close();
    if (!temporaryName_.empty()) ::unlinkat(folder_.number(), temporaryName_.c_str(), 0);
    temporaryName_.clear();
    return fail(systemFailure(FileAction::writing, target_, errorNumber));
}

Result<void> PosixPendingFile::writeAt(std::int64_t offset, std::span<const std::byte> bytes) {
    KELVARO_REQUIRE(offset >= 0);
    if (!file_) return failed(EBADF);
    if (bytes.size() >
        static_cast<std::size_t>(std::numeric_limits<std::int64_t>::max() - offset)) {
        return failed(EFBIG);
    }
    while (!bytes.empty()) {
        const ssize_t written = uninterrupted(
            [&] { return ::pwrite(file_.number(), bytes.data(), bytes.size(), offset); });
        if (written <= 0) return failed(written < 0 ? errno : ENOSPC);
        offset += written;
        bytes = bytes.subspan(static_cast<std::size_t>(written));
        size_ = std::max(size_, offset);
    }
    return {};
}

Result<std::size_t> PosixPendingFile::readAt(std::int64_t offset, std::span<std::byte> bytes) {
    KELVARO_REQUIRE(offset >= 0);
    std::size_t done = 0;
    while (done < bytes.size()) {
        const auto rest = bytes.subspan(done);
        const ssize_t got = uninterrupted([&] {
            return ::pread(file_.number(), rest.data(), rest.size(),
                           offset + static_cast<std::int64_t>(done));
        });
        if (got < 0) return fail(systemFailure(FileAction::reading, target_, errno));
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
    }
    return done;
}

Result<void> PosixPendingFile::commit() {
    if (!file_) return failed(EBADF);
    if (uninterrupted([&] { return ::fsync(file_.number()); }) != 0) return failed(errno);
    // The duplicate keeps the mark until the file has its name.
    const Descriptor marked(::fcntl(file_.number(), F_DUPFD_CLOEXEC, 0));
    if (!file_.close()) return failed(errno);
    if (!moveIntoPlace()) return failed(errno);
    temporaryName_.clear();
    if (!flushFolder(folder_)) return failed(errno);
    return {};
}

bool PosixPendingFile::moveIntoPlace() {
    const std::string name = target_.filename().string();
    if (options_.mustBeNew) return renameToNew(folder_, temporaryName_, name);
    return ::renameat(folder_.number(), temporaryName_.c_str(), folder_.number(), name.c_str()) ==
           0;
}

} // namespace kelvaro
