// Edits, favourites, absent drives and the journal, paste, Trash, and what another program writes.
#include "StoreScene.h"

#include "library/FavoritesFile.h"
#include "recipe/Sidecar.h"

#include <gmock/gmock.h>

namespace kelvaro {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LibraryEditingTest : public testing::Test {
protected:
    StoreScene scene;
    LibraryStore& store = scene.open();
    const FolderUrl folder = scene.added("drive/a", {"1.jpg", "2.jpg", "3.CR3"});
    const PhotoUrl one = folder + "/1.jpg", two = folder + "/2.jpg", three = folder + "/3.CR3";
    const Adjustments bright{.exposure = 1, .cropLeft = 0.1};

    void unplug() {
        std::filesystem::rename(scene.root / "drive", scene.root / "away");
        scene.watcher.change(folder);
        scene.settle();
        ASSERT_TRUE(scene.store->missingFolders()->contains(folder));
    }
    void plugIn() {
        std::filesystem::rename(scene.root / "away", scene.root / "drive");
        scene.store->rescanAll();
        scene.settle();
        ASSERT_THAT(*scene.store->missingFolders(), IsEmpty());
    }
    std::optional<StoredEdit> onDisk(const PhotoUrl& photo) {
        auto edit = Sidecar(scene.disk, scene.random).loadPhoto(photo);
        return edit ? *edit : std::nullopt;
    }
};

TEST_F(LibraryEditingTest, AnEditTakesEffectAtOnceAndIsWrittenSoon) {
    const auto version = *store.version();
    store.setAdjustments(one, bright);
    EXPECT_EQ(*store.edit(one), bright);
    EXPECT_GT(*store.version(), version);
    EXPECT_EQ(store.editDate(one)->nanoseconds,
              timeFromSeconds(scene.clock.wallSeconds()).nanoseconds);
    scene.settle();
    EXPECT_EQ(onDisk(one)->adjustments, bright);
    store.setAdjustments(one, {});
    scene.settle();
    EXPECT_EQ(store.edit(one), nullptr);
    EXPECT_FALSE(onDisk(one));
    EXPECT_EQ(store.quitCheck(), std::nullopt);
}

TEST_F(LibraryEditingTest, ChangesOfAnAbsentDriveSurviveARestartAndAreWrittenWhenItReturns) {
    unplug();
    store.setAdjustments(one, bright);
    store.setFavorite({two}, true);
    scene.settle();
    EXPECT_EQ(store.quitCheck()->title, "Some changes haven't been saved");
    EXPECT_THAT(store.quitCheck()->text, testing::HasSubstr("Edits haven't been saved:\na\n"));
    EXPECT_THAT(store.quitCheck()->text, testing::HasSubstr("Favorites haven't been saved:\na"));
    LibraryStore& again = scene.open();
    EXPECT_TRUE(again.quitCheck());
    EXPECT_FALSE(std::filesystem::exists(scene.root / "drive"));
    plugIn();
    EXPECT_EQ(again.quitCheck(), std::nullopt);
    EXPECT_EQ(onDisk(one)->adjustments, bright);
    EXPECT_EQ(*again.edit(one), bright);
    EXPECT_TRUE(again.isFavorite(two));
    EXPECT_THAT(readFile(folder + "/.tarnwell/favorites.json"), testing::HasSubstr("2.jpg"));
    EXPECT_THAT(namesIn(scene.root / "support"), IsEmpty()) << "the journal is done with";
}

TEST_F(LibraryEditingTest, WhatWaitedNeverReplacesALaterEdit) {
    unplug();
    store.setAdjustments(one, bright);
    scene.settle();
    scene.clock.advance(100);
    std::filesystem::rename(scene.root / "away", scene.root / "drive");
    const Adjustments later{.contrast = 20};
    ASSERT_TRUE(Sidecar(scene.disk, scene.random).save(one, later, scene.clock.wallSeconds()));
    store.rescanAll();
    scene.settle();
    EXPECT_EQ(onDisk(one)->adjustments, later);
    EXPECT_EQ(*store.edit(one), later);
    EXPECT_EQ(store.quitCheck(), std::nullopt);
}

TEST_F(LibraryEditingTest, QuittingWithoutSavingForgets) {
    unplug();
    store.setAdjustments(one, bright);
    scene.settle();
    store.discardUnsaved();
    store.waitForWrites();
    EXPECT_EQ(store.quitCheck(), std::nullopt);
    scene.open();
    plugIn();
    EXPECT_FALSE(onDisk(one));
}

// The drive's place is there after the restart, empty: the first look can't tell that it is absent.
TEST_F(LibraryEditingTest, WhatWaitsIsNotWrittenIntoAnEmptyPlaceOfADrive) {
    unplug();
    store.setAdjustments(one, bright);
    store.setFavorite({two}, true);
    scene.settle();
    std::filesystem::create_directories(folder);
    LibraryStore& again = scene.open();
    for (int look = 0; look < 2; ++look) {
        EXPECT_TRUE(again.quitCheck());
        EXPECT_TRUE(std::filesystem::is_empty(folder));
        again.rescanAll();
        scene.settle();
    }
    EXPECT_EQ(again.quitCheck()->text.find("Edits haven't been saved:\na\n"), 0u);
    std::filesystem::remove_all(scene.root / "drive");
    plugIn();
    EXPECT_EQ(again.quitCheck(), std::nullopt);
    EXPECT_EQ(onDisk(one)->adjustments, bright);
    EXPECT_TRUE(again.isFavorite(two));
}

TEST_F(LibraryEditingTest, QuittingTellsOfEditsThatTheEditorHolds) {
    struct : HeldEdits {
        std::vector<PhotoUrl> photos;
        int retries = 0;
        std::vector<PhotoUrl> unsaved() const override { return photos; }
        void retry() override { ++retries; }
        void discard() override { photos.clear(); }
    } held;
    store.setHeldEdits(&held);
    EXPECT_EQ(store.quitCheck(), std::nullopt);
    held.photos = {two, "/elsewhere/gone/4.jpg"};
    EXPECT_EQ(store.quitCheck()->text.find("Edits haven't been saved:\na\ngone\n\nKeep"), 0u);
    store.rescanFolder(folder);
    scene.settle();
    EXPECT_EQ(held.retries, 1) << "its folder could be read";
    store.discardUnsaved();
    EXPECT_EQ(store.quitCheck(), std::nullopt);
    store.setHeldEdits(nullptr);
}

TEST_F(LibraryEditingTest, ANewerEditIsNeverOverwrittenAndIsTold) {
    const std::string newer = R"({"processVersion": 13})";
    writeFile(folder + "/.tarnwell/1.jpg.json", newer);
    store.rescanAll();
    scene.settle();
    EXPECT_EQ(store.errorMessage().get(), "Couldn't read edits in a");
    store.clearError();
    store.rescanAll();
    scene.settle();
    EXPECT_EQ(store.errorMessage().get(), std::nullopt) << "told once";
    EXPECT_EQ(scene.visible(), (std::vector<std::string>{"1.jpg", "2.jpg", "3.CR3"}));
    store.setAdjustments(one, bright);
    scene.settle();
    EXPECT_EQ(store.errorMessage().get(), "This edit needs a newer Kelvaro.");
    EXPECT_EQ(readFile(folder + "/.tarnwell/1.jpg.json"), newer);
    EXPECT_TRUE(store.unsavedEdits()->contains(folder));
    EXPECT_EQ(*store.edit(one), bright) << "kept in memory";
}

TEST_F(LibraryEditingTest, FavoritesThatCannotBeReadOrWrittenAreTold) {
    writeFile(folder + "/.tarnwell/favorites.json", "{}");
    store.rescanAll();
    scene.settle();
    EXPECT_EQ(store.errorMessage().get(), "Couldn't read favorites in a");
    store.setFavorite({one}, true);
    EXPECT_TRUE(store.isFavorite(one));
    scene.settle();
    EXPECT_EQ(store.errorMessage().get(), "Favorites haven't been saved:\na");
    EXPECT_THAT(*store.unsavedFavorites(), ElementsAre(folder));
    EXPECT_EQ(readFile(folder + "/.tarnwell/favorites.json"), "{}");
    writeFile(folder + "/.tarnwell/favorites.json", "[\"2.jpg\"]"); // someone mends it
    store.setFavorite({three}, true);
    scene.settle();
    scene.watcher.change(folder + "/.tarnwell");
    scene.settle();
    EXPECT_THAT(*store.unsavedFavorites(), IsEmpty());
    EXPECT_TRUE(store.isFavorite(one) && store.isFavorite(two) && store.isFavorite(three));
}

TEST_F(LibraryEditingTest, ToggleMakesAllFavoritesUnlessAllAre) {
    const auto revision = *store.favoriteRevision();
    store.toggleFavorite({one});
    store.toggleFavorite({one, two, three});
    EXPECT_EQ(store.favoriteCount(), 3u);
    store.toggleFavorite({one, two, three});
    EXPECT_EQ(store.favoriteCount(), 0u);
    EXPECT_GT(*store.favoriteRevision(), revision);
    scene.settle();
    EXPECT_FALSE(std::filesystem::exists(folder + "/.tarnwell/favorites.json"));
}

TEST_F(LibraryEditingTest, PasteKeepsTheTargetsCrop) {
    store.copyAdjustments(two);
    EXPECT_EQ(store.notice().get()->text, "Adjustments copied");
    store.setAdjustments(one, bright);
    store.copyAdjustments(one);
    store.setAdjustments(two, {.cropTop = 0.2});
    store.pasteAdjustments({});
    EXPECT_EQ(*store.pasteCount(), 0u);
    store.pasteAdjustments({two, three});
    EXPECT_EQ(store.notice().get()->text, pastedNotice(2));
    EXPECT_EQ(*store.pasteCount(), 1u);
    EXPECT_EQ(*store.edit(two), (Adjustments{.exposure = 1, .cropTop = 0.2}));
    EXPECT_EQ(*store.edit(three), (Adjustments{.exposure = 1}));
    scene.settle();
    EXPECT_EQ(onDisk(three)->adjustments, *store.edit(three));
}

TEST_F(LibraryEditingTest, ATrashedPhotoComesBackWithItsEdits) {
    store.setAdjustments(one, bright);
    store.setFavorite({one}, true);
    store.selectAll();
    scene.trash.refused = {"2.jpg"};
    RemovalResult result;
    store.moveToTrash({one, two}, [&](const RemovalResult& r) { result = r; });
    scene.settle();
    EXPECT_THAT(result.removed, ElementsAre(one));
    EXPECT_THAT(result.refused, ElementsAre(two));
    EXPECT_EQ(scene.visible(), (std::vector<std::string>{"2.jpg", "3.CR3"}));
    EXPECT_EQ(*store.selection(), (PhotoSet{two, three}));
    EXPECT_EQ(store.photo(one), nullptr);
    EXPECT_EQ(store.editedCount(), 0u);
    std::filesystem::rename(scene.root / "trash/1.jpg", one);
    scene.watcher.change(folder);
    scene.settle();
    EXPECT_EQ(*store.edit(one), bright);
    EXPECT_TRUE(store.isFavorite(one));
}

TEST_F(LibraryEditingTest, DeletingIsForGoodAndTellsWhatIsLeft) {
    scene.files.refuseRemoval("2.jpg");
    store.deleteImmediately({one, two}, {});
    scene.settle();
    EXPECT_FALSE(std::filesystem::exists(one));
    EXPECT_TRUE(std::filesystem::exists(two));
    EXPECT_EQ(store.errorMessage().get(), "Couldn't delete:\n2.jpg");
}

TEST_F(LibraryEditingTest, WhatAnotherProgramWritesIsSeen) {
    Sidecar other(scene.disk, scene.random);
    store.setAdjustments(two, bright);
    scene.settle();
    scene.watcher.change(folder); // the hidden folder is new in it
    scene.settle();
    ASSERT_TRUE(other.save(one, bright, scene.clock.wallSeconds()));
    ASSERT_TRUE(other.save(two, {}, scene.clock.wallSeconds()));
    ASSERT_TRUE(FavoritesFile(scene.disk).change(folder, {{"3.CR3", true}}));
    scene.watcher.change(folder + "/.tarnwell");
    scene.settle();
    ASSERT_NE(store.edit(one), nullptr);
    EXPECT_EQ(*store.edit(one), bright);
    EXPECT_EQ(store.edit(two), nullptr);
    EXPECT_TRUE(store.isFavorite(three));
}

} // namespace
} // namespace kelvaro
