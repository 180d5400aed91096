// A library store with a folder of its own, real files and a main loop; settings, Trash, watching,
// drives and the clock are the test's.
#pragma once

#include "base/MainLoop.h"
#include "fakes/FailingFileSystem.h"
#include "fakes/FolderTrash.h"
#include "fakes/ManualClock.h"
#include "fakes/ManualWatcher.h"
#include "fakes/MemorySettings.h"
#include "fakes/SeededRandom.h"
#include "fakes/TemporaryFolder.h"
#include "library/LibraryStore.h"
#include "platform/system/IcuCalendar.h"
#include "platform/system/IcuTextRules.h"
#include "platform/system/PosixFileSystem.h"

#include <gtest/gtest.h>

namespace kelvaro {

// Knows nothing of any photo.
class NoProperties final : public PropertyReader {
public:
    Result<PhotoProperties> read(const std::filesystem::path&) override {
        return PhotoProperties{};
    }
    PhotoColour readColour(const std::filesystem::path&) override { return {}; }
};

class StoreScene {
public:
    TemporaryFolder root;
    PosixFileSystem disk;
    FailingFileSystem files{disk};
    MemorySettings settings;
    ManualClock clock;
    MainLoop main;
    SeededRandom random;
    NoProperties noProperties;
    PropertyReader* properties = &noProperties;
    MetaCache* cache = nullptr;
    FolderTrash trash{root / "trash"};
    Trash* realTrash = nullptr; // takes the other's place
    ManualWatcher watcher;
    ManualDrives drives;
    UserFolders folders{root.path(), root / "pictures", root / "settings", root / "support",
                        root / "caches"};
    std::unique_ptr<LocalCalendar> calendar = makeIcuCalendar("Europe/Berlin");
    std::unique_ptr<TextRules> texts = makeIcuTextRules("en_GB");
    std::unique_ptr<LibraryStore> store;

    LibraryStore& open() {
        store.reset();
        store =
            std::make_unique<LibraryStore>(LibraryServices{.files = files,
                                                           .settings = settings,
                                                           .folders = folders,
                                                           .clock = clock,
                                                           .main = main,
                                                           .random = random,
                                                           .properties = *properties,
                                                           .texts = *texts,
                                                           .calendar = *calendar,
                                                           .trash = realTrash ? *realTrash : trash,
                                                           .watcher = &watcher,
                                                           .drives = &drives,
                                                           .metaCache = cache});
        settle();
        return *store;
    }
    // Until nothing is on its way any more.
    void settle() {
        ASSERT_TRUE(main.runUntil([&] { return store->isIdle(); }, 30)) << "the store never rests";
        main.runPosted();
        if (!store->isIdle()) settle();
    }
    // A folder of small files, as the library knows it.
    FolderUrl folder(const std::string& name, const std::vector<std::string>& files_ = {}) {
        std::filesystem::create_directories(root / name);
        for (const std::string& file : files_)
            writeFile(root.path() / name / file, "photo");
        return std::filesystem::canonical(root / name).string();
    }
    FolderUrl added(const std::string& name, const std::vector<std::string>& files_ = {}) {
        const FolderUrl url = folder(name, files_);
        EXPECT_EQ(store->addFolder(url), AddFolderResult::added);
        settle();
        return url;
    }
    std::vector<std::string> visible() const {
        std::vector<std::string> names;
        for (const Photo* photo : store->view().get()->photos)
            names.emplace_back(fileNameOf(photo->url));
        std::sort(names.begin(), names.end());
        return names;
    }
};

} // namespace kelvaro
