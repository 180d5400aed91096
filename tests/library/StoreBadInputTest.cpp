// What disks really hold: files that are no files, names and times that cannot be, photos that
// vanish, disks that take nothing. The rest still shows, and no change is lost.
#include "StoreScene.h"

#include "fakes/OwnDisk.h"
#include "platform/cache/SqliteMetaCache.h"
#include "platform/metadata/ExifPropertyReader.h"
#include "recipe/Sidecar.h"

#include <atomic>
#include <fcntl.h>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace kelvaro {
namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;

// Reads what is there, after it has taken "vanishing.jpg" away.
class ReaderOfVanishing final : public PropertyReader {
public:
    Result<PhotoProperties> read(const fs::path& path) override {
        if (path.filename() == "vanishing.jpg") fs::remove(path);
        return real_.read(path);
    }
    PhotoColour readColour(const fs::path& path) override { return real_.readColour(path); }

private:
    ExifPropertyReader real_;
};

// Tells the file's content as the camera's name. The first look at "growing.jpg" is overtaken by a
// program that writes it anew meanwhile.
class ReaderOfGrowing final : public PropertyReader {
public:
    Result<PhotoProperties> read(const fs::path& path) override {
        PhotoProperties properties;
        properties.tiff.set("Model", readFile(path));
        if (path.filename() == "growing.jpg" && isFirst_.exchange(false))
            writeFile(path, "later and longer");
        return properties;
    }
    PhotoColour readColour(const fs::path&) override { return {}; }

private:
    std::atomic<bool> isFirst_ = true;
};

// For as long as it lives the process has no more rights than any user: root may read everything.
class WithoutPrivileges {
public:
    explicit WithoutPrivileges(const fs::path& owned) : wasRoot_(::geteuid() == 0) {
        if (!wasRoot_) return;
        for (const auto& entry : fs::recursive_directory_iterator(owned))
            EXPECT_EQ(::lchown(entry.path().c_str(), nobody, nobody), 0);
        EXPECT_EQ(::chown(owned.c_str(), nobody, nobody), 0);
        EXPECT_EQ(::seteuid(nobody), 0);
    }
    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;
    ~WithoutPrivileges() {
        if (wasRoot_) {
            EXPECT_EQ(::seteuid(0), 0);
        }
    }

private:
    static constexpr uid_t nobody = 65534;
    const bool wasRoot_;
};

// A JPEG whose EXIF directory promises 65,535 entries, and whose first one 2 GB of text.
std::string lyingJpeg() {
    const std::string tiff("II*\0\x08\0\0\0\xFF\xFF\x0F\x01\x02\0\xFF\xFF\xFF\x7F\x20\0\0\0", 22);
    const std::string exif = std::string("Exif\0\0", 6) + tiff;
    std::string jpeg = "\xFF\xD8\xFF\xE1";
    jpeg += std::string("\x7F\xFF", 2) + exif; // a segment longer than the file
    return jpeg;
}

