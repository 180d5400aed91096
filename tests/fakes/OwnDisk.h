// A small disk that only a child process sees: a memory file system in mounts of its own.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelvaro {

// Runs `work` in the child, with the disk at `place`, and returns what it returned (0 … 76); -1
// when it ended otherwise, none where the system grants no mounts.
inline std::optional<int> withOwnDisk(const std::filesystem::path& place, const char* size,
                                      const std::function<int()>& work) {
    constexpr int notGranted = 77;
    std::filesystem::create_directories(place);
    const pid_t child = ::fork();
    if (child == 0) {
        const int flags = ::getuid() == 0 ? CLONE_NEWNS : CLONE_NEWUSER | CLONE_NEWNS;
        const std::string options = std::string("size=") + size;
        if (::unshare(flags) != 0 ||
            ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("tmpfs", place.c_str(), "tmpfs", 0, options.c_str()) != 0)
            ::_exit(notGranted);
        ::_exit(work());
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!WIFEXITED(status)) return -1;
    return WEXITSTATUS(status) == notGranted ? std::nullopt : std::optional(WEXITSTATUS(status));
}

inline void setReadOnly(const std::filesystem::path& disk, bool isReadOnly) {
    ::mount(nullptr, disk.c_str(), nullptr, MS_REMOUNT | (isReadOnly ? MS_RDONLY : 0), nullptr);
}

} // namespace kelvaro
