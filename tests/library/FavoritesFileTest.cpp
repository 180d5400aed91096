// The file of a folder's favourites: what is read, what a change leaves, what is never replaced.
#include "library/FavoritesFile.h"

#include "fakes/FailingFileSystem.h"
#include "fakes/TemporaryFolder.h"
#include "platform/system/PosixFileSystem.h"

#include <gtest/gtest.h>

namespace kelvaro {
namespace {

using Names = FavoritesFile::Names;

class FavoritesFileTest : public testing::Test {
protected:
    TemporaryFolder folder;
    PosixFileSystem files;
    FavoritesFile favorites{files};
    const std::filesystem::path file = folder / ".tarnwell/favorites.json";
};

TEST_F(FavoritesFileTest, ChangesMergeWithWhatIsThere) {
    EXPECT_EQ(*favorites.read(folder.path()), Names{});
    EXPECT_EQ(*favorites.change(folder.path(), {{"b.jpg", true}, {"a.jpg", true}}),
              (Names{"a.jpg", "b.jpg"}));
    writeFile(file, R"(["c.jpg", "a.jpg", "gone.jpg"])"); // another program's
    EXPECT_EQ(*favorites.change(folder.path(), {{"a.jpg", false}, {"\xFF.jpg", true}}),
              (Names{"c.jpg", "gone.jpg", "\xFF.jpg"}));
    EXPECT_EQ(*favorites.read(folder.path()), (Names{"c.jpg", "gone.jpg", "\xFF.jpg"}));
}

TEST_F(FavoritesFileTest, TheLastOneTakesTheFileAlong) {
    EXPECT_TRUE(favorites.change(folder.path(), {{"a.jpg", false}}));
    EXPECT_FALSE(std::filesystem::exists(folder / ".tarnwell"))
        << "nothing to remove, nothing made";
    EXPECT_TRUE(favorites.change(folder.path(), {{"a.jpg", true}}));
    EXPECT_TRUE(std::filesystem::exists(file));
    EXPECT_TRUE(favorites.change(folder.path(), {{"a.jpg", false}}));
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_TRUE(favorites.change(folder.path(), {{"a.jpg", false}}));
}

TEST_F(FavoritesFileTest, WhatIsNoListOfNamesIsNeitherReadNorReplaced) {
    for (const std::string content : {"{}", "[1]", "[\"a.jpg\", null]", "", "[\"a", "\"a.jpg\""}) {
        writeFile(file, content);
        EXPECT_FALSE(favorites.read(folder.path())) << content;
        EXPECT_FALSE(favorites.change(folder.path(), {{"b.jpg", true}})) << content;
        EXPECT_EQ(readFile(file), content);
    }
}

TEST_F(FavoritesFileTest, AFailureAtAnyCallLosesNothing) {
    EXPECT_TRUE(favorites.change(folder.path(), {{"a.jpg", true}}));
    const std::string before = readFile(file);
    for (int call = 1;; ++call) {
        FailingFileSystem failing(files, {.failAtCall = call});
        const auto changed = FavoritesFile(failing).change(folder.path(), {{"b.jpg", true}});
        if (!failing.hasFailed()) break;
        EXPECT_FALSE(changed) << "call " << call;
        EXPECT_EQ(readFile(file), before) << "call " << call;
        EXPECT_EQ(namesIn(folder / ".tarnwell"), std::set<std::string>{"favorites.json"});
        ASSERT_LT(call, 100);
    }
    EXPECT_EQ(*favorites.read(folder.path()), (Names{"a.jpg", "b.jpg"}));
}

TEST_F(FavoritesFileTest, AnAbsentFolderIsAFailure) {
    EXPECT_FALSE(favorites.read((folder / "none").string()));
    EXPECT_FALSE(favorites.change((folder / "none").string(), {{"a.jpg", true}}));
}

} // namespace
} // namespace kelvaro
