// The store with a metadata cache: what appears when, what is read again, and edits that follow
// their photos to new places.
#include "StoreScene.h"

#include "library/MovedEdits.h"
#include "platform/cache/SqliteMetaCache.h"
#include "recipe/Sidecar.h"

#include <condition_variable>
#include <gmock/gmock.h>
#include <mutex>

namespace kelvaro {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Takes a file's whole content for the capture time, and can be held up before each file.
class ContentReader final : public PropertyReader {
public:
    explicit ContentReader(FileSystem& files) : files_(files) {}
    Result<PhotoProperties> read(const std::filesystem::path& path) override {
        {
            std::unique_lock guard(lock_);
            opened_.wait(guard, [&] { return isOpen_; });
            ++reads_;
        }
        const auto bytes = files_.read(path, 1000);
        if (!bytes) return fail(bytes.error());
        const std::string content(reinterpret_cast<const char*>(bytes->data()), bytes->size());
        PhotoProperties properties;
        properties.exif.set("DateTimeOriginal", content);
        properties.tiff.set("Model", std::string("Lightbox"));
        return properties;
    }
    PhotoColour readColour(const std::filesystem::path&) override { return {}; }
    void setOpen(bool isOpen) {
        std::lock_guard guard(lock_);
        isOpen_ = isOpen;
        opened_.notify_all();
    }
    int takeReads() {
        std::lock_guard guard(lock_);
        return std::exchange(reads_, 0);
    }

private:
    FileSystem& files_;
    std::mutex lock_; // guards the two below
    bool isOpen_ = true;
    int reads_ = 0;
    std::condition_variable opened_;
};

std::string timeOf(int second) {
    return "2024:03:09 18:30:" + std::string(second < 10 ? "0" : "") + std::to_string(second);
}

class IndexingTest : public testing::Test {
protected:
    StoreScene scene;
    ContentReader reader{scene.disk};
    SqliteMetaCache cache{scene.root / "caches/metadata.sqlite"};
    const Adjustments bright{.exposure = 1};