TEST(StoreBadInputTest, TheRestOfTheFolderStillShows) {
    StoreScene scene;
    ReaderOfVanishing reader;
    scene.properties = &reader;
    LibraryStore& store = scene.open();
    const fs::path folder = scene.folder("odd");
    for (const char* name : {"good.jpg", "not \xFFutf8\n.png", "old.jpg", "vanishing.jpg"})
        writeFile(folder / name, "photo");
    writeFile(folder / "lying.jpg", lyingJpeg());
    writeFile(folder / "empty.cr3", "");
    const timespec before1970[] = {{-1'000'000'000, 0}, {-1'000'000'000, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (folder / "old.jpg").c_str(), before1970, 0), 0);
    fs::create_symlink("loop.jpg", folder / "loop.jpg");
    fs::create_symlink("..", folder / "up.jpg");
    fs::create_symlink("/dev/zero", folder / "device.jpg");
    ASSERT_EQ(::mkfifo((folder / "pipe.jpg").c_str(), 0600), 0);
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    (folder / "s.jpg").string().copy(address.sun_path, sizeof address.sun_path - 1);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(::bind(socket, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ::close(socket);
    ASSERT_EQ(store.addFolder(folder), AddFolderResult::added);
    scene.settle();
    std::vector<std::string> expected{"empty.cr3",          "good.jpg", "lying.jpg",
                                      "not \xFFutf8\n.png", "old.jpg",  "vanishing.jpg"};
    EXPECT_EQ(scene.visible(), expected);
    EXPECT_EQ(store.errorMessage().get(), std::nullopt);
    EXPECT_EQ(store.view().get()->photos.back()->url, (folder / "old.jpg").string());
    EXPECT_EQ(store.view().get()->groups.back().title, "Sunday, 24 April 1938");
    for (const std::string& name : expected) {
        store.requestInfo((folder / name).string());
        scene.settle();
        ASSERT_TRUE(store.info().get()) << name;
        EXPECT_EQ(store.info().get()->camera, std::nullopt) << name;
    }
    // Marks of odd names are kept like others.
    const PhotoUrl odd = (folder / "not \xFFutf8\n.png").string();
    store.setFavorite({odd}, true);
    store.setAdjustments(odd, {.exposure = 1});
    scene.settle();
    LibraryStore& again = scene.open();
    EXPECT_TRUE(again.isFavorite(odd));
    EXPECT_NE(again.edit(odd), nullptr);
    expected.pop_back(); // has vanished
    EXPECT_EQ(scene.visible(), expected);
}

// Every change of a photo on a disk that takes nothing waits, is told, and is written later.
void expectWaiting(StoreScene& scene, const FolderUrl& folder, const PhotoUrl& photo,
                   const std::function<void()>& mend) {
    LibraryStore& store = *scene.store;
    store.setFavorite({photo}, true);
    scene.settle();
    EXPECT_EQ(store.errorMessage().get(), "Favorites haven't been saved:\ntrip");
    store.clearError();
    for (int i = 1; i <= 3; ++i) {
        store.setAdjustments(photo, {.exposure = 0.25 * i});
        scene.settle();
        EXPECT_EQ(store.errorMessage()->has_value(), i == 1) << "told once while one edits";
        store.clearError();
    }
    ASSERT_TRUE(store.quitCheck());
    EXPECT_TRUE(store.isFavorite(photo));
    EXPECT_EQ(store.edit(photo)->exposure, 0.75);
    mend();
    store.rescanFolder(folder);
    scene.settle();
    EXPECT_EQ(store.quitCheck(), std::nullopt);
    const auto edit = Sidecar(scene.disk, scene.random).loadPhoto(photo);
    ASSERT_TRUE(edit && *edit);
    EXPECT_EQ((*edit)->adjustments.exposure, 0.75);
    EXPECT_THAT(readFile(folder + "/.tarnwell/favorites.json"), testing::HasSubstr("jpg"));
}

TEST(StoreBadInputTest, FullAndReadOnlyDisksLoseNothing) {
    TemporaryFolder root;
    const fs::path disk = root / "disk";
    const auto result = withOwnDisk(disk, "256k", [&] {
        writeFile(disk / "trip/full.jpg", "1");
        writeFile(disk / "trip/locked.jpg", "2");
        StoreScene scene;
        LibraryStore& store = scene.open();
        const FolderUrl folder = fs::canonical(disk / "trip").string();
        store.addFolder(folder);
        scene.settle();
        {
            std::ofstream filler(disk / "filler", std::ios::binary);
            while (filler.write("0123456789abcdef", 16).flush()) {
            }
        }
        expectWaiting(scene, folder, folder + "/full.jpg", [&] { fs::remove(disk / "filler"); });
        setReadOnly(disk, true);
        expectWaiting(scene, folder, folder + "/locked.jpg", [&] { setReadOnly(disk, false); });
        return testing::Test::HasFailure() ? 1 : 0;
    });
    if (!result) GTEST_SKIP() << "no mounts for this user";
    EXPECT_EQ(*result, 0);
}

TEST(StoreBadInputTest, WhatMayNotBeReadHidesNothingElse) {
    StoreScene scene;
    ExifPropertyReader reader;
    scene.properties = &reader;
    LibraryStore& store = scene.open();
    const fs::path mixed = scene.folder("mixed", {"good.jpg", "secret.jpg"});
    const fs::path closed = scene.folder("closed", {"unseen.jpg"});
    const fs::path marked = scene.folder("marked", {"edited.jpg"});
    ASSERT_TRUE(Sidecar(scene.disk, scene.random).save(marked / "edited.jpg", {.exposure = 1}, 1));
    const WithoutPrivileges user(scene.root.path());
    fs::permissions(mixed / "secret.jpg", fs::perms::none);
    fs::permissions(closed, fs::perms::owner_exec); // can be entered, not listed
    fs::permissions(marked / ".tarnwell", fs::perms::none);
    for (const fs::path& folder : {mixed, closed, marked})
        store.addFolder(folder);
    scene.settle();
    EXPECT_EQ(scene.visible(), (std::vector<std::string>{"edited.jpg", "good.jpg", "secret.jpg"}));
    EXPECT_THAT(*store.missingFolders(), testing::ElementsAre(closed.string()));
    EXPECT_EQ(store.errorMessage().get(), "Couldn't read some edits:\nCouldn't read edits in marked"
                                          "\nCouldn't read favorites in marked");
    store.clearError();
    store.requestInfo((mixed / "secret.jpg").string());
    scene.settle();
    EXPECT_EQ(store.info().get(), PhotoInfo{}) << "no information available";
    // Nothing is written over an edit that can't be read.
    store.setAdjustments((marked / "edited.jpg").string(), {.exposure = 2});
    scene.settle();
    EXPECT_TRUE(store.quitCheck());
    fs::permissions(closed, fs::perms::owner_all);
    fs::permissions(marked / ".tarnwell", fs::perms::owner_all);
    store.rescanAll();
    scene.settle();
    EXPECT_THAT(*store.missingFolders(), IsEmpty());
    EXPECT_EQ(scene.visible().size(), 4u);
    EXPECT_EQ(store.edit((marked / "edited.jpg").string())->exposure, 2);
    EXPECT_EQ(store.quitCheck(), std::nullopt);
}

TEST(StoreBadInputTest, AFileThatChangesWhileItIsReadIsReadAgain) {
    StoreScene scene;
    ReaderOfGrowing reader;
    scene.properties = &reader;
    SqliteMetaCache cache(scene.root / "cache.sqlite");
    scene.cache = &cache;
    scene.open();
    const FolderUrl folder = scene.added("trip", {"growing.jpg", "other.jpg"});
    const PhotoUrl growing = folder + "/growing.jpg";
    scene.watcher.change(folder);
    scene.settle();
    EXPECT_EQ(scene.store->meta(growing)->camera, "later and longer");
    EXPECT_EQ(scene.store->meta(folder + "/other.jpg")->camera, "photo");
    EXPECT_EQ(scene.open().meta(growing)->camera, "later and longer") << "out of the cache";
}

} // namespace
} // namespace kelvaro
