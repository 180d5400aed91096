// Folders that vanish, fill up or turn read-only, photos that change, things in the way, two
// exporters at once: nothing is overwritten, nothing half stays, the rest goes on.
#include "export/ExportStage.h"
#include "fakes/FailingFileSystem.h"

#include <csignal>
#include <future>
#include <gmock/gmock.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>

namespace kelvaro {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

// Others may remove what lies inside at the same time.
void removeWhileOthersWrite(const fs::path& folder) {
    std::error_code failure;
    do
        fs::remove_all(folder, failure);
    while (fs::exists(folder, failure));
}

class ExporterFailureTest : public ExportStage {
protected:
    void expectOnlyWhole(const Exporter::State& state) {
        EXPECT_EQ(outNames().size(), state.exported);
        for (const auto& name : outNames()) {
            EXPECT_FALSE(name.starts_with(".")) << name;
            EXPECT_GE(greyOf(folder / "out" / name), 0) << name;
        }
    }
};

TEST_F(ExporterFailureTest, AFailureAtAnyCallLeavesWholeFilesOnly) {
    const std::vector photos{photo("A.jpg"), photo("B.png")};
    const std::string before = readFile(photos[0]) + readFile(photos[1]);
    FailingFileSystem counting(real);
    exported(photos, counting);
    ASSERT_GT(counting.calls(), 10);
    for (int call = 1; call <= counting.calls(); ++call) {
        removeWhileOthersWrite(folder / "out");
        FailingFileSystem failing(real, {call, FailureKind::unwritable});
        const auto state = exported(photos, failing);
        expectOnlyWhole(state);
        EXPECT_EQ(state.exported + state.failures.size(), notice.shown ? 0 : 2) << call;
        EXPECT_EQ(readFile(photos[0]) + readFile(photos[1]), before);
    }
}

TEST_F(ExporterFailureTest, ADiskThatFillsUpFailsThosePhotos) {
    const std::vector photos{photo("A.png"), photo("B.png"), photo("C.png")};
    settings.format = ExportFormat::tiff;          // 60 × 40 × 6 bytes and a head
    FailingFileSystem full(real, {0, {}, 35'000}); // for the two that are written at once
    const auto state = exported(photos, full);
    expectOnlyWhole(state);
    EXPECT_GE(state.exported, 1u); // the third may take room from the second
    EXPECT_LE(state.exported, 2u);
    ASSERT_EQ(state.exported + state.failures.size(), 3u);
    EXPECT_EQ(state.failures[0].message, "The file couldn't be written.");
}

// Runs `check` in a process whose folder of exports is a small disk of its own; 0 where it held,
// none where no such disk can be made.
std::optional<int> onSmallDisk(const fs::path& out, const std::function<bool()>& check) {
    fs::create_directory(out);
    const pid_t child = ::fork();
    if (child == 0) {
        const int unshared =
            ::getuid() == 0 ? ::unshare(CLONE_NEWNS) : ::unshare(CLONE_NEWUSER | CLONE_NEWNS);
        if (unshared != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) ||
            ::mount("tmpfs", out.c_str(), "tmpfs", 0, "size=160k"))
            ::_exit(77);
        ::_exit(check() ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 77) return std::nullopt;
    return status;
}

TEST_F(ExporterFailureTest, ARealFullDiskKeepsWhatFits) {
    const std::vector photos{photo("A.png", {160, 80}), photo("B.png", {160, 80}),
                             photo("C.png", {160, 80})};
    const auto ended = onSmallDisk(folder / "out", [&] {
        settings.format = ExportFormat::tiff; // 77 KB each: room for the two written at once
        const auto state = exported(photos);
        const auto names = outNames();
        const bool hidden = std::any_of(names.begin(), names.end(),
                                        [](const auto& name) { return name.starts_with("."); });
        // The third may take room from the second.
        return !hidden && state.exported >= 1 && state.exported <= 2 &&
               state.exported + state.failures.size() == 3 && names.size() == state.exported;
    });
    if (!ended) GTEST_SKIP() << "no scene";
    EXPECT_EQ(*ended, 0);
}

TEST_F(ExporterFailureTest, ADiskThatTurnsReadOnlyFailsWhatIsLeft) {
    const std::vector photos{photo("A.jpg"), photo("B.jpg"), photo("C.jpg"), photo("D.jpg")};
    const auto ended = onSmallDisk(folder / "out", [&] {
        writeFile(folder / "out/D.jpg", "older export");
        settings.replaceExisting = true;
        onStart = [&](Exporter& exporter) {
            loop.runUntil([&] { return exporter.state()->done > 0; }, 60);
            // Refused while a file is open for writing there.
            for (int i = 0; i < 10'000; ++i)
                if (::mount("none", (folder / "out").c_str(), nullptr, MS_REMOUNT | MS_RDONLY,
                            nullptr) == 0)
                    break;
        };
        const auto state = exported(photos);
        for (const auto& failure : state.failures)
            if (failure.message != "The file couldn't be written.") return false;
        const auto names = outNames();
        const bool hidden = std::any_of(names.begin(), names.end(),
                                        [](const auto& name) { return name.starts_with("."); });
        return !hidden && state.exported + state.failures.size() == 4 && state.exported > 0;
    });
    if (!ended) GTEST_SKIP() << "no scene";
    EXPECT_EQ(*ended, 0);
}

// At each call to the disk, from the folder's making to the last move.
TEST_F(ExporterFailureTest, AStopAtAnyStepLeavesWholeFilesOnly) {
    const std::vector photos{photo("A.jpg"), photo("B.png")};
    FailingFileSystem counting(real);
    exported(photos, counting);
    for (int call = 1; call <= counting.calls(); ++call) {
        removeWhileOthersWrite(folder / "out");
        FailingFileSystem stopping(real);
        Exporter* running = nullptr;
        onStart = [&](Exporter& exporter) { running = &exporter; };
        stopping.onCall([&](int number) {
            if (number != call) return;
            std::promise<void> stopped;
            loop.post([&] {
                running->stop();
                stopped.set_value();
            });
            stopped.get_future().wait();
        });
        const auto state = exported(photos, stopping);
        expectOnlyWhole(state);
        EXPECT_TRUE(state.failures.empty()) << call;
        EXPECT_EQ(state.done, 2u) << call;
    }
}

TEST_F(ExporterFailureTest, AFolderThatVanishesFailsWhatIsLeft) {
    const std::vector photos{photo("A.jpg"), photo("B.jpg")};
    writer.beforeWrite = [&] { removeWhileOthersWrite(folder / "out"); };
    const auto state = exported(photos);
    EXPECT_EQ(state.exported + state.failures.size(), 2u);
    EXPECT_GE(state.failures.size(), 1u);
}

TEST_F(ExporterFailureTest, AFolderThatCannotBeMadeIsANotice) {
    writeFile(folder / "out", "a file");
    const auto state = exported({photo("A.jpg")});
    EXPECT_EQ(state.done, 0u);
    EXPECT_TRUE(notice.shown);
    EXPECT_THAT(notice.text, testing::StartsWith("Couldn't create out: "));
    EXPECT_FALSE(state.finishedFolder);
}

TEST_F(ExporterFailureTest, DamagedAndMissingPhotosFailAlone) {
    const auto bad = photo("B.jpg");
    writeFile(bad, readFile(bad).substr(0, 200));
    writeFile(folder / "in/C.dng", "II*\0 no photo");
    const auto state = exported(
        {photo("A.jpg"), bad, folder / "in/C.dng", folder / "in/gone.jpg", photo("D.jpg")});
    EXPECT_EQ(state.exported, 2u);
    ASSERT_EQ(state.failures.size(), 3u);
    for (const auto& failure : state.failures) {
        EXPECT_EQ(failure.message, "The file couldn't be read.");
        EXPECT_FALSE(failure.detail.empty());
    }
    EXPECT_THAT(outNames(), ElementsAre("A.jpg", "D.jpg"));
}

TEST_F(ExporterFailureTest, PhotosThatChangeWhileTheyAreReadFail) {
    class Changing final : public MetadataCopier {
    public:
        explicit Changing(MetadataCopier& real) : real_(real) {}
        Result<EmbeddedMetadata> copy(const fs::path& path, PixelSize size,
                                      OutputSpace space) override {
            change(path);
            return real_.copy(path, size, space);
        }
        std::function<void(const fs::path&)> change;

    private:
        MetadataCopier& real_;
    } changing(metadata);
    for (const bool deletes : {false, true}) {
        changing.change = [&](const fs::path& path) {
            deletes ? void(fs::remove(path)) : writeFile(path, "another");
        };
        auto changed = parts(real);
        Exporter exporter({changed.files, changed.random, changed.reader, changed.writer,
                           changed.raw, changed.properties, changing, changed.renderer,
                           changed.brushes, changed.work, changed.clock},
                          loop);
        ASSERT_TRUE(exporter.start({{photo("A.jpg"), {}}}, settings, {}));
        ASSERT_TRUE(loop.runUntil([&] { return !exporter.state()->running; }, 60));
        ASSERT_EQ(exporter.state()->failures.size(), 1u);
        EXPECT_EQ(exporter.state()->failures[0].message, "The file couldn't be read.");
        EXPECT_THAT(outNames(), IsEmpty());
    }
}

TEST_F(ExporterFailureTest, WhatAppearsMeanwhileStays) {
    settings.replaceExisting = true; // the name was free when it was chosen
    writer.beforeWrite = [&] { writeFile(folder / "out/A.jpg", "somebody else's"); };
    const auto state = exported({photo("A.jpg")});
    ASSERT_EQ(state.failures.size(), 1u);
    EXPECT_EQ(state.failures[0].message, "The file couldn't be written.");
    EXPECT_EQ(readFile(folder / "out/A.jpg"), "somebody else's");
    EXPECT_THAT(outNames(), ElementsAre("A.jpg"));
}

TEST_F(ExporterFailureTest, WhatTurnsIntoALinkIsNotReplaced) {
    settings.replaceExisting = true;
    writeFile(folder / "out/A.jpg", "old");
    writeFile(folder / "precious", "precious");
    writer.beforeWrite = [&] {
        fs::remove(folder / "out/A.jpg");
        fs::create_symlink(folder / "precious", folder / "out/A.jpg");
    };
    EXPECT_EQ(exported({photo("A.jpg")}).failures.size(), 1u);
    EXPECT_TRUE(fs::is_symlink(folder / "out/A.jpg"));
    EXPECT_EQ(readFile(folder / "precious"), "precious");
}

TEST_F(ExporterFailureTest, ADamagedFileIsNotMovedIntoPlace) {
    settings.format = ExportFormat::tiff;
    writer.afterWrite = [](PendingFile& file) {
        const std::byte wrong{0x55};
        EXPECT_TRUE(file.writeAt(file.size() / 2, {&wrong, 1}));
    };
    const auto state = exported({photo("A.jpg")});
    ASSERT_EQ(state.failures.size(), 1u);
    EXPECT_EQ(state.failures[0].message, "The file couldn't be written.");
    EXPECT_THAT(outNames(), IsEmpty());
    verifies = false; // and is, where nobody looks
    EXPECT_EQ(exported({photo("A.jpg")}).exported, 1u);
}

TEST_F(ExporterFailureTest, TwoProcessesShareAFolder) {
    std::vector<fs::path> photos;
    for (int i = 0; i < 10; ++i)
        photos.push_back(photo("A" + std::to_string(i) + ".jpg"));
    std::set<std::string> originals;
    for (const auto& path : photos)
        originals.insert(readFile(path));
    const auto inChild = [&] {
        const pid_t child = ::fork();
        if (child != 0) return child;
        random.reseed(std::uint64_t(::getpid())); // as real processes have other names
        const auto state = exported(photos);
        ::_exit(state.exported + state.failures.size() == 10 ? int(state.exported) : 99);
    };
    const pid_t first = inChild(), second = inChild();
    int a = 0, b = 0;
    ::waitpid(first, &a, 0);
    ::waitpid(second, &b, 0);
    ASSERT_TRUE(WIFEXITED(a) && WIFEXITED(b));
    ASSERT_LE(WEXITSTATUS(a), 10);
    // Each file is one of theirs, whole; what both wanted at once failed for one of them.
    EXPECT_EQ(int(outNames().size()), WEXITSTATUS(a) + WEXITSTATUS(b));
    EXPECT_GE(outNames().size(), 10u);
    for (const auto& name : outNames())
        EXPECT_NEAR(greyOf(folder / "out" / name), 90, 2) << name;
}

TEST_F(ExporterFailureTest, AKilledExportIsSweptByTheNext) {
    const auto A = photo("A.jpg");
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        random.reseed(2);
        writer.afterWrite = [&](PendingFile&) {
            static_cast<void>(::write(ready[1], "y", 1));
            ::pause();
        };
        exported({A});
        ::_exit(0);
    }
    char answer = 0;
    ASSERT_EQ(::read(ready[0], &answer, 1), 1);
    const auto during = outNames();
    ASSERT_EQ(during.size(), 1u);
    // Another export leaves alone what the first one still writes.
    EXPECT_EQ(exported({photo("B.jpg")}).exported, 1u);
    EXPECT_EQ(outNames().size(), 2u);
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    EXPECT_THAT(outNames(), testing::Contains(*during.begin()));
    EXPECT_EQ(exported({A}).exported, 1u);
    EXPECT_THAT(outNames(), ElementsAre("A.jpg", "B.jpg"));
    ::close(ready[0]);
    ::close(ready[1]);
}

TEST_F(ExporterFailureTest, TakesNamesOfEveryKind) {
    const std::vector<std::string> names{
        "with blank", " leading", "new\nline", "quote\"'", "\xFF\xFE bytes", "ünïcödé 😀",
        "-rf",        "a.b.c",    "%s%n",      "\\back",   "..double",       std::string(251, 'n')};
    std::vector<fs::path> photos;
    for (const auto& name : names)
        photos.push_back(photo(name + ".jpg"));
    settings.format = ExportFormat::heic; // one letter longer
    const auto state = exported(photos);
    EXPECT_EQ(state.exported, names.size());
    for (const ExportFailure& failure : state.failures)
        ADD_FAILURE() << failure.fileName << ": " << failure.message << " " << failure.detail;
    EXPECT_EQ(outNames().size(), names.size());
}

} // namespace
} // namespace kelvaro