    LibraryStore& open() {
        scene.properties = &reader;
        scene.cache = &cache;
        return scene.open();
    }
    // Photos that were taken at second 0, 1, 2 …
    FolderUrl taken(const std::string& name, const std::vector<std::string>& files) {
        const FolderUrl folder = scene.folder(name);
        int second = 0;
        for (const std::string& file : files)
            writeFile(std::filesystem::path(folder) / file, timeOf(second++));
        return folder;
    }
    void move(const PhotoUrl& from, const PhotoUrl& to) {
        std::filesystem::rename(from, to);
        scene.store->rescanAll();
        scene.settle();
    }
};

TEST_F(IndexingTest, PhotosAppearWhileTheirMetadataIsRead) {
    LibraryStore& store = open();
    const FolderUrl folder = taken("a", {"1.jpg", "2.jpg"});
    reader.setOpen(false);
    store.addFolder(folder);
    EXPECT_TRUE(scene.main.runUntil([&] { return scene.visible().size() == 2; }, 30));
    EXPECT_EQ(store.meta(folder + "/1.jpg"), nullptr);
    EXPECT_FALSE(store.isIdle());
    reader.setOpen(true);
    scene.settle();
    EXPECT_EQ(store.meta(folder + "/2.jpg")->camera, "Lightbox");
    EXPECT_THAT(store.filterOptions()->cameras, ElementsAre("Lightbox"));
    store.setSearchText("lightb");
    scene.settle();
    EXPECT_EQ(scene.visible().size(), 2u);
}

TEST_F(IndexingTest, OnlyWhatIsNewIsRead) {
    const FolderUrl a = taken("a", {"1.jpg", "2.jpg"}), b = taken("b", {"3.jpg"});
    open();
    scene.store->addFolder(a);
    scene.store->addFolder(b);
    scene.settle();
    EXPECT_EQ(reader.takeReads(), 3);
    LibraryStore& again = open();
    EXPECT_EQ(reader.takeReads(), 0);
    EXPECT_TRUE(again.meta(a + "/1.jpg") && again.meta(a + "/2.jpg") && again.meta(b + "/3.jpg"));
    again.rescanAll();
    scene.settle();
    EXPECT_EQ(reader.takeReads(), 0);
    const auto before = again.meta(a + "/1.jpg")->taken->nanoseconds;
    writeFile(a + "/1.jpg", timeOf(7) + " "); // another size, whatever the clock's step
    writeFile(a + "/1.jpg", timeOf(7));
    std::filesystem::last_write_time(a + "/1.jpg", std::filesystem::file_time_type());
    scene.watcher.change(a);
    scene.settle();
    EXPECT_EQ(reader.takeReads(), 1);
    EXPECT_EQ(again.meta(a + "/1.jpg")->taken->nanoseconds - before, 7'000'000'000);
}

TEST_F(IndexingTest, EditsFollowMovedPhotos) {
    const FolderUrl a = taken("a", {"1.jpg", "2.jpg"}), b = taken("b", {});
    LibraryStore& store = open();
    store.addFolder(a);
    store.addFolder(b);
    scene.settle();
    store.setAdjustments(a + "/1.jpg", bright);
    store.setFavorite({a + "/1.jpg"}, true);
    scene.settle();
    move(a + "/1.jpg", b + "/new name.JPG");
    ASSERT_NE(store.edit(b + "/new name.JPG"), nullptr);
    EXPECT_EQ(*store.edit(b + "/new name.JPG"), bright);
    EXPECT_TRUE(store.isFavorite(b + "/new name.JPG"));
    EXPECT_EQ(store.notice().get()->text, "A moved photo has its edits again");
    EXPECT_TRUE(std::filesystem::exists(a + "/.tarnwell/1.jpg.json")) << "copied, not moved";
    // What the user then does to it stays.
    store.setAdjustments(b + "/new name.JPG", {});
    scene.settle();
    store.rescanAll();
    scene.settle();
    EXPECT_EQ(store.edit(b + "/new name.JPG"), nullptr);
    open();
    EXPECT_EQ(scene.store->edit(b + "/new name.JPG"), nullptr);
}

TEST_F(IndexingTest, EditsFollowPhotosThatWereMovedBetweenTwoRuns) {
    const FolderUrl a = taken("a", {"1.jpg", "2.jpg"});
    open().addFolder(a);
    scene.settle();
    scene.store->setAdjustments(a + "/1.jpg", bright);
    scene.settle();
    scene.store.reset();
    std::filesystem::rename(a + "/1.jpg", a + "/x.jpg");
    LibraryStore& store = open();
    ASSERT_NE(store.edit(a + "/x.jpg"), nullptr);
    EXPECT_EQ(*store.edit(a + "/x.jpg"), bright);
    EXPECT_EQ(store.edit(a + "/2.jpg"), nullptr);
}

TEST_F(IndexingTest, UncertainPhotosGetNoEdits) {
    const FolderUrl a = taken("a", {"1.jpg", "2.jpg", "3.jpg"}), b = taken("b", {});
    std::filesystem::copy(a + "/3.jpg", b + "/a copy.jpg"); // there all along
    LibraryStore& store = open();
    store.addFolder(a);
    store.addFolder(b);
    scene.settle();
    for (const char* name : {"/1.jpg", "/2.jpg", "/3.jpg"})
        store.setAdjustments(a + name, bright);
    scene.settle();
    scene.clock.advance(MovedEdits::newForSeconds + 1);
    const Adjustments own{.contrast = 5};
    std::filesystem::copy(a + "/1.jpg", b + "/two.jpg"); // two new places for one photo
    std::filesystem::rename(a + "/1.jpg", b + "/one.jpg");
    std::filesystem::rename(a + "/2.jpg", b + "/own.jpg"); // with an edit of its own
    ASSERT_TRUE(Sidecar(scene.disk, scene.random).save(b + "/own.jpg", own, 1e9));
    std::filesystem::remove(a + "/3.jpg");
    store.rescanAll();
    scene.settle();
    for (const char* name : {"/one.jpg", "/two.jpg", "/a copy.jpg"})
        EXPECT_EQ(store.edit(b + name), nullptr) << name;
    EXPECT_EQ(*store.edit(b + "/own.jpg"), own);
    EXPECT_EQ(store.notice().get(), std::nullopt);
}

} // namespace
} // namespace kelvaro
