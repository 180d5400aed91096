// Photos that go to the Trash of the system and come back by the hand of another program, which
// knows nothing but the standard: on the home disk and on a disk of their own.
#include "StoreScene.h"

#include "fakes/OwnDisk.h"
#include "platform/system/FreedesktopTrash.h"

#include <fstream>

namespace kelvaro {
namespace {

namespace fs = std::filesystem;

std::string percentDecoded(const std::string& text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isCode = text[i] == '%' && i + 2 < text.size();
        plain +=
            isCode ? static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16)) : text[i];
        i += isCode ? 2 : 0;
    }
    return plain;
}

// What a file manager's "Restore" does; relative paths count from the top of the disk.
int putBack(const fs::path& trash, const fs::path& top) {
    constexpr std::string_view key = "Path=";
    int count = 0;
    for (const std::string& record : namesIn(trash / "info")) {
        std::ifstream lines(trash / "info" / record);
        std::string line;
        while (std::getline(lines, line) && !line.starts_with(key)) {
        }
        const fs::path origin = percentDecoded(line.substr(key.size()));
        fs::rename(trash / "files" / fs::path(record).stem(),
                   origin.is_absolute() ? origin : top / origin);
        fs::remove(trash / "info" / record);
        ++count;
    }
    return count;
}

// Edits three photos, moves two away and back again.
void runThere(StoreScene& scene, const fs::path& photos, const fs::path& trash,
              const fs::path& top) {
    for (const char* name : {"1.jpg", "50% Müller.jpg", "3.CR3"})
        writeFile(photos / name, "photo");
    FreedesktopTrash system(scene.root / "share/Trash", scene.clock, *scene.calendar);
    scene.realTrash = &system;
    LibraryStore& store = scene.open();
    const FolderUrl folder = fs::canonical(photos).string();
    store.addFolder(folder);
    scene.settle();
    const PhotoUrl one = folder + "/1.jpg", two = folder + "/50% Müller.jpg";
    store.setAdjustments(one, {.exposure = 1});
    store.setAdjustments(two, {.exposure = 2});
    store.setFavorite({two}, true);
    RemovalResult result;
    store.moveToTrash({one, two, one}, [&](const RemovalResult& r) { result = r; });
    scene.settle();
    EXPECT_TRUE(result.refused.empty());
    EXPECT_EQ(scene.visible(), (std::vector<std::string>{"3.CR3"}));
    EXPECT_EQ(namesIn(trash / "files").size(), 2u);
    EXPECT_EQ(putBack(trash, top), 2);
    scene.watcher.change(folder);
    scene.settle();
    ASSERT_TRUE(store.edit(one) && store.edit(two));
    EXPECT_EQ(store.edit(one)->exposure, 1);
    EXPECT_EQ(store.edit(two)->exposure, 2);
    EXPECT_TRUE(store.isFavorite(two));
    std::printf("%s: 2 photos to %s and back, %zu edits and %zu favorite\n", photos.c_str(),
                trash.c_str(), store.editedCount(), store.favoriteCount());
    std::fflush(stdout);
}

TEST(TrashAndBackTest, OnTheHomeDisk) {
    StoreScene scene;
    runThere(scene, scene.root / "photos", scene.root / "share/Trash", "/");
}

TEST(TrashAndBackTest, OnAnotherDisk) {
    TemporaryFolder root;
    const fs::path disk = root / "disk";
    const auto result = withOwnDisk(disk, "1m", [&] {
        StoreScene scene;
        runThere(scene, disk / "trip", disk / (".Trash-" + std::to_string(::getuid())), disk);
        return testing::Test::HasFailure() ? 1 : 0;
    });
    if (!result) GTEST_SKIP() << "no mounts for this user";
    EXPECT_EQ(*result, 0);
}

} // namespace
} // namespace kelvaro
