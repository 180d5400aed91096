// Saving while each single step of it fails, and while the disk fills up at each byte.
#include "recipe/Sidecar.h"

#include "fakes/FailingFileSystem.h"
#include "fakes/SeededRandom.h"
#include "fakes/TemporaryFolder.h"
#include "platform/system/PosixFileSystem.h"

#include <gmock/gmock.h>

namespace kelvaro {
namespace {

constexpr const char* old = R"({"processVersion": 3, "exposure": 1})";

class SidecarFailureTest : public testing::Test {
protected:
    PosixFileSystem real;
    SeededRandom random;

    // Saves `edit` over the old sidecar, or into an empty folder, under `plan`; checks that the
    // sidecar is the old or the new one, whole, and that no temporary file stays.
    struct Outcome {
        bool saved = false, planCameTrue = false, backedUp = false;
    };
    Outcome saveUnder(FailingFileSystem::Plan plan, const Adjustments& edit, bool overOld) {
        TemporaryFolder folder;
        const auto hidden = folder / ".tarnwell";
        if (overOld) writeFile(hidden / "a.jpg.json", old);
        FailingFileSystem files(real, plan);
        const auto saved = Sidecar(files, random).save(folder / "a.jpg", edit, 5);
        if (!saved && plan.failAtCall > 0) {
            EXPECT_EQ(saved.error().kind, plan.failAtCall == 1 ? FailureKind::notFound : plan.kind);
        }

        std::set<std::string> expected;
        const bool isNew = saved.has_value();
        if (isNew ? isEdited(edit) : overOld) expected.insert("a.jpg.json");
        const bool backedUp = namesIn(hidden).contains("a.jpg.json.v3-backup");
        if (backedUp) {
            expected.insert("a.jpg.json.v3-backup");
            EXPECT_EQ(readFile(hidden / "a.jpg.json.v3-backup"), old);
        }
        EXPECT_EQ(namesIn(hidden), expected);
        const auto stored = Sidecar(real, random).loadPhoto(folder / "a.jpg");
        EXPECT_TRUE(stored);
        if (!isNew && overOld) {
            EXPECT_EQ(readFile(hidden / "a.jpg.json"), old);
        }
        if (isNew && isEdited(edit)) {
            EXPECT_EQ((*stored)->adjustments, edit);
        }
        return {isNew, files.hasFailed(), backedUp};
    }
};

TEST_F(SidecarFailureTest, EachStepMayFailAndTheOldEditStays) {
    struct Case {
        double exposure;
        bool overOld;
        int steps; // folder, read; then: folder made, 3 to write; or date, 4 to back up, 1 to
                   // remove
    };
    for (const auto& [exposure, overOld, steps] :
         {Case{2, false, 6}, Case{2, true, 10}, Case{0, false, 2}, Case{0, true, 8}}) {
        Adjustments edit;
        edit.exposure = exposure;
        for (int step = 1; step <= steps + 1; ++step) {
            const auto outcome =
                saveUnder({.failAtCall = step, .kind = FailureKind::unwritable}, edit, overOld);
            EXPECT_EQ(outcome.planCameTrue, step <= steps) << exposure << overOld << step;
            EXPECT_EQ(outcome.saved, step > steps) << exposure << overOld << step;
        }
    }
}

TEST_F(SidecarFailureTest, TheDiskMayFillUpAnywhere) {
    Adjustments edit;
    edit.exposure = 2;
    bool everSaved = false;
    for (std::int64_t room = 0; room < 1200 && !everSaved; room += 7) {
        const auto outcome = saveUnder({.room = room}, edit, true);
        everSaved = outcome.saved;
        EXPECT_NE(outcome.saved, outcome.planCameTrue) << room;
        EXPECT_EQ(outcome.backedUp, room >= 36) << room; // the old sidecar has 36 bytes
    }
    EXPECT_TRUE(everSaved);
}

TEST_F(SidecarFailureTest, AnUnreadableFolderIsNotTakenForAnUneditedOne) {
    TemporaryFolder folder;
    writeFile(folder / ".tarnwell/a.jpg.json", old);
    for (const int step : {2, 3}) { // listing, reading
        FailingFileSystem files(real, {.failAtCall = step, .kind = FailureKind::unreadable});
        const auto loaded = Sidecar(files, random).load(folder.path());
        EXPECT_EQ(loaded.has_value(), step == 3);
        if (loaded) {
            EXPECT_EQ(loaded->failures.size(), 1u);
        }
    }
    writeFile(folder / "other/.tarnwell", "a file in the way");
    const auto blocked = Sidecar(real, random).load(folder / "other");
    EXPECT_FALSE(blocked);
}

} // namespace
} // namespace kelvaro
