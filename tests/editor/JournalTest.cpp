#include "base/MainLoop.h"
#include "editor/EditFingerprint.h"
#include "editor/EditorModel.h"
#include "editor/JournalCoding.h"
#include "editor/JournalRecovery.h"
#include "editor/MaskList.h"
#include "editor/OpenEditor.h"
#include "editor/SidecarEditStore.h"
#include "fakes/FailingFileSystem.h"
#include "fakes/ManualClock.h"
#include "fakes/SeededRandom.h"
#include "fakes/TemporaryFolder.h"
#include "platform/system/PosixAppendFiles.h"
#include "platform/system/PosixFileSystem.h"
#include "recipe/RecipeCoding.h"

#include <gtest/gtest.h>
#include <set>

namespace kelvaro {
namespace {

Adjustments exposed(double stops) {
    Adjustments edit;
    edit.exposure = stops;
    return edit;
}

TEST(JournalCoding, ReadsTheLastOfEachPhotoAndPassesOverATornTail) {
    SeededRandom random;
    Adjustments painted = exposed(2);
    addMask(painted, MaskComponent::Kind::linear, {600, 400}, random);
    const std::string odd = "/a b/%41\xff\n\"photo\".jpg";
    const std::string whole = encodedRecord({"/a.jpg", exposed(1), {7}, 1}) +
                              encodedRecord({odd, painted, {1, 0xFFFFFFFFFFFFFFFF}, 2.5}) +
                              encodedRecord({"/b.jpg", exposed(3), {}, 3}) +
                              encodedRecord({"/a.jpg", exposed(1.5), {8}, 4}) +
                              encodedRecord({"/b.jpg", std::nullopt, {}, 5});
    const auto records = unsavedRecords(whole, random);
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].photo, odd);
    EXPECT_EQ(records[0].edit, painted);
    EXPECT_EQ(records[0].known, (std::vector<std::uint64_t>{1, 0xFFFFFFFFFFFFFFFF}));
    EXPECT_EQ(records[0].time, 2.5);
    EXPECT_EQ(records[1].edit, exposed(1.5));

    const std::string next = encodedRecord({"/a.jpg", exposed(2), {8}, 6});
    for (std::size_t cut = 0; cut < next.size(); cut += 7) {
        EXPECT_EQ(unsavedRecords(whole + next.substr(0, cut), random)[1].edit, exposed(1.5));
        std::string damaged = whole + next;
        damaged[whole.size() + cut] ^= 1;
        const auto read = unsavedRecords(damaged, random);
        ASSERT_EQ(read.size(), 2u);
        EXPECT_EQ(read[1].edit, exposed(1.5)) << cut;
    }
    EXPECT_TRUE(unsavedRecords("", random).empty());
    EXPECT_TRUE(unsavedRecords("kelvaro-edit ffffffffffffffff 00000000\n", random).empty());
}

// A disk, the queue of its sidecars, and sessions on it that end well or in a crash.
// What is read from the disk is known again; anything else that was painted is another edit.
TEST(EditFingerprint, TellsEditsApart) {
    SeededRandom random;
    Adjustments edit = exposed(1.25);
    for (const char* name : {"Sky", "Haut ✿"}) {
        addMask(edit, MaskComponent::Kind::brush, {1000, 600}, random);
        edit.masks.back().name = name;
        BrushStroke stroke;
        stroke.points = {{0.1, 1.0 / 3}, {-0.0, 7}}; // the last one is stored within its limits
        edit.masks.back().components.back().strokes = {stroke};
    }
    const auto stored = decodeAdjustments(*encodedText(edit), random);
    ASSERT_TRUE(stored);
    EXPECT_EQ(editFingerprint(*stored), editFingerprint(edit));

    std::set<std::uint64_t> prints{editFingerprint({}), editFingerprint(edit)};
    const auto differs = [&](auto change) {
        Adjustments other = edit;
        change(other, other.masks[0].components[0], other.masks[1].components[0]);
        EXPECT_TRUE(prints.insert(editFingerprint(other)).second);
    };
    differs([](Adjustments& e, auto&, auto&) { e.exposure = 1.26; });
    differs([](Adjustments& e, auto&, auto&) { e.masks[0].name = "Sly"; });
    differs([](auto&, MaskComponent& a, auto&) { a.strokes[0].points[0].x = 0.1000001; });
    differs([](auto&, MaskComponent& a, auto&) {
        std::swap(a.strokes[0].points[0], a.strokes[0].points[1]);
    });
    differs([](auto&, MaskComponent& a, auto&) { a.strokes[0].erase = true; });
    differs([](auto&, MaskComponent& a, auto&) { a.strokes[0].flow = 99; });
    differs([](auto&, MaskComponent& a, MaskComponent& b) { // only the shape it belongs to differs
        a.strokes.push_back(b.strokes[0]);
        b.strokes.clear();
    });
    differs([](auto&, MaskComponent& a, MaskComponent& b) {
        b.strokes.push_back(a.strokes[0]);
        a.strokes.clear();
    });
}

