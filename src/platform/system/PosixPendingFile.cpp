#include "platform/system/PosixPendingFile.h"

#include "platform/system/SystemFailure.h"
#include "platform/system/SystemRandom.h"

#include <algorithm>
#include <fcntl.h>
#include <limits>
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

Result<std::unique_ptr<PendingFile>> PosixPendingFile::begin(const std::filesystem::path& target) {
    const auto folderPath = target.has_parent_path() ? target.parent_path() : ".";
    Descriptor folder(uninterrupted(
        [&] { return ::open(folderPath.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!folder) return fail(systemFailure(FileAction::writing, target, errno));
    std::unique_ptr<PosixPendingFile> pending(new PosixPendingFile(target, std::move(folder)));
    if (auto opened = pending->openTemporary(); !opened) return fail(std::move(opened).error());
    return std::unique_ptr<PendingFile>(std::move(pending));
}

PosixPendingFile::PosixPendingFile(std::filesystem::path target, Descriptor folder)
    : target_(std::move(target)), folder_(std::move(folder)) {}

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
    const bool exists = ::fstatat(folder_.number(), name.c_str(), &existing, 0) == 0;
    if (exists && S_ISDIR(existing.st_mode)) return failed(EISDIR);
    const bool keepsPermissions = exists && S_ISREG(existing.st_mode);
    const mode_t permissions = existing.st_mode & permissionBits;

    for (int attempt = 0; attempt < attempts && !file_; ++attempt) {
        const std::string candidate = temporaryName(name, randomSuffix(), longest);
        file_ = Descriptor(uninterrupted([&] {
            return ::openat(folder_.number(), candidate.c_str(),
                            O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                            keepsPermissions ? permissions : 0666);
        }));
        if (file_)
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
    if (!file_.close()) return failed(errno);
    const std::string name = target_.filename().string();
    if (::renameat(folder_.number(), temporaryName_.c_str(), folder_.number(), name.c_str()) != 0) {
        return failed(errno);
    }
    temporaryName_.clear();
    if (!flushFolder(folder_)) return failed(errno);
    return {};
}

} // namespace kelvaro
