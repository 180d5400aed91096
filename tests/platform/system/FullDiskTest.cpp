// Real refusals of the system, each in a process of its own: a disk of 64 KiB, a limit on the size
// of files, a folder without permission. A process that may not set its scene up says so by its
// status.
#include "fakes/TemporaryFolder.h"
#include "platform/system/PosixFileSystem.h"

#include <csignal>
#include <functional>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace kelvaro {
namespace {

constexpr int passed = 0, noScene = 77;

// Runs `scene` in a child; it returns `passed`, `noScene`, or the line of the first broken
// expectation.
int inChild(const std::function<int()>& scene) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(scene());
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void expectPassed(int result) {
    if (result == noScene) GTEST_SKIP() << "the system does not let us set the scene up";
    EXPECT_EQ(result, passed) << "the line, modulo 256, of what is not as expected";
}

#define EXPECT_HERE(condition)                                                                     \
    if (!(condition)) return __LINE__ % 256

// The old content stays, no temporary is left, and the failure says what happened.
int expectRefusal(const std::filesystem::path& folder, std::size_t size, FailureKind kind,
                  const std::string& message) {
    PosixFileSystem files;
    writeFile(folder / "a.json", "old");
    const std::vector<std::byte> content(size, std::byte{'x'});
    const auto written = writeAtomically(files, folder / "a.json", content);
    EXPECT_HERE(!written);
    EXPECT_HERE(written.error().kind == kind);
    EXPECT_HERE(written.error().message == message);
    EXPECT_HERE(readFile(folder / "a.json") == "old");
    EXPECT_HERE(namesIn(folder) == std::set<std::string>{"a.json"});
    return passed;
}

TEST(FullDiskTest, AFullDiskKeepsTheOldFile) {
    TemporaryFolder folder;
    expectPassed(inChild([&] {
        const int unshared =
            ::getuid() == 0 ? ::unshare(CLONE_NEWNS) : ::unshare(CLONE_NEWUSER | CLONE_NEWNS);
        if (unshared != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) ||
            ::mount("tmpfs", folder.path().c_str(), "tmpfs", 0, "size=64k")) {
            return noScene;
        }
        return expectRefusal(folder.path(), 200'000, FailureKind::diskFull,
                             "“a.json” couldn't be written: the disk is full.");
    }));
}

TEST(FullDiskTest, ALimitOnFilesGivesAShortWriteThatIsNoticed) {
    TemporaryFolder folder;
    expectPassed(inChild([&] {
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{5000, 5000};
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return noScene;
        return expectRefusal(folder.path(), 8000, FailureKind::unwritable,
                             "“a.json” couldn't be written: it would be too large.");
    }));
}

TEST(FullDiskTest, MissingPermissionIsSaid) {
    TemporaryFolder folder;
    writeFile(folder / "secret", "x");
    ::chmod((folder / "secret").c_str(), 0);
    ::chmod(folder.path().c_str(), 0555);
    expectPassed(inChild([&] {
        if (::getuid() == 0 && ::setuid(65534) != 0) return noScene;
        PosixFileSystem files;
        const auto read = files.read(folder / "secret", 10);
        EXPECT_HERE(!read && read.error().kind == FailureKind::unreadable);
        const auto created = files.create(folder / "new");
        EXPECT_HERE(!created && created.error().kind == FailureKind::unwritable);
        EXPECT_HERE(created.error().message == "“new” couldn't be written: permission is missing.");
        EXPECT_HERE(files.remove(folder / "secret").error().kind == FailureKind::unwritable);
        EXPECT_HERE(files.createFolder(folder / "a/b").error().kind == FailureKind::unwritable);
        return passed;
    }));
    ::chmod(folder.path().c_str(), 0755);
}

} // namespace
} // namespace kelvaro