class JournalTest : public testing::Test {
protected:
    JournalTest() { writeFile(photo, "pixels"); }

    RecoveryReport recover() { return recoverSessions(files, appendFiles, random, support); }
    Adjustments onDisk() {
        Sidecar sidecar(files, random);
        const auto stored = sidecar.loadPhoto(photo);
        EXPECT_TRUE(stored);
        return stored && *stored ? (*stored)->adjustments : Adjustments();
    }
    void write(const Adjustments& edit, double editedAt) {
        Sidecar sidecar(files, random);
        EXPECT_TRUE(sidecar.save(photo, edit, editedAt));
    }
    // What a crashed session left behind.
    void leaveJournal(const Adjustments& edit, const Adjustments& known, double time) {
        writeFile(newJournalPath(support, random),
                  encodedRecord({photo, edit, {editFingerprint(known)}, time}));
    }
    std::set<std::string> journals() const { return namesIn(support / "sessions"); }

    TemporaryFolder folder;
    const std::filesystem::path photo = folder / "photos/a.jpg", support = folder / "support";
    PosixFileSystem files;
    PosixAppendFiles appendFiles;
    SeededRandom random;
    MainLoop main;
    ManualClock clock;
};

// The parts of a running program.
struct Session {
    Session(FileSystem& files, AppendFiles& appendFiles, RandomSource& random, MainLoop& main,
            const Clock& clock, const std::filesystem::path& support)
        : store(files, random, queue, main),
          journal(files, appendFiles, main, newJournalPath(support, random), 0),
          saver(store, &journal, clock, {[] {}, [this](std::string t) { notices.push_back(t); }}),
          model(saver, {[] {}, [](const std::string&) {}, [] {}}) {}

    std::vector<std::string> notices;
    SerialQueue queue{"kelvaro.sidecars"};
    SidecarEditStore store;
    SessionJournal journal;
    EditSaver saver;
    EditorModel model;
};

TEST_F(JournalTest, HoldsADragAndIsGoneOnceItIsSaved) {
    auto session = std::make_unique<Session>(files, appendFiles, random, main, clock, support);
    session->model.open({photo, {600, 400}}, {});
    session->model.beginChange("Exposure");
    session->model.change("Exposure", [](Adjustments& edit) { edit.exposure = 1.25; });
    session->journal.flush();
    ASSERT_EQ(journals().size(), 1u);
    const auto name = support / "sessions" / *journals().begin();
    const auto records = unsavedRecords(readFile(name), random);
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].edit, exposed(1.25));
    EXPECT_EQ(records[0].known, std::vector{editFingerprint({})});

    EXPECT_TRUE(recover().restored.empty()); // a running session's is left alone
    EXPECT_EQ(journals().size(), 1u);

    session->model.endChange();
    EXPECT_TRUE(main.runUntil([&] { return session->saver.isAllSaved(); }, 20));
    session->journal.flush();
    EXPECT_TRUE(unsavedRecords(readFile(name), random).empty());
    EXPECT_EQ(onDisk(), exposed(1.25));
    session.reset();
    main.runPosted();
    EXPECT_TRUE(journals().empty());
}

// A disk that is busy for seconds: flushes of what is appended wait for the test.
class BusyFiles final : public AppendFiles {
public:
    Result<std::unique_ptr<AppendFile>> open(const std::filesystem::path& path) override {
        auto file = posix_.open(path);
        if (!file) return file;
        return std::unique_ptr<AppendFile>(new File(std::move(*file), lock_));
    }
    std::unique_lock<std::mutex> keepBusy() { return std::unique_lock(lock_); }

private:
    struct File final : AppendFile {
        File(std::unique_ptr<AppendFile> posix, std::mutex& lock)
            : posix_(std::move(posix)), lock_(lock) {}
        Result<void> append(std::span<const std::byte> bytes) override {
            return posix_->append(bytes);
        }
        Result<void> flush() override {
            const std::lock_guard waiting(lock_);
            return posix_->flush();
        }
        std::unique_ptr<AppendFile> posix_;
        std::mutex& lock_;
    };
    PosixAppendFiles posix_;
    std::mutex lock_;
};

