#include "platform/system/PosixFolderLock.h"

#include "platform/system/Descriptor.h"
#include "platform/system/SystemFailure.h"

#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <thread>

namespace kelvaro {
namespace {

class PosixFolderLock final : public FolderLock {
public:
    explicit PosixFolderLock(Descriptor folder) : folder_(std::move(folder)) {}

private:
    Descriptor folder_; // closing it ends the lock
};

} // namespace

Result<std::unique_ptr<FolderLock>> lockFolderPosix(const std::filesystem::path& folder,
                                                    double patienceSeconds) {
    using Steady = std::chrono::steady_clock;
    Descriptor open(
        uninterrupted([&] { return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!open) return fail(systemFailure(FileAction::writing, folder, errno));
    const auto limit = Steady::now() + std::chrono::duration<double>(patienceSeconds);
    // A blocking lock could not be given up: the holder may be a stopped process.
    auto pause = std::chrono::microseconds(50);
    while (uninterrupted([&] { return ::flock(open.number(), LOCK_EX | LOCK_NB); }) != 0) {
        if (errno != EWOULDBLOCK) break; // this disk knows no locks
        if (Steady::now() >= limit) {
            return fail(FailureKind::unwritable,
                        fmt::format("“{}” is in use by another program.", nameForMessage(folder)));
        }
        std::this_thread::sleep_for(pause);
        pause = std::min<std::chrono::microseconds>(2 * pause, std::chrono::milliseconds(5));
    }
    return std::unique_ptr<FolderLock>(new PosixFolderLock(std::move(open)));
}

} // namespace kelvaro
