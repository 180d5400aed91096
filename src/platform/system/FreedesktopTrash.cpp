#include "platform/system/FreedesktopTrash.h"

#include "platform/system/Descriptor.h"
#include "platform/system/SystemFailure.h"

#include <cmath>
#include <fcntl.h>
#include <fmt/format.h>
#include <optional>
#include <sys/stat.h>

namespace kelvaro {
namespace {

namespace fs = std::filesystem;

constexpr int namesTried = 10'000;

// What stays the same on one mounted disk, and is another on every other one.
struct Place {
    std::uint64_t mount = 0;
    unsigned major = 0, minor = 0;
    bool operator==(const Place&) const = default;
};

std::optional<Place> placeOf(const fs::path& path) {
    struct statx found {};
    const unsigned wanted = STATX_TYPE | STATX_MNT_ID;
    if (::statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, wanted, &found) != 0)
        return std::nullopt;
    const bool hasMount = (found.stx_mask & STATX_MNT_ID) != 0;
    return Place{hasMount ? found.stx_mnt_id : 0, found.stx_dev_major, found.stx_dev_minor};
}

// The nearest folder on the way up that exists.
fs::path existing(fs::path path) {
    while (path.has_relative_path() && !placeOf(path))
        path = path.parent_path();
    return path;
}

// The top folder of the disk that `folder` is on.
fs::path topOf(fs::path folder) {
    const auto place = placeOf(folder);
    while (folder.has_relative_path() && placeOf(folder.parent_path()) == place)
        folder = folder.parent_path();
    return folder;
}

// As the standard asks: every byte but letters, digits and a few marks as %XX.
std::string percentEncoded(std::string_view path) {
    constexpr std::string_view plain = "-_.~/!$&'()*+,;=:@";
    std::string text;
    for (const char c : path) {
        const bool isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                             (c >= '0' && c <= '9') || plain.find(c) != std::string_view::npos;
        if (isPlain)
            text += c;
        else
            text += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
    return text;
}

// Makes a folder that only the user may enter; one that is there must be the user's own.
bool ownFolder(const fs::path& folder) {
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) return false;
    struct stat found {};
    if (::lstat(folder.c_str(), &found) != 0 || !S_ISDIR(found.st_mode)) return false;
    if (found.st_uid == ::getuid()) return true;
    errno = EPERM;
    return false;
}

// A Trash folder that the administrator made for all users counts when it has the sticky bit and is
// no link.
bool isShared(const fs::path& folder) {
    struct stat found {};
    return ::lstat(folder.c_str(), &found) == 0 && S_ISDIR(found.st_mode) &&
           (found.st_mode & S_ISVTX) != 0;
}

std::string numbered(const fs::path& name, int number) {
    if (number == 1) return name.string();
    return fmt::format("{} {}{}", name.stem().string(), number, name.extension().string());
}

bool makeFolders(const fs::path& trash) {
    return ownFolder(trash) && ownFolder(trash / "files") && ownFolder(trash / "info");
}

Result<void> refused(const fs::path& file, int reason) {
    Failure failure = systemFailure(FileAction::removing, file, reason);
    failure.message = fmt::format("“{}” can't be moved to the Trash.", nameForMessage(file));
    return fail(std::move(failure));
}

bool writeAll(const Descriptor& file, std::string_view text) {
    while (!text.empty()) {
        const auto written =
            uninterrupted([&] { return ::write(file.number(), text.data(), text.size()); });
        if (written <= 0) return false;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return ::fsync(file.number()) == 0;
}

} // namespace

std::string FreedesktopTrash::infoText(std::string_view path) const {
    const auto now = static_cast<std::int64_t>(std::floor(clock_.wallSeconds()));
    const CivilTime time = calendar_.civil({now * 1'000'000'000});
    return fmt::format("[Trash Info]\nPath={}\nDeletionDate={:04}-{:02}-{:02}T{:02}:{:02}:{:02}\n",
                       percentEncoded(path), time.year, time.month, time.day, time.hour,
                       time.minute, time.second);
}

// The record is made first and under a new name, so that the name is ours; then the file follows.
Result<void> FreedesktopTrash::moveInto(const fs::path& trash, const fs::path& file,
                                        std::string_view recordedPath) {
    if (!makeFolders(trash)) return refused(file, errno);
    for (int number = 1; number <= namesTried; ++number) {
        const std::string name = numbered(file.filename(), number);
        const fs::path record = trash / "info" / (name + ".trashinfo");
        Descriptor open(
            ::open(record.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
        if (!open && errno == EEXIST) continue;
        if (!open) return refused(file, errno);
        const auto giveUp = [&](int reason) {
            ::unlink(record.c_str());
            return refused(file, reason);
        };
        if (!writeAll(open, infoText(recordedPath)) || !open.close()) return giveUp(errno);
        const fs::path target = trash / "files" / name;
        if (::renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0)
            return {};
        if (errno == EEXIST) { // a file without a record keeps the name
            ::unlink(record.c_str());
            continue;
        }
        // Some disks can't promise not to replace: the record is ours, so is the name.
        struct stat taken {};
        if (errno == EINVAL && ::lstat(target.c_str(), &taken) != 0 &&
            ::rename(file.c_str(), target.c_str()) == 0)
            return {};
        return giveUp(errno);
    }
    return refused(file, EEXIST);
}

Result<void> FreedesktopTrash::put(const fs::path& file) {
    const auto place = placeOf(file);
    if (!place) return refused(file, errno);
    if (placeOf(existing(homeTrash_)) == place) {
        std::error_code error;
        fs::create_directories(homeTrash_.parent_path(), error);
        if (error) return refused(file, error.value());
        return moveInto(homeTrash_, file, file.string());
    }
    const fs::path top = topOf(file.parent_path());
    const std::string inside = file.lexically_relative(top).string();
    const std::string user = std::to_string(::getuid());
    if (isShared(top / ".Trash") && makeFolders(top / ".Trash" / user))
        return moveInto(top / ".Trash" / user, file, inside);
    return moveInto(top / (".Trash-" + user), file, inside);
}

} // namespace kelvaro