TEST_F(JournalTest, ABusyDiskKeepsNoRecordWaiting) {
    BusyFiles busyFiles;
    Session session(files, busyFiles, random, main, clock, support);
    session.model.open({photo, {600, 400}}, {});
    session.model.beginChange("Exposure");
    auto busy = busyFiles.keepBusy();
    for (const double stops : {0.5, 1.0, 1.5}) {
        test::setExposure(session.model, stops);
        const auto isThere = [&] {
            for (const std::string& name : journals())
                for (const auto& record :
                     unsavedRecords(readFile(support / "sessions" / name), random))
                    if (record.edit == exposed(stops)) return true;
            session.journal.changed();
            return false;
        };
        EXPECT_TRUE(main.runUntil(isThere, 20)) << stops;
    }
}

// Where a journal has been written anew, what was saved meanwhile doesn't come back from its first
// file, and a second one that was torn away leaves the first one valid.
TEST_F(JournalTest, ALaterFileTakesTheFirstOnesPlace) {
    const auto first = newJournalPath(support, random), second = nextJournalPath(first);
    EXPECT_EQ(second.filename(), first.stem().string() + "_0002.journal");
    EXPECT_EQ(nextJournalPath(second).filename(), first.stem().string() + "_0003.journal");
    const std::string old = encodedRecord({photo, exposed(2), {editFingerprint({})}, 100});
    const std::string anew =
        beginningRecord() + encodedRecord({folder / "photos/b.jpg", exposed(1), {}, 100});
    for (const bool torn : {false, true}) {
        std::filesystem::remove_all(photo.parent_path() / ".tarnwell");
        writeFile(first, old);
        writeFile(second, anew.substr(0, torn ? 20 : anew.size()));
        EXPECT_EQ(recover().restored.size(), 1u);
        EXPECT_EQ(onDisk(), torn ? exposed(2) : Adjustments());
        EXPECT_TRUE(journals().empty());
    }
}

TEST_F(JournalTest, WritesALargeJournalAnewWithWhatIsUnsaved) {
    JournalFile file(files, appendFiles, newJournalPath(support, random));
    const std::string record = encodedRecord({photo, exposed(2), {}, 100});
    const std::string old = encodedRecord({folder / "photos/b.jpg", exposed(1), {}, 100});
    for (std::int64_t written = 0; written < JournalFile::largeBytes; written += 1 << 20) {
        EXPECT_FALSE(file.isLarge());
        ASSERT_TRUE(file.append(old + std::string(1 << 20, ' ')));
    }
    EXPECT_TRUE(file.isLarge());
    ASSERT_TRUE(file.replace(record));
    EXPECT_FALSE(file.isLarge());
    ASSERT_TRUE(file.append(encodedRecord({photo, exposed(3), {}, 101})));
    file.waitUntilFlushed();
    ASSERT_EQ(journals().size(), 1u);
    const auto records =
        unsavedRecords(readFile(support / "sessions" / *journals().begin()), random);
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].edit, exposed(3));
    EXPECT_TRUE(file.remove());
    EXPECT_TRUE(journals().empty());
}

TEST_F(JournalTest, ReplaysWhatTheSessionKnew) {
    const struct {
        Adjustments known;                // what the session thought was in the sidecar
        std::optional<Adjustments> found; // what is there
        double foundAt;
        Adjustments expected;
        std::size_t restored, kept;
    } cases[] = {
        {{}, {}, 0, exposed(2), 1, 0},
        {exposed(1), exposed(1), 500, exposed(2), 1, 0}, // its own write, dated later
        {{}, exposed(2), 50, exposed(2), 0, 0},          // saved, and the journal not yet gone
        {{}, exposed(-1), 50, exposed(2), 1, 1},         // somebody else's, older
        {{}, exposed(-1), 150, exposed(-1), 0, 1},       // somebody else's, younger
    };
    for (const auto& c : cases) {
        std::filesystem::remove_all(photo.parent_path() / ".tarnwell");
        if (c.found) write(*c.found, c.foundAt);
        leaveJournal(exposed(2), c.known, 100);
        const RecoveryReport report = recover();
        EXPECT_EQ(onDisk(), c.expected);
        EXPECT_EQ(report.restored.size(), c.restored);
        EXPECT_EQ(report.keptBeside.size(), c.kept);
        EXPECT_TRUE(journals().empty());
        EXPECT_EQ(namesIn(photo.parent_path() / ".tarnwell").count("a.jpg.json.other-1"), c.kept);
        EXPECT_EQ(report.notice().empty(), c.restored + c.kept == 0);
    }
}

