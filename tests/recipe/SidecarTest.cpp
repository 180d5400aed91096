#include "recipe/Sidecar.h"

#include "fakes/SeededRandom.h"
#include "fakes/TemporaryFolder.h"
#include "platform/system/PosixFileSystem.h"
#include "platform/system/SystemRandom.h"
#include "recipe/RecipeCoding.h"

#include <cmath>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace kelvaro {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* newer = "This edit needs a newer Kelvaro.";

class SidecarTest : public testing::Test {
protected:
    TemporaryFolder folder;
    PosixFileSystem files;
    SeededRandom random;
    Sidecar sidecar{files, random};
    const fs::path photo = folder / "IMG_1.JPG";
    const fs::path hidden = folder / ".tarnwell";
    const fs::path stored = hidden / "IMG_1.JPG.json";

    static Adjustments exposed(double exposure) {
        Adjustments adjustments;
        adjustments.exposure = exposure;
        return adjustments;
    }
};

TEST_F(SidecarTest, SavesAndLoadsWithTheEditDate) {
    Adjustments adjustments = exposed(1.25);
    adjustments.masks = {newMask(random)};
    ASSERT_TRUE(sidecar.save(photo, adjustments, 1'700'000'000.125));
    EXPECT_THAT(namesIn(hidden), ElementsAre("IMG_1.JPG.json"));

    const auto one = sidecar.loadPhoto(photo);
    ASSERT_TRUE(one && *one);
    EXPECT_EQ((*one)->adjustments, adjustments);
    EXPECT_EQ((*one)->editedAt, 1'700'000'000.125);
    const auto all = sidecar.load(folder.path());
    ASSERT_TRUE(all);
    ASSERT_EQ(all->edits.size(), 1u);
    EXPECT_EQ(all->edits.at("IMG_1.JPG").adjustments, adjustments);
    EXPECT_THAT(all->failures, IsEmpty());
}

TEST_F(SidecarTest, FoldersWithoutEditsAreEmptyAndMissingOnesUnavailable) {
    EXPECT_TRUE(sidecar.load(folder.path())->edits.empty());
    EXPECT_FALSE(sidecar.loadPhoto(photo)->has_value());
    EXPECT_EQ(sidecar.directory(folder.path()).value(), hidden);
    const Failure unavailable{FailureKind::notFound,
                              "“Holiday” isn't available. Is its drive connected?"};
    const fs::path gone = folder / "Holiday";
    EXPECT_EQ(sidecar.directory(gone).error(), unavailable);
    EXPECT_EQ(sidecar.load(gone / "").error(), unavailable);
    EXPECT_EQ(sidecar.loadPhoto(gone / "a.jpg").error(), unavailable);
    EXPECT_EQ(sidecar.save(gone / "a.jpg", exposed(1), 0).error(), unavailable);
    EXPECT_FALSE(fs::exists(gone));
    writeFile(gone, "now a file");
    EXPECT_EQ(sidecar.load(gone).error(), unavailable);
}

TEST_F(SidecarTest, ReadsOnlySidecarsAndCollectsThoseItCannotRead) {
    for (const char* name : {"favorites.json", ".hidden.json", ".a.jpg.json", "notes.json",
                             "a.jpg.json.v3-backup", "a.jpg.JSON"}) {
        writeFile(hidden / name, "[]");
    }
    writeFile(stored, R"({"exposure": 9})");
    writeFile(hidden / "b.cr3.json", R"({"processVersion": 13})");
    writeFile(hidden / "c.cr3.json", R"({"tint": 1e400})");
    writeFile(hidden / "\xFF.jpg.json", R"({"tint": 1, "other": 1e400})");
    fs::create_directory(hidden / "d.jpg.json");
    const auto loaded = sidecar.load(folder.path());
    ASSERT_TRUE(loaded);
    ASSERT_EQ(loaded->edits.size(), 2u);
    EXPECT_EQ(loaded->edits.at("IMG_1.JPG").adjustments, exposed(4));
    EXPECT_EQ(loaded->edits.at("\xFF.jpg").adjustments.tint, 1);
    std::vector<std::string> failures;
    for (const auto& [entry, failure] : loaded->failures)
        failures.push_back(entry + ": " + failure.message);
    EXPECT_THAT(failures,
                ElementsAre("b.cr3.json: This edit needs a newer Kelvaro.",
                            "c.cr3.json: Adjustment must be finite.",
                            "d.jpg.json: “d.jpg.json” couldn't be read: it is not a file."));
}

TEST_F(SidecarTest, TakesTheModificationDateWhereNoUsableOneIsStored) {
    for (const char* date : {"null", "\"today\"", "true", "1e400"}) {
        writeFile(stored, std::string(R"({"tint": 1, "editedAt": )") + date + "}");
        const timespec times[2] = {{1000, 500'000'000}, {1000, 500'000'000}};
        ::utimensat(AT_FDCWD, stored.c_str(), times, 0);
        EXPECT_EQ(sidecar.loadPhoto(photo)->value().editedAt, 1000.5) << date;
    }
    writeFile(stored, R"({"tint": 1, "editedAt": -5.5})");
    EXPECT_EQ(sidecar.loadPhoto(photo)->value().editedAt, -5.5);
}

TEST_F(SidecarTest, AnEmptyEditRemovesTheSidecarAndCreatesNothing) {
    ASSERT_TRUE(sidecar.save(photo, Adjustments(), 1));
    EXPECT_FALSE(fs::exists(hidden));
    ASSERT_TRUE(sidecar.save(photo, exposed(1), 1));
    Adjustments zeros;
    zeros.processVersion = 5;
    ASSERT_TRUE(sidecar.save(photo, zeros, 1));
    EXPECT_THAT(namesIn(hidden), IsEmpty());
    Adjustments cropped;
    cropped.cropLeft = 0.1;
    ASSERT_TRUE(sidecar.save(photo, cropped, 1));
    EXPECT_EQ(sidecar.loadPhoto(photo)->value().adjustments, cropped);
}

TEST_F(SidecarTest, NeverOverwritesWhatItCannotRead) {
    struct Case {
        const char *content, *message;
    };
    for (const auto& [content, message] : {
             Case{R"({"processVersion": 13})", newer},
             Case{R"({"processVersion": 1.3e1})", newer},
             Case{R"({"tint": 1e400})", "Adjustment must be finite."},
             Case{"{", "The edit isn't valid JSON."},
             Case{"", "The edit isn't valid JSON."},
         }) {
        writeFile(stored, content);
        for (const Adjustments& edit : {exposed(1), Adjustments()}) {
            EXPECT_EQ(sidecar.save(photo, edit, 1).error().message, message);
            EXPECT_EQ(readFile(stored), content);
            EXPECT_THAT(namesIn(hidden), ElementsAre("IMG_1.JPG.json"));
        }
    }
}

TEST_F(SidecarTest, KeepsOneBackupOfEachOlderFormat) {
    struct Case {
        const char *content, *backup; // no backup when null
    };
    for (const auto& [content, backup] : {
             Case{R"({"processVersion": 3, "tint": 1})", "IMG_1.JPG.json.v3-backup"},
             Case{R"({"tint": 1})", "IMG_1.JPG.json.v1-backup"},
             Case{R"({"processVersion": 1.1e1})", "IMG_1.JPG.json.v11-backup"},
             Case{R"({"processVersion": -2})", "IMG_1.JPG.json.v-2-backup"},
             Case{R"({"processVersion": 12})", nullptr},
         }) {
        for (const Adjustments& edit : {exposed(1), Adjustments()}) { // also when nothing is left
            fs::remove_all(hidden);
            writeFile(stored, content);
            ASSERT_TRUE(sidecar.save(photo, edit, 1)) << content;
            std::set<std::string> expected;
            if (backup) expected.insert(backup);
            if (isEdited(edit)) expected.insert("IMG_1.JPG.json");
            EXPECT_EQ(namesIn(hidden), expected) << content;
            if (backup) {
                EXPECT_EQ(readFile(hidden / backup), content);
            }
        }
    }
}

TEST_F(SidecarTest, AnOlderBackupIsNeverReplaced) {
    writeFile(stored, R"({"processVersion": 3, "tint": 1})");
    ASSERT_TRUE(sidecar.save(photo, exposed(1), 1));
    ASSERT_TRUE(sidecar.save(photo, exposed(2), 1));
    writeFile(stored, R"({"processVersion": 3, "tint": 99})");
    ASSERT_TRUE(sidecar.save(photo, exposed(3), 1));
    EXPECT_EQ(readFile(hidden / "IMG_1.JPG.json.v3-backup"), R"({"processVersion": 3, "tint": 1})");
}

TEST_F(SidecarTest, UnknownKeysSurviveARewriteWordForWord) {
    writeFile(stored, R"({"future": {"b": [1e400, 123456789012345678901], "a": null}, "tint": 5,
                          "blackPoint": 7, "editedAt": 1, "rating": 5.50})");
    ASSERT_TRUE(sidecar.save(photo, exposed(1), 2));
    const std::string text = readFile(stored);
    EXPECT_THAT(text, HasSubstr("    \"b\": [\n      1e400,\n      123456789012345678901\n    ]"));
    EXPECT_THAT(text, HasSubstr("\"rating\": 5.50"));
    EXPECT_THAT(text, HasSubstr("\"editedAt\": 2,"));
    EXPECT_THAT(text, testing::Not(HasSubstr("blackPoint")));
    EXPECT_EQ(sidecar.loadPhoto(photo)->value().adjustments, exposed(1));
    ASSERT_TRUE(sidecar.save(photo, exposed(1), 2));
    EXPECT_EQ(readFile(stored), text);
}

TEST_F(SidecarTest, RefusesEditsThatCouldNotBeReadAgain) {
    ASSERT_TRUE(sidecar.save(photo, exposed(1), 1));
    const std::string before = readFile(stored);
    EXPECT_EQ(sidecar.save(photo, exposed(NAN), 1).error().message, "Adjustment must be finite.");
    Adjustments endless = exposed(2);
    endless.masks = {newMask(random)};
    endless.masks[0].name.assign(Sidecar::largestFile, 'x');
    EXPECT_EQ(sidecar.save(photo, endless, 1).error().kind, FailureKind::tooLarge);
    EXPECT_EQ(readFile(stored), before);
}

// Strokes have more text than all else: an hour of painting is stored, and whatever is small enough
// to be written can be read, also where the numbers are as short as they get.
TEST_F(SidecarTest, HoldsWhatSomebodyPaintsForAnHour) {
    const auto painted = [this](int strokes, int points, auto place) {
        Adjustments edit;
        edit.masks = {newMask(random)};
        auto& components = edit.masks[0].components;
        components = {newComponent(MaskComponent::Kind::brush, MaskComponent::Mode::add, random)};
        for (int at = 0; at < strokes; ++at) {
            BrushStroke& stroke = components[0].strokes.emplace_back();
            for (int point = 0; point < points; ++point)
                stroke.points.push_back(place(at * points + point));
        }
        return edit;
    };
    const auto circling = [](int n) {
        return MaskPoint{0.5 + 0.4 * std::cos(n * 0.01), 0.3 + 0.3 * std::sin(n * 0.013)};
    };
    const Adjustments hour = painted(300, 1000, circling);
    ASSERT_TRUE(sidecar.save(photo, hour, 1));
    EXPECT_EQ(sidecar.loadPhoto(photo)->value().adjustments, hour);

    constexpr int shortestPoint = 88; // bytes of {"x": 0, "y": 0} with its indentation
    const int most = static_cast<int>(Sidecar::largestFile / shortestPoint) - 100;
    const Adjustments fullest = painted(1, most, [](int) { return MaskPoint{}; });
    ASSERT_TRUE(sidecar.save(photo, fullest, 2));
    EXPECT_GT(fs::file_size(stored), Sidecar::largestFile * 99 / 100);
    const auto loaded = sidecar.loadPhoto(photo);
    ASSERT_TRUE(loaded) << loaded.error().message;
    EXPECT_EQ((*loaded)->adjustments, fullest);
}

TEST_F(SidecarTest, PhotosWithTheLongestNamesHaveNoEditAndSayWhy) {
    const fs::path longest = folder / (std::string(251, 'n') + ".jpg");
    const auto loaded = sidecar.loadPhoto(longest);
    ASSERT_TRUE(loaded);
    EXPECT_FALSE(*loaded);
    const auto saved = sidecar.save(longest, exposed(1), 1);
    ASSERT_FALSE(saved);
    EXPECT_THAT(saved.error().message, HasSubstr("its name is too long"));
}

TEST_F(SidecarTest, AReaderBesideWritersSeesWholeEditsOnly) {
    ASSERT_TRUE(sidecar.save(photo, exposed(1), 1));
    const auto write = [&](double exposure) {
        PosixFileSystem own;
        SystemRandom ownRandom;
        Sidecar store(own, ownRandom);
        bool fine = true;
        for (int i = 0; i < 40; ++i)
            fine &= store.save(photo, exposed(exposure), i).has_value();
        return fine;
    };
    const pid_t child = ::fork();
    if (child == 0) ::_exit(write(3) ? 0 : 1);
    bool written = false;
    std::thread second([&] { written = write(2); });
    for (int i = 0; i < 200; ++i) {
        const auto loaded = sidecar.loadPhoto(photo);
        ASSERT_TRUE(loaded && *loaded);
        EXPECT_THAT((*loaded)->adjustments.exposure, testing::AnyOf(1, 2, 3));
    }
    second.join();
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(written);
    EXPECT_THAT(namesIn(hidden), ElementsAre("IMG_1.JPG.json"));
}

} // namespace
} // namespace kelvaro
