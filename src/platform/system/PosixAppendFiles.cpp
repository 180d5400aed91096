#include "platform/system/PosixAppendFiles.h"

#include "platform/system/Descriptor.h"
#include "platform/system/SystemFailure.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>

namespace kelvaro {
namespace {

class PosixAppendFile final : public AppendFile {
public:
    PosixAppendFile(std::filesystem::path path, Descriptor file)
        : path_(std::move(path)), file_(std::move(file)) {}

    Result<void> append(std::span<const std::byte> bytes) override {
        while (!bytes.empty()) {
            const ssize_t written =
                uninterrupted([&] { return ::write(file_.number(), bytes.data(), bytes.size()); });
            if (written <= 0) return failed(written < 0 ? errno : ENOSPC);
            bytes = bytes.subspan(static_cast<std::size_t>(written));
        }
        return {};
    }

    Result<void> flush() override {
        if (uninterrupted([&] { return ::fdatasync(file_.number()); }) != 0) return failed(errno);
        return {};
    }

private:
    Result<void> failed(int errorNumber) const {
        return fail(systemFailure(FileAction::writing, path_, errorNumber));
    }

    std::filesystem::path path_;
    Descriptor file_;
};

} // namespace

Result<std::unique_ptr<AppendFile>> PosixAppendFiles::open(const std::filesystem::path& path) {
    Descriptor file(uninterrupted([&] {
        return ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW | O_CLOEXEC, 0600);
    }));
    if (!file) return fail(systemFailure(FileAction::writing, path, errno));
    // Ends with the descriptor, however the program ends. Disks that know no locks keep nobody out.
    if (uninterrupted([&] { return ::flock(file.number(), LOCK_EX | LOCK_NB); }) != 0 &&
        errno == EWOULDBLOCK) {
        return fail(FailureKind::unwritable,
                    fmt::format("“{}” is in use by another program.", nameForMessage(path)));
    }
    return std::unique_ptr<AppendFile>(new PosixAppendFile(path, std::move(file)));
}

} // namespace kelvaro