TEST_F(JournalTest, WaitsForADriveAndKeepsANewerEdit) {
    std::filesystem::rename(photo.parent_path(), folder / "unplugged");
    leaveJournal(exposed(2), {}, 100);
    EXPECT_EQ(recover().waiting.size(), 1u);
    EXPECT_EQ(journals().size(), 1u);
    std::filesystem::rename(folder / "unplugged", photo.parent_path());
    EXPECT_EQ(recover().notice(),
              "Kelvaro ended unexpectedly. The latest changes to a.jpg were restored.");
    EXPECT_EQ(onDisk(), exposed(2));

    const auto sidecar = photo.parent_path() / ".tarnwell/a.jpg.json";
    writeFile(sidecar, R"({"processVersion": 13})");
    leaveJournal(exposed(3), {}, 100);
    EXPECT_EQ(recover().keptBeside.size(), 1u);
    EXPECT_EQ(readFile(sidecar), R"({"processVersion": 13})");
}

// Whichever call of a replay fails, nothing is lost: the next one ends well.
TEST_F(JournalTest, AReplayMayItselfBeCutOff) {
    for (int call = 1;; ++call) {
        std::filesystem::remove_all(photo.parent_path() / ".tarnwell");
        std::filesystem::remove_all(support);
        write(exposed(-1), 50);
        leaveJournal(exposed(2), {}, 100);
        FailingFileSystem failing(files, {call, FailureKind::diskFull});
        recoverSessions(failing, appendFiles, random, support);
        recover();
        EXPECT_EQ(onDisk(), exposed(2)) << call;
        EXPECT_GE(namesIn(photo.parent_path() / ".tarnwell").count("a.jpg.json.other-1"), 1u);
        EXPECT_TRUE(journals().empty()) << call;
        if (!failing.hasFailed()) break;
    }
}

TEST_F(JournalTest, ADiskThatRefusesIsToldOnceAndWorkGoesOn) {
    writeFile(support, "a file where the folder should be");
    Session session(files, appendFiles, random, main, clock, support);
    session.model.open({photo, {600, 400}}, {});
    for (int i = 1; i <= 5; ++i) {
        session.model.beginChange("Exposure");
        session.model.change("Exposure", [&](Adjustments& edit) { edit.exposure = i * 0.5; });
        session.journal.flush();
        main.runPosted();
    }
    session.model.endChange();
    EXPECT_TRUE(main.runUntil([&] { return session.saver.isAllSaved(); }, 20));
    EXPECT_EQ(onDisk(), exposed(2.5));
    ASSERT_EQ(session.notices.size(), 1u);
    EXPECT_TRUE(session.notices[0].starts_with("Changes can't be protected against a crash now: "));
}

TEST_F(JournalTest, SavingKeepsWhatAnotherProgramWrote) {
    Session session(files, appendFiles, random, main, clock, support);
    session.model.open({photo, {600, 400}}, {});
    write(exposed(-2), 10); // meanwhile
    session.model.change("Exposure", [](Adjustments& edit) { edit.exposure = 1; });
    EXPECT_TRUE(main.runUntil([&] { return session.saver.isAllSaved(); }, 20));
    EXPECT_EQ(onDisk(), exposed(1));
    ASSERT_EQ(session.notices.size(), 1u);
    EXPECT_EQ(session.notices[0], "a.jpg was also edited elsewhere. That version is kept as "
                                  "“a.jpg.json.other-1”.");
    const auto other = readFile(photo.parent_path() / ".tarnwell/a.jpg.json.other-1");
    EXPECT_EQ(*decodeAdjustments(other, random), exposed(-2));
    session.model.change("Exposure", [](Adjustments& edit) { edit.exposure = 2; });
    EXPECT_TRUE(main.runUntil([&] { return session.saver.isAllSaved(); }, 20));
    EXPECT_EQ(session.notices.size(), 1u); // our own write is no other program's
}

} // namespace
} // namespace kelvaro
