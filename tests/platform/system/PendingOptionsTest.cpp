// New files that never replace anything, and temporaries that outlive the process which wrote them.
#include "fakes/TemporaryFolder.h"
#include "platform/system/PosixFileSystem.h"
#include "platform/system/PosixPendingFile.h"

#include <csignal>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/wait.h>

namespace kelvaro {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr FileTime kLongAgo{0}, kEverything{std::numeric_limits<std::int64_t>::max()};

std::span<const std::byte> bytesOf(std::string_view text) {
    return std::as_bytes(std::span(text.data(), text.size()));
}

class PendingOptionsTest : public testing::Test {
protected:
    std::unique_ptr<PendingFile> begin(const char* name) {
        auto file = files.createWith(folder / name, {".temporary", true});
        return file ? std::move(*file) : nullptr;
    }
    TemporaryFolder folder;
    PosixFileSystem files;
};

TEST_F(PendingOptionsTest, WritesUnderTheGivenNameUntilItIsMoved) {
    const auto file = begin("a");
    ASSERT_TRUE(file->writeAt(0, bytesOf("new")));
    EXPECT_THAT(namesIn(folder.path()), ElementsAre(".temporary"));
    ASSERT_TRUE(file->commit());
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("a"));
    EXPECT_EQ(readFile(folder / "a"), "new");
}

TEST_F(PendingOptionsTest, NeverReplacesWhatAppearsMeanwhile) {
    const struct {
        const char* name;
        std::function<void(const fs::path&)> make;
    } cases[] = {
        {"file", [](const fs::path& path) { writeFile(path, "old"); }},
        {"folder", [](const fs::path& path) { fs::create_directory(path); }},
        {"link", [](const fs::path& path) { fs::create_symlink("file", path); }},
        {"dangling", [](const fs::path& path) { fs::create_symlink("nowhere", path); }},
    };
    for (const auto& c : cases) {
        auto file = begin(c.name);
        ASSERT_TRUE(file->writeAt(0, bytesOf("new")));
        c.make(folder / c.name);
        const auto status = fs::symlink_status(folder / c.name);
        const auto moved = file->commit();
        ASSERT_FALSE(moved) << c.name;
        EXPECT_EQ(moved.error().kind, FailureKind::alreadyThere) << c.name;
        EXPECT_EQ(fs::symlink_status(folder / c.name), status) << c.name;
        EXPECT_FALSE(begin(c.name)) << "refused at once where it stands already: " << c.name;
    }
    EXPECT_EQ(readFile(folder / "file"), "old");
    EXPECT_THAT(namesIn(folder.path()), testing::Not(testing::Contains(".temporary")));
}

TEST_F(PendingOptionsTest, RenamesOnlyToNewNames) {
    writeFile(folder / "a", "a");
    writeFile(folder / "b", "b");
    const Descriptor open(::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY));
    EXPECT_FALSE(renameToNew(open, "a", "b"));
    EXPECT_EQ(errno, EEXIST);
    EXPECT_TRUE(renameToNew(open, "a", "c"));
    EXPECT_EQ(readFile(folder / "b") + readFile(folder / "c"), "ba");
}

TEST_F(PendingOptionsTest, WhatIsBeingWrittenIsNotAbandoned) {
    const auto file = begin("a");
    EXPECT_FALSE(files.removeAbandoned(folder / ".temporary", kEverything).value());
    ASSERT_TRUE(file->commit());
    EXPECT_EQ(files.removeAbandoned(folder / ".temporary", kEverything).error().kind,
              FailureKind::notFound);
}

TEST_F(PendingOptionsTest, WhatAKilledProcessLeavesIsRemoved) {
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        const auto file = begin("a");
        const bool written = file && file->writeAt(0, bytesOf("half")).has_value();
        static_cast<void>(::write(ready[1], written ? "y" : "n", 1));
        ::pause();
        ::_exit(0);
    }
    char answer = 0;
    ASSERT_EQ(::read(ready[0], &answer, 1), 1);
    ASSERT_EQ(answer, 'y');
    EXPECT_FALSE(files.removeAbandoned(folder / ".temporary", kEverything).value());
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    EXPECT_TRUE(files.removeAbandoned(folder / ".temporary", kLongAgo).value());
    EXPECT_THAT(namesIn(folder.path()), IsEmpty());
    ::close(ready[0]);
    ::close(ready[1]);
}

TEST_F(PendingOptionsTest, RemovesNothingButFiles) {
    fs::create_directory(folder / "folder");
    writeFile(folder / "kept", "x");
    fs::create_symlink("kept", folder / "link");
    EXPECT_FALSE(files.removeAbandoned(folder / "link", kEverything).value_or(false));
    EXPECT_FALSE(files.removeAbandoned(folder / "folder", kEverything).value_or(false));
    EXPECT_EQ(namesIn(folder.path()).size(), 3u);
}

TEST_F(PendingOptionsTest, TellsLinksFromWhatTheyLeadTo) {
    writeFile(folder / "file", "x");
    fs::create_symlink("file", folder / "link");
    fs::create_symlink("nowhere", folder / "dangling");
    EXPECT_EQ(files.linkStatus(folder / "file")->kind, FileStatus::Kind::file);
    EXPECT_EQ(files.linkStatus(folder / "link")->kind, FileStatus::Kind::other);
    EXPECT_EQ(files.linkStatus(folder / "dangling")->kind, FileStatus::Kind::other);
    EXPECT_EQ(files.linkStatus(folder / "none").error().kind, FailureKind::notFound);
}

} // namespace
} // namespace kelvaro
