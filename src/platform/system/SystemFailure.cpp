#include "platform/system/SystemFailure.h"

#include <cerrno>
#include <fmt/format.h>
#include <string_view>
#include <system_error>

namespace kelvaro {
namespace {

std::string_view actionText(FileAction action) {
    switch (action) {
    case FileAction::reading:
        return "read";
    case FileAction::listing:
        return "listed";
    case FileAction::writing:
        return "written";
    case FileAction::creatingFolder:
        return "created";
    case FileAction::removing:
        return "removed";
    }
    return "used";
}

FailureKind kindOf(FileAction action, int errorNumber) {
    // No file can stand under such a path. For a listing the folder itself may be something else.
    const bool cannotExist = (errorNumber == ENOTDIR || errorNumber == ENAMETOOLONG) &&
                             (action == FileAction::reading || action == FileAction::removing);
    if (errorNumber == ENOENT || cannotExist) return FailureKind::notFound;
    if (errorNumber == ENOSPC || errorNumber == EDQUOT) return FailureKind::diskFull;
    if (errorNumber == EEXIST) return FailureKind::alreadyThere;
    if (errorNumber == ENOMEM) return FailureKind::outOfMemory;
    const bool reads = action == FileAction::reading || action == FileAction::listing;
    return reads ? FailureKind::unreadable : FailureKind::unwritable;
}

std::string reasonText(FileAction action, int errorNumber) {
    switch (errorNumber) {
    case ENOENT:
        return action == FileAction::writing ? "its folder isn't there" : "it isn't there";
    case EACCES:
    case EPERM:
        return "permission is missing";
    case EROFS:
        return "the disk is read-only";
    case ENOSPC:
        return "the disk is full";
    case EDQUOT:
        return "the disk quota is used up";
    case EEXIST:
        return "something of that name is there already";
    case ENAMETOOLONG:
        return "its name is too long";
    case ENOTDIR:
        return "part of its path isn't a folder";
    case EISDIR:
        return "it is a folder";
    case EFBIG:
        return "it would be too large";
    case EMFILE:
    case ENFILE:
        return "too many files are open";
    case EIO:
        return "the disk reported an error";
    default:
        return std::generic_category().message(errorNumber);
    }
}

} // namespace

std::string nameForMessage(const std::filesystem::path& path) {
    if (path.has_filename()) return path.filename().string();
    const std::filesystem::path parent = path.parent_path(); // a path that ends in a slash
    return parent.has_filename() ? parent.filename().string() : path.string();
}

Failure systemFailure(FileAction action, const std::filesystem::path& path, int errorNumber) {
    return {kindOf(action, errorNumber),
            fmt::format("“{}” couldn't be {}: {}.", nameForMessage(path), actionText(action),
                        reasonText(action, errorNumber))};
}

} // namespace kelvaro
