// Watched folders and the table of drives. What must happen is waited for, at most ten seconds.
#include "base/MainLoop.h"
#include "fakes/TemporaryFolder.h"
#include "platform/system/InotifyWatcher.h"
#include "platform/system/MountTable.h"

#include <gmock/gmock.h>
#include <map>

namespace kelvaro {
namespace {

TEST(WatchingTest, ABurstIsToldOnceAndOnlyOfWatchedFolders) {
    TemporaryFolder root;
    std::filesystem::create_directories(root / "a/inner");
    std::filesystem::create_directories(root / "b");
    MainLoop main;
    std::map<std::string, int> told;
    InotifyWatcher watcher;
    watcher.onChange([&](const std::filesystem::path& folder) {
        main.post([&told, folder] { ++told[folder.string()]; });
    });
    const std::string a = (root / "a").string(), b = (root / "b").string();
    ASSERT_TRUE(watcher.watch(a));
    ASSERT_TRUE(watcher.watch(a)) << "once more is the same";
    EXPECT_FALSE(watcher.watch(root / "none"));
    EXPECT_FALSE(watcher.watch(a + "/file"));
    writeFile(root / "a/inner/deep.jpg", "not directly inside");
    writeFile(root / "b/other.jpg", "not watched");
    for (int i = 0; i < 200; ++i)
        writeFile(root.path() / "a" / (std::to_string(i) + ".jpg"), "x");
    ASSERT_TRUE(main.runUntil([&] { return told[a] > 0; }, 10));
    EXPECT_EQ(told[a], 1);
    EXPECT_EQ(told[b], 0);
    std::filesystem::remove_all(root / "a");
    ASSERT_TRUE(main.runUntil([&] { return told[a] > 1; }, 10)) << "it has gone itself";
    std::filesystem::create_directory(root / "a");
    ASSERT_TRUE(watcher.watch(a)) << "another folder at the same place";
    writeFile(root / "a/1.jpg", "x");
    ASSERT_TRUE(main.runUntil([&] { return told[a] > 2; }, 10));
    ASSERT_TRUE(watcher.watch(b));
    watcher.unwatch(a);
    writeFile(root / "a/2.jpg", "x");
    writeFile(root / "b/2.jpg", "x");
    ASSERT_TRUE(main.runUntil([&] { return told[b] > 0; }, 10));
    EXPECT_EQ(told[a], 3) << "no longer watched";
}

TEST(WatchingTest, DrivesAreFoundByTheLongestMountPoint) {
    const auto drives =
        drivesIn("21 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
                 "garbage\n"
                 "30 21 8:17 / /media/ann/My\\040Disk rw shared:5 master:1 - vfat /dev/sdb1 rw\n"
                 "31 21 0:50 / /media/ann rw - tmpfs tmpfs rw\n"
                 "32 30 8:33 / /media/ann/My\\040Disk rw - vfat /dev/sdc1 rw\n");
    ASSERT_EQ(drives.size(), 4u);
    const auto at = [&](const std::string& path) { return driveHolding(drives, path)->device; };
    EXPECT_EQ(at("/home"), "8:1 /dev/sda1");
    EXPECT_EQ(at("/media/ann"), "0:50 tmpfs");
    EXPECT_EQ(at("/media/anna"), "8:1 /dev/sda1");
    EXPECT_EQ(at("/media/ann/My Disk/x"), "8:33 /dev/sdc1") << "the later mount lies on top";
    EXPECT_EQ(driveHolding(drives, "relative"), std::nullopt);
    EXPECT_EQ(MountTable().driveOf("/")->mountPoint, "/");
}

} // namespace
} // namespace kelvaro
