// A folder in one pass: what each entry is, and folders that are as bad as folders get.
#include "fakes/TemporaryFolder.h"
#include "platform/system/PosixFileSystem.h"

#include <algorithm>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <map>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace kelvaro {
namespace {

using Kind = FileStatus::Kind;

class ListingTest : public testing::Test {
protected:
    TemporaryFolder folder;
    PosixFileSystem files;

    std::map<std::string, FileStatus> listed(const std::filesystem::path& path) {
        std::map<std::string, FileStatus> found;
        const auto all = files.listWithStatus(path, [](std::string_view) { return true; });
        for (const ListedFile& file : all.value())
            found.emplace(file.name, file.status);
        return found;
    }
};

TEST_F(ListingTest, TellsKindSizeAndTimesOfEverything) {
    writeFile(folder / "a.jpg", "12345");
    writeFile(folder / "inner/b.jpg", "");
    writeFile(folder / "odd\xFF\n.jpg", "1");
    std::filesystem::create_symlink("a.jpg", folder / "link.jpg");
    std::filesystem::create_symlink("nowhere", folder / "dead.jpg");
    std::filesystem::create_symlink("loop.jpg", folder / "loop.jpg");
    std::filesystem::create_symlink("inner", folder / "folderlink.jpg");
    ASSERT_EQ(::mkfifo((folder / "pipe.jpg").c_str(), 0600), 0);
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    (folder / "socket.jpg").string().copy(address.sun_path, sizeof address.sun_path - 1);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ::close(socket);
    const timespec before1970[] = {{-1000, 0}, {-1000, 500'000'000}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (folder / "a.jpg").c_str(), before1970, 0), 0);

    const auto found = listed(folder.path());
    std::map<std::string, Kind> kinds;
    for (const auto& [name, status] : found)
        kinds.emplace(name, status.kind);
    EXPECT_EQ(kinds, (std::map<std::string, Kind>{{"a.jpg", Kind::file},
                                                  {"folderlink.jpg", Kind::folder},
                                                  {"inner", Kind::folder},
                                                  {"link.jpg", Kind::file},
                                                  {"loop.jpg", Kind::other},
                                                  {"odd\xFF\n.jpg", Kind::file},
                                                  {"pipe.jpg", Kind::other},
                                                  {"socket.jpg", Kind::other}}));
    const FileStatus& a = found.at("a.jpg");
    EXPECT_EQ(a.size, 5);
    EXPECT_EQ(a.modified.nanoseconds, -999'500'000'000);
    EXPECT_EQ(found.at("link.jpg"), a);
    EXPECT_EQ(*files.status(folder / "a.jpg"), a);
    struct statx born {};
    ASSERT_EQ(::statx(AT_FDCWD, (folder / "a.jpg").c_str(), 0, STATX_BTIME, &born), 0);
    if (born.stx_mask & STATX_BTIME) {
        EXPECT_EQ(a.created.nanoseconds,
                  born.stx_btime.tv_sec * 1'000'000'000 + born.stx_btime.tv_nsec);
    }
}

TEST_F(ListingTest, AReplacedFileOfTheSameSizeAndTimeIsAnother) {
    writeFile(folder / "a.json", "1");
    const FileStatus before = *files.status(folder / "a.json");
    const std::string text = "2";
    ASSERT_TRUE(writeAtomically(files, folder / "a.json", std::as_bytes(std::span(text))));
    const timespec same[] = {
        {0, UTIME_OMIT},
        {before.modified.nanoseconds / 1'000'000'000, before.modified.nanoseconds % 1'000'000'000}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (folder / "a.json").c_str(), same, 0), 0);
    const FileStatus after = *files.status(folder / "a.json");
    EXPECT_EQ(after.modified, before.modified);
    EXPECT_FALSE(after == before);
}

TEST_F(ListingTest, LongPathsAndAbsentFoldersFailOrWorkButNeverCrash) {
    std::filesystem::path deep = folder.path();
    const std::string part(200, 'd');
    const int here = ::open(".", O_RDONLY | O_DIRECTORY);
    std::filesystem::current_path(folder.path());
    while (deep.string().size() < 3900) { // the last one has a path near the system's longest
        std::filesystem::create_directory(part);
        std::filesystem::current_path(part);
        deep /= part;
    }
    writeFile(std::filesystem::path(std::string(240, 'p') + ".jpg"), "x");
    ASSERT_EQ(::fchdir(here), 0);
    ::close(here);
    const auto found = listed(deep);
    ASSERT_EQ(found.size(), 1u) << "listed although its own path is too long to be opened";
    EXPECT_EQ(found.begin()->second.size, 1);
    const auto path = deep / found.begin()->first;
    EXPECT_GT(path.string().size(), 4096u);
    EXPECT_FALSE(files.status(path));
    EXPECT_FALSE(files.read(path, 10));
    const auto any = [](std::string_view) { return true; };
    EXPECT_FALSE(files.listWithStatus(deep / part / part, any));
    EXPECT_FALSE(files.listWithStatus(folder / "none", any));
    EXPECT_FALSE(files.resolved(folder / "none"));
}

TEST_F(ListingTest, ALockKeepsOthersOutUntilItEnds) {
    auto held = files.lockFolder(folder.path(), 0);
    ASSERT_TRUE(held);
    const auto other = files.lockFolder(folder.path(), 0);
    ASSERT_FALSE(other);
    EXPECT_THAT(other.error().message, testing::HasSubstr("in use by another program"));
    held->reset();
    EXPECT_TRUE(files.lockFolder(folder.path(), 0));
    EXPECT_FALSE(files.lockFolder(folder / "none", 0));
}

} // namespace
} // namespace kelvaro
