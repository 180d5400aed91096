#include "platform/system/PosixFileSystem.h"

#include "fakes/TemporaryFolder.h"
#include "platform/system/PosixPendingFile.h"
#include "platform/system/SystemFailure.h"

#include <cerrno>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <map>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace kelvaro {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

std::span<const std::byte> bytesOf(std::string_view text) {
    return std::as_bytes(std::span(text.data(), text.size()));
}

std::string textOf(const std::vector<std::byte>& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

class PosixFileSystemTest : public testing::Test {
protected:
    TemporaryFolder folder;
    PosixFileSystem files;
};

TEST_F(PosixFileSystemTest, ReadsWholeFilesUpToTheLimit) {
    const std::string content(100'000, 'k');
    writeFile(folder / "a", content);
    ASSERT_TRUE(files.read(folder / "a", 100'000));
    EXPECT_EQ(textOf(*files.read(folder / "a", 100'000)), content);
    EXPECT_EQ(files.read(folder / "a", 99'999).error().kind, FailureKind::tooLarge);
    writeFile(folder / "empty", "");
    EXPECT_TRUE(files.read(folder / "empty", 0)->empty());
}

TEST_F(PosixFileSystemTest, ReadsAndLimitsFilesWhoseSizeIsNotKnownBefore) {
    // The system makes this one up while it is read; its size is given as 0.
    const auto version = files.read("/proc/version", 1 << 20);
    ASSERT_TRUE(version);
    EXPECT_THAT(textOf(*version), testing::StartsWith("Linux version"));
    EXPECT_EQ(files.read("/proc/version", 5).error().kind, FailureKind::tooLarge);
}

TEST_F(PosixFileSystemTest, RefusesWhatIsNoFileWithoutWaiting) {
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    const int plug = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    (folder / "socket").string().copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(plug, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    fs::create_directory(folder / "folder");
    for (const auto& path :
         {folder / "pipe", folder / "socket", folder / "folder", fs::path("/dev/null")}) {
        EXPECT_EQ(files.read(path, 1000).error().kind, FailureKind::unreadable) << path;
    }
    ::close(plug);
    EXPECT_EQ(files.status(folder / "pipe")->kind, FileStatus::Kind::other);
}

TEST_F(PosixFileSystemTest, ReportsSizeKindAndTime) {
    writeFile(folder / "a", "12345");
    const timespec times[2] = {{-5, 250'000'000}, {-5, 250'000'000}}; // 4.75 s before 1970
    ASSERT_EQ(::utimensat(AT_FDCWD, (folder / "a").c_str(), times, 0), 0);
    fs::create_symlink(folder / "a", folder / "link");
    for (const char* name : {"a", "link"}) {
        const auto found = files.status(folder / name);
        ASSERT_TRUE(found);
        EXPECT_EQ(found->kind, FileStatus::Kind::file);
        EXPECT_EQ(found->size, 5);
        EXPECT_EQ(found->modified.nanoseconds, -4'750'000'000);
    }
    EXPECT_EQ(files.status(folder.path())->kind, FileStatus::Kind::folder);
}

TEST_F(PosixFileSystemTest, ListsNamesWithTheKindsThatLinksLeadTo) {
    writeFile(folder / "file", "");
    fs::create_directory(folder / "folder");
    fs::create_symlink("folder", folder / "link");
    fs::create_symlink("nowhere", folder / "dangling");
    writeFile(folder / "\xFF\xFEname", "");
    const auto entries = files.list(folder.path());
    ASSERT_TRUE(entries);
    std::map<std::string, FileStatus::Kind> found;
    for (const auto& entry : *entries)
        found[entry.name] = entry.kind;
    const std::map<std::string, FileStatus::Kind> expected{
        {"file", FileStatus::Kind::file},
        {"folder", FileStatus::Kind::folder},
        {"link", FileStatus::Kind::folder},
        {"dangling", FileStatus::Kind::other},
        {"\xFF\xFEname", FileStatus::Kind::file}};
    EXPECT_TRUE(found == expected);
}

TEST_F(PosixFileSystemTest, SaysThatAMissingFileIsNotThere) {
    writeFile(folder / "file", "");
    const std::string endless(300, 'n');
    for (const auto& path : {folder / "missing", folder / "file/below", folder / endless}) {
        EXPECT_EQ(files.status(path).error().kind, FailureKind::notFound) << path;
        EXPECT_EQ(files.read(path, 10).error().kind, FailureKind::notFound) << path;
        EXPECT_EQ(files.remove(path).error().kind, FailureKind::notFound) << path;
    }
    EXPECT_EQ(files.read(folder / "missing", 10).error().message,
              "“missing” couldn't be read: it isn't there.");
    EXPECT_EQ(files.list(folder / "missing").error().kind, FailureKind::notFound);
    EXPECT_EQ(files.list(folder / "file").error().kind, FailureKind::unreadable);
    EXPECT_EQ(files.create(folder / "missing/new").error().kind, FailureKind::notFound);
}

TEST(SystemFailureTest, SortsErrorNumbersIntoKinds) {
    struct Case {
        int number;
        FileAction action;
        FailureKind kind;
    };
    for (const auto& [number, action, kind] : {
             Case{ENOSPC, FileAction::writing, FailureKind::diskFull},
             Case{EDQUOT, FileAction::creatingFolder, FailureKind::diskFull},
             Case{EACCES, FileAction::reading, FailureKind::unreadable},
             Case{EACCES, FileAction::writing, FailureKind::unwritable},
             Case{EPERM, FileAction::removing, FailureKind::unwritable},
             Case{EROFS, FileAction::writing, FailureKind::unwritable},
             Case{EIO, FileAction::listing, FailureKind::unreadable},
             Case{ENAMETOOLONG, FileAction::reading, FailureKind::notFound},
             Case{ENAMETOOLONG, FileAction::writing, FailureKind::unwritable},
             Case{ENOTDIR, FileAction::listing, FailureKind::unreadable},
         }) {
        const Failure failure = systemFailure(action, "/photos/a.jpg", number);
        EXPECT_EQ(failure.kind, kind) << number;
        EXPECT_THAT(failure.message, testing::StartsWith("“a.jpg” couldn't be ")) << number;
    }
}

TEST_F(PosixFileSystemTest, CreatesFoldersWithTheirParents) {
    for (int i = 0; i < 2; ++i)
        ASSERT_TRUE(files.createFolder(folder / "a/b/c/"));
    EXPECT_TRUE(fs::is_directory(folder / "a/b/c"));
    writeFile(folder / "file", "");
    EXPECT_EQ(files.createFolder(folder / "file").error().kind, FailureKind::unwritable);
    EXPECT_FALSE(files.createFolder(folder / "file/below"));
    EXPECT_FALSE(files.createFolder(""));
}

TEST_F(PosixFileSystemTest, ShowsNothingBeforeCommitAndLeavesNothingWithoutIt) {
    writeFile(folder / "a", "old");
    {
        auto pending = files.create(folder / "a").value();
        ASSERT_TRUE(pending->writeAt(0, bytesOf("new")));
        EXPECT_EQ(readFile(folder / "a"), "old");
        EXPECT_EQ(namesIn(folder.path()).size(), 2u);
    }
    EXPECT_EQ(readFile(folder / "a"), "old");
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("a"));

    auto pending = files.create(folder / "a").value();
    ASSERT_TRUE(pending->writeAt(0, bytesOf("new")));
    ASSERT_TRUE(pending->commit());
    EXPECT_EQ(readFile(folder / "a"), "new");
    EXPECT_FALSE(pending->commit()); // there is nothing left to move
    pending.reset();
    EXPECT_EQ(readFile(folder / "a"), "new");
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("a"));
}

TEST_F(PosixFileSystemTest, WritesInAnyOrderAndReadsBack) {
    auto pending = files.create(folder / "a").value();
    ASSERT_TRUE(pending->writeAt(6, bytesOf("end")));
    ASSERT_TRUE(pending->writeAt(0, bytesOf("abc")));
    EXPECT_EQ(pending->size(), 9);
    std::array<std::byte, 20> read{};
    EXPECT_EQ(pending->readAt(1, read).value(), 8u);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(read.data()), 8),
              std::string("bc\0\0\0end", 8));
    EXPECT_EQ(pending->readAt(9, read).value(), 0u);
    ASSERT_TRUE(pending->commit());
    EXPECT_EQ(readFile(folder / "a"), std::string("abc\0\0\0end", 9));
}

TEST_F(PosixFileSystemTest, KeepsThePermissionsOfTheTarget) {
    const mode_t before = ::umask(0022);
    const auto modeOf = [&](const char* name) {
        struct stat found {};
        ::stat((folder / name).c_str(), &found);
        return found.st_mode & 07777;
    };
    for (const mode_t mode : {0600u, 0640u, 0666u, 0444u}) {
        writeFile(folder / "a", "old");
        ::chmod((folder / "a").c_str(), mode);
        ASSERT_TRUE(writeAtomically(files, folder / "a", bytesOf("new")));
        EXPECT_EQ(modeOf("a"), mode);
        fs::remove(folder / "a");
    }
    ASSERT_TRUE(writeAtomically(files, folder / "fresh", bytesOf("new")));
    EXPECT_EQ(modeOf("fresh"), 0644u);
    ::umask(before);
}

TEST_F(PosixFileSystemTest, RefusesTargetsThatAreFolders) {
    fs::create_directory(folder / "a");
    EXPECT_EQ(files.create(folder / "a").error().kind, FailureKind::unwritable);
    EXPECT_EQ(files.create(folder.path() / "").error().kind, FailureKind::unwritable);
    EXPECT_EQ(files.remove(folder / "a").error().kind, FailureKind::unwritable);
    // One that turns into a folder while we write.
    auto pending = files.create(folder / "b").value();
    fs::create_directory(folder / "b");
    EXPECT_EQ(pending->commit().error().kind, FailureKind::unwritable);
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("a", "b"));
}

TEST_F(PosixFileSystemTest, WritesTheLongestNamesAndRefusesLongerOnes) {
    const std::string longest(255, 'n');
    ASSERT_TRUE(writeAtomically(files, folder / longest, bytesOf("x")));
    EXPECT_THAT(namesIn(folder.path()), ElementsAre(longest));
    EXPECT_EQ(files.create(folder / (longest + "n")).error().kind, FailureKind::unwritable);
}

TEST(TemporaryNameTest, IsHiddenAndFitsAndCutsBetweenCharacters) {
    EXPECT_EQ(temporaryName("a.jpg", "xxxxxx", 255), ".a.jpg.kelvaro-xxxxxx");
    EXPECT_EQ(temporaryName(std::string(255, 'n'), "xxxxxx", 255).size(), 255u);
    std::string umlauts = "n"; // one byte, then two each: 255 bytes
    while (umlauts.size() < 255)
        umlauts += "ä";
    const std::string cut = temporaryName(umlauts, "xxxxxx", 255);
    EXPECT_THAT(cut, testing::EndsWith("ä.kelvaro-xxxxxx"));
    EXPECT_GE(cut.size(), 254u);
    EXPECT_EQ(temporaryName("abcdef", "xxxxxx", 18), ".ab.kelvaro-xxxxxx");
}

TEST_F(PosixFileSystemTest, GivesEachOfManyWritersItsOwnTemporary) {
    const auto write = [&](char letter) {
        for (int i = 0; i < 50; ++i) {
            PosixFileSystem own;
            EXPECT_TRUE(writeAtomically(own, folder / "a", bytesOf(std::string(5000, letter))));
        }
    };
    std::thread first(write, 'a'), second(write, 'b');
    first.join();
    second.join();
    const std::string content = readFile(folder / "a");
    EXPECT_EQ(content, std::string(5000, content.at(0)));
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("a"));
}

} // namespace
} // namespace kelvaro
