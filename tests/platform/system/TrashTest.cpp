// The Trash as the freedesktop standard describes it, in folders of the test's own.
#include "fakes/ManualClock.h"
#include "fakes/OwnDisk.h"
#include "fakes/TemporaryFolder.h"
#include "platform/system/FreedesktopTrash.h"
#include "platform/system/IcuCalendar.h"

#include <gmock/gmock.h>

namespace kelvaro {
namespace {

using testing::HasSubstr;

TEST(TrashTest, AFileOfTheHomeDiskGoesToTheHomeTrashWithItsRecord) {
    TemporaryFolder root;
    ManualClock clock; // 2023-11-14 22:30 UTC
    const auto calendar = makeIcuCalendar("Europe/Berlin");
    FreedesktopTrash trash(root / "share/Trash", clock, *calendar);
    const auto photo = root / "photos/50% Müller \xFF.jpg";
    for (const std::string content : {"first", "second"}) {
        writeFile(photo, content);
        ASSERT_TRUE(trash.put(photo));
        EXPECT_FALSE(std::filesystem::exists(photo));
    }
    const auto files = root / "share/Trash/files", info = root / "share/Trash/info";
    EXPECT_EQ(readFile(files / "50% Müller \xFF.jpg"), "first");
    EXPECT_EQ(readFile(files / "50% Müller \xFF 2.jpg"), "second");
    const std::string record = readFile(info / "50% Müller \xFF.jpg.trashinfo");
    EXPECT_EQ(record, "[Trash Info]\nPath=" + root.path().string() +
                          "/photos/50%25%20M%C3%BCller%20%FF.jpg\n"
                          "DeletionDate=2023-11-14T23:30:00\n");
    EXPECT_EQ(trash.put(photo).error().kind, FailureKind::notFound);
    EXPECT_EQ(namesIn(info).size(), 2u) << "a failure leaves no record";
}

TEST(TrashTest, AFileOfAnotherDiskGoesToTheTrashAtItsTop) {
    TemporaryFolder root;
    ManualClock clock;
    const auto calendar = makeIcuCalendar("UTC");
    const auto disk = root / "disk";
    const auto result = withOwnDisk(disk, "1m", [&] {
        FreedesktopTrash trash(root / "share/Trash", clock, *calendar);
        writeFile(disk / "trip/a.jpg", "a");
        writeFile(disk / "trip/b.jpg", "b");
        const std::string user = std::to_string(::getuid());
        const auto own = disk / (".Trash-" + user);
        if (!trash.put(disk / "trip/a.jpg")) return 1;
        if (readFile(own / "files/a.jpg") != "a") return 2;
        if (readFile(own / "info/a.jpg.trashinfo").find("Path=trip/a.jpg\n") == std::string::npos)
            return 3;
        // One that the administrator made for everybody comes first.
        std::filesystem::create_directory(disk / ".Trash");
        std::filesystem::permissions(disk / ".Trash", std::filesystem::perms(01777));
        if (!trash.put(disk / "trip/b.jpg")) return 4;
        if (readFile(disk / ".Trash" / user / "files/b.jpg") != "b") return 5;
        // A disk that nothing can be written to.
        writeFile(disk / "trip/c.jpg", "c");
        setReadOnly(disk, true);
        if (trash.put(disk / "trip/c.jpg")) return 6;
        return readFile(disk / "trip/c.jpg") == "c" ? 0 : 7;
    });
    if (!result) GTEST_SKIP() << "no mounts for this user";
    EXPECT_EQ(*result, 0) << "the number of the first step that failed";
}

} // namespace
} // namespace kelvaro
