// Folders, scanning, persistence, what is shown.
#include "StoreScene.h"

#include "platform/cache/SqliteMetaCache.h"

#include <future>
#include <gmock/gmock.h>
#include <thread>

namespace kelvaro {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Names = std::vector<std::string>;

class LibraryStoreTest : public testing::Test {
protected:
    StoreScene scene;
    LibraryStore& store = scene.open();

    void expectVisible(const Names& names) { EXPECT_EQ(scene.visible(), names); }
};

TEST_F(LibraryStoreTest, PhotosAreRegularFilesWithAPhotosExtension) {
    const FolderUrl folder =
        scene.folder("a", {"IMG_1.JPG", "IMG_2.jpeg", "a.CR3", ".hidden.jpg", "notes.txt", "jpg"});
    writeFile(scene.root / "a/x.jpg/inside.jpg", "");
    store.addFolder(folder);
    EXPECT_TRUE(store.indexingFolders()->contains(folder));
    scene.settle();
    expectVisible({"IMG_1.JPG", "IMG_2.jpeg", "a.CR3"});
    EXPECT_TRUE(store.photo(folder + "/a.CR3")->isRaw);
    EXPECT_FALSE(store.photo(folder + "/IMG_1.JPG")->isRaw);
    EXPECT_EQ(store.photo(folder + "/IMG_1.JPG")->name, "IMG_1");
    EXPECT_EQ(store.photo(folder + "/IMG_1.JPG")->fileSize, 5);
    EXPECT_THAT(*store.indexingFolders(), IsEmpty());
}

TEST_F(LibraryStoreTest, AFolderIsAddedOnceUnderWhateverPath) {
    const FolderUrl folder = scene.added("a", {"1.jpg"});
    std::filesystem::create_directory_symlink(folder, scene.root / "link");
    EXPECT_EQ(store.addFolder(scene.root / "link"), AddFolderResult::alreadyListed);
    EXPECT_EQ(store.addFolder(folder + "/../a/"), AddFolderResult::alreadyListed);
    EXPECT_EQ(store.addFolder(folder + "/1.jpg"), AddFolderResult::notAFolder);
    EXPECT_EQ(store.addFolder(scene.root / "none"), AddFolderResult::notAFolder);
    EXPECT_THAT(*store.folders(), ElementsAre(folder));
}

TEST_F(LibraryStoreTest, FoldersAndSettingsComeBackAfterARestart) {
    const FolderUrl b = scene.added("b", {"2.jpg"});
    const FolderUrl a = scene.added("a", {"1.jpg"});
    const FolderUrl odd = scene.added("\xFF odd", {"3.jpg"}); // not UTF-8
    store.setSortOrder({SortKey::name, true});
    store.setThumbSize(120);
    store.setShowsFilmstrip(false);
    store.setAppearance(AppearanceMode::dark);
    LibraryStore& again = scene.open();
    EXPECT_THAT(*again.folders(), ElementsAre(b, a, odd));
    expectVisible({"1.jpg", "2.jpg", "3.jpg"});
    EXPECT_EQ(*again.sortOrder(), (SortOrder{SortKey::name, true}));
    EXPECT_EQ(*again.thumbSize(), 120);
    EXPECT_FALSE(*again.showsFilmstrip());
    EXPECT_EQ(*again.appearance(), AppearanceMode::dark);
    again.removeFolder(a);
    scene.open();
    EXPECT_THAT(*scene.store->folders(), ElementsAre(b, odd));
}

TEST_F(LibraryStoreTest, EditsAndFavoritesComeBackWithTheirFolder) {
    const FolderUrl folder = scene.added("a", {"1.jpg", "2.jpg"});
    const Adjustments edit{.exposure = 1.5};
    store.setAdjustments(folder + "/1.jpg", edit);
    store.setFavorite({folder + "/2.jpg"}, true);
    scene.settle();
    store.removeFolder(folder);
    scene.settle();
    expectVisible({});
    EXPECT_EQ(store.edit(folder + "/1.jpg"), nullptr);
    EXPECT_FALSE(store.isFavorite(folder + "/2.jpg"));
    EXPECT_EQ(store.favoriteCount(), 0u);
    store.addFolder(folder);
    scene.settle();
    ASSERT_NE(store.edit(folder + "/1.jpg"), nullptr);
    EXPECT_EQ(*store.edit(folder + "/1.jpg"), edit);
    EXPECT_TRUE(store.isFavorite(folder + "/2.jpg"));
    store.setScope({Scope::Kind::edited, {}});
    scene.settle();
    expectVisible({"1.jpg"});
    store.setScope({Scope::Kind::favorites, {}});
    scene.settle();
    expectVisible({"2.jpg"});
}

TEST_F(LibraryStoreTest, ABurstOfChangesIsOneScanAndOnlyItsOwnFolders) {
    const FolderUrl a = scene.added("a", {"1.jpg"});
    scene.added("b", {"2.jpg"});
    writeFile(scene.root / "a/3.jpg", "");
    std::filesystem::remove(scene.root / "a/1.jpg");
    const int before = scene.files.calls();
    // The scan that the first change starts ends after the last one came.
    std::promise<void> lastCame;
    scene.files.onCall(
        [came = lastCame.get_future().share(), here = std::this_thread::get_id()](int) {
            if (std::this_thread::get_id() != here) came.wait();
        });
    for (int i = 0; i < 50; ++i)
        scene.watcher.change(a);
    scene.main.runPosted();
    lastCame.set_value();
    scene.settle();
    expectVisible({"2.jpg", "3.jpg"});
    // At most the scan that was running and one more, of three or four calls each.
    EXPECT_LE(scene.files.calls() - before, 16);
}

TEST_F(LibraryStoreTest, AnAbsentFolderComesBackByItself) {
    const FolderUrl folder = scene.added("drive/a", {"1.jpg"});
    store.setScope({Scope::Kind::folder, folder});
    std::filesystem::rename(scene.root / "drive", scene.root / "away");
    scene.watcher.change(folder);
    scene.settle();
    EXPECT_TRUE(store.missingFolders()->contains(folder));
    EXPECT_THAT(*store.folders(), ElementsAre(folder));
    expectVisible({});
    EXPECT_EQ(store.emptyState()->text, "This folder isn't available. Is the drive connected?");
    EXPECT_EQ(store.sidebarState().state().folders.at(0).label,
              "a — not available. Is the drive connected?");
    std::filesystem::rename(scene.root / "away", scene.root / "drive");
    scene.watcher.change(std::filesystem::path(folder).parent_path().parent_path());
    scene.settle();
    EXPECT_THAT(*store.missingFolders(), IsEmpty());
    expectVisible({"1.jpg"});
}

TEST_F(LibraryStoreTest, TheEmptyPlaceOfADriveIsNotItsFolder) {
    const std::string place = scene.folder("mnt");
    scene.drives.mount(place, "sdb1");
    const FolderUrl folder = scene.added("mnt/photos", {"1.jpg"});
    // The drive goes and leaves an empty folder of the same name.
    std::filesystem::rename(scene.root / "mnt/photos", scene.root / "unplugged");
    std::filesystem::create_directory(scene.root / "mnt/photos");
    scene.drives.mount(place, std::nullopt);
    scene.settle();
    EXPECT_TRUE(store.missingFolders()->contains(folder));
    store.setFavorite({folder + "/1.jpg"}, true);
    scene.settle();
    EXPECT_THAT(namesIn(folder), IsEmpty()) << "nothing is written below a missing drive";
    EXPECT_TRUE(store.unsavedFavorites()->contains(folder));
    std::filesystem::remove(scene.root / "mnt/photos");
    std::filesystem::rename(scene.root / "unplugged", scene.root / "mnt/photos");
    scene.drives.mount(place, "sdb1");
    scene.settle();
    EXPECT_THAT(*store.missingFolders(), IsEmpty());
    EXPECT_THAT(*store.unsavedFavorites(), IsEmpty());
    EXPECT_THAT(readFile(scene.root / "mnt/photos/.tarnwell/favorites.json"),
                testing::HasSubstr("1.jpg"));
}

TEST_F(LibraryStoreTest, TheEmptyPlaceOfADriveIsKnownAfterARestart) {
    SqliteMetaCache cache(scene.root / "cache.sqlite");
    scene.cache = &cache;
    const std::string place = scene.folder("mnt");
    scene.drives.mount(place, "sdb1");
    scene.open();
    const FolderUrl folder = scene.added("mnt/photos", {"1.jpg"});
    const auto restart = [&] { return scene.open().missingFolders()->contains(folder); };
    scene.store.reset();
    std::filesystem::remove(folder + "/1.jpg");
    scene.drives.mount(place, std::nullopt);
    EXPECT_TRUE(restart());
    writeFile(folder + "/1.jpg", "photo");
    scene.drives.mount(place, "sdc1"); // another letter today
    scene.settle();
    EXPECT_THAT(*scene.store->missingFolders(), IsEmpty());
    std::filesystem::remove(folder + "/1.jpg");
    EXPECT_FALSE(restart()) << "somebody has emptied it";
}

TEST_F(LibraryStoreTest, AnUnreadableFolderIsMissingAndTheOthersShow) {
    const FolderUrl a = scene.folder("a", {"1.jpg"});
    scene.added("b", {"2.jpg"});
    store.addFolder(a);
    scene.settle();
    std::filesystem::remove_all(a);
    writeFile(a, "now a file");
    store.rescanAll();
    scene.settle();
    EXPECT_TRUE(store.missingFolders()->contains(a));
    expectVisible({"2.jpg"});
}

TEST_F(LibraryStoreTest, SearchFilterAndScopeChangeWhatIsShown) {
    const FolderUrl a = scene.added("a", {"one.jpg", "two.CR3"});
    scene.added("b", {"one more.jpg"});
    store.setSearchText("one");
    scene.settle();
    expectVisible({"one more.jpg", "one.jpg"});
    store.setScope({Scope::Kind::folder, a});
    scene.settle();
    expectVisible({"one.jpg"});
    store.setSearchText("three");
    scene.settle();
    EXPECT_EQ(store.emptyState()->text, "No photos match “three”");
    store.setSearchText("");
    store.setFilter({.formats = {PhotoKind::raw}});
    scene.settle();
    expectVisible({"two.CR3"});
    EXPECT_THAT(store.filterOptions()->formats, ElementsAre(PhotoKind::raw, PhotoKind::image));
}

TEST_F(LibraryStoreTest, PickedOutPhotosShowAloneUntilTheyAreLeft) {
    const FolderUrl trip = scene.added("Trip", {"a.jpg", "b.jpg", "c.nef"});
    store.setScope({Scope::Kind::folder, trip});
    store.setSearchText("c");
    const auto images = std::make_shared<const PhotoRestriction>(PhotoRestriction{
        "Images", [](const Photo& photo, const PhotoMeta*) { return !photo.isRaw; }});
    store.showOnly(images); // of everything, whatever was searched before
    scene.settle();
    expectVisible({"a.jpg", "b.jpg"});
    EXPECT_EQ(store.rootState().state().windowTitle, "Images");
    EXPECT_EQ(*store.scope(), Scope());
    EXPECT_THAT(store.filterOptions()->formats, ElementsAre(PhotoKind::image));
    store.setSearchText("b.jpg"); // a search within
    scene.settle();
    expectVisible({"b.jpg"});
    store.setSearchText("");
    writeFile(trip + "/d.jpg", "photo"); // found later, and of the kind
    store.rescanAll();
    scene.settle();
    expectVisible({"a.jpg", "b.jpg", "d.jpg"});
    store.leaveRestriction();
    scene.settle();
    expectVisible({"a.jpg", "b.jpg", "c.nef", "d.jpg"});
    store.showOnly(images);
    store.setScope({}); // the scope that it had all along
    scene.settle();
    expectVisible({"a.jpg", "b.jpg", "c.nef", "d.jpg"});
}

TEST_F(LibraryStoreTest, InspectionSeesEveryPhotoAfterTheChangesSoFar) {
    const FolderUrl trip = scene.added("Trip", {"a.jpg", "b.jpg"});
    store.setFavorite({trip + "/a.jpg"}, true);
    Adjustments edit;
    edit.exposure = 1;
    store.setAdjustments(trip + "/b.jpg", edit);
    std::map<std::string, std::pair<bool, bool>> seen;
    store.inspect([&](const std::vector<KnownPhoto>& photos) {
        for (const KnownPhoto& facts : photos)
            seen[facts.photo->name] = {facts.isFavorite, facts.isEdited && facts.editDate};
    });
    scene.settle();
    EXPECT_EQ(seen, (std::map<std::string, std::pair<bool, bool>>{{"a", {true, false}},
                                                                  {"b", {false, true}}}));
    std::filesystem::rename(trip, trip + " is away");
    store.rescanAll();
    scene.settle();
    std::size_t left = 1;
    store.inspect([&](const std::vector<KnownPhoto>& photos) { left = photos.size(); });
    scene.settle();
    EXPECT_EQ(left, 0u);
}

TEST_F(LibraryStoreTest, TheSelectionNeverHoldsWhatIsNotShown) {
    const FolderUrl a = scene.added("a", {"1.jpg", "2.jpg", "3.jpg"});
    store.selectAll();
    EXPECT_EQ(store.selection()->size(), 3u);
    store.setSearchText("2");
    scene.settle();
    EXPECT_EQ(*store.selection(), PhotoSet{a + "/2.jpg"});
    std::filesystem::remove(scene.root / "a/2.jpg");
    scene.watcher.change(a);
    scene.settle();
    EXPECT_THAT(*store.selection(), IsEmpty());
}

TEST_F(LibraryStoreTest, AViewIsToldOnlyOfItsOwnChanges) {
    const FolderUrl a = scene.added("a", {"1.jpg", "2.jpg"});
    int sidebar = 0, commands = 0;
    const auto first = store.sidebarState().observe([&] { ++sidebar; });
    const auto second = store.commandState().observe([&] { ++commands; });
    store.setSelection({a + "/1.jpg"});
    store.setSelection({a + "/2.jpg"});
    scene.settle();
    EXPECT_EQ(sidebar, 0);
    EXPECT_EQ(commands, 1) << "two changes in one turn, one message";
    store.setFavorite({a + "/1.jpg"}, true);
    scene.main.runPosted();
    EXPECT_EQ(sidebar, 1);
    EXPECT_EQ(store.sidebarState().state().favoriteCount, 1u);
}

} // namespace
} // namespace kelvaro
