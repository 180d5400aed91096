#include "editor/EditorModel.h"

#include "editor/MaskList.h"
#include "editor/OpenEditor.h"
#include "fakes/SeededRandom.h"

#include <gtest/gtest.h>

namespace kelvaro {
namespace {

using test::OpenEditor;
using test::setExposure;

TEST(EditorModel, ADragIsOneStepAndIsSavedAtItsEnd) {
    OpenEditor editor;
    ASSERT_TRUE(editor.model.beginChange("Exposure"));
    for (int i = 1; i <= 20; ++i)
        setExposure(editor.model, i * 0.1);
    EXPECT_TRUE(editor.store.waiting.empty());
    EXPECT_TRUE(editor.model.endChange());
    ASSERT_EQ(editor.store.waiting.size(), 1u);
    EXPECT_FALSE(editor.model.isSaved());
    editor.store.end();
    EXPECT_TRUE(editor.model.isSaved());
    EXPECT_EQ(editor.store.saved.back().exposure, 2);
    EXPECT_EQ(editor.model.undoName(), "Exposure");
    editor.model.undo();
    EXPECT_EQ(editor.model.edit().exposure, 0);
    EXPECT_FALSE(editor.model.canUndo());
    editor.model.redo();
    EXPECT_EQ(editor.model.edit().exposure, 2);
    // Back and forth while a write is on its way: the last state is written, none in between.
    editor.model.undo();
    editor.model.redo();
    editor.model.undo();
    editor.store.endAll();
    EXPECT_EQ(editor.store.saved.back(), Adjustments());
    EXPECT_LE(editor.store.saved.size(), 3u);
}

TEST(EditorModel, ADragThatComesBackIsNoStep) {
    OpenEditor editor;
    editor.model.beginChange("Exposure");
    setExposure(editor.model, 1);
    setExposure(editor.model, 0);
    EXPECT_FALSE(editor.model.endChange());
    EXPECT_FALSE(editor.model.canUndo());
    EXPECT_TRUE(editor.store.waiting.empty());
    editor.model.beginChange("Exposure");
    setExposure(editor.model, 1);
    editor.model.undo(); // in the middle of it
    EXPECT_EQ(editor.model.edit(), Adjustments());
    EXPECT_FALSE(editor.model.isChanging());
}

TEST(EditorModel, CommandsAreStepsAndKeepWhatTheyShould) {
    Adjustments stored;
    stored.brightness = 30;
    stored.exposure = 1;
    stored.cropLeft = 0.2;
    SeededRandom random;
    const Uuid mask = addMask(stored, MaskComponent::Kind::radial, {1000, 600}, random);
    OpenEditor editor(stored);
    EXPECT_TRUE(editor.model.resetPanel(AdjustmentSpec::Group::basic));
    EXPECT_EQ(editor.model.edit().brightness, 0);
    EXPECT_EQ(editor.model.edit().cropLeft, 0.2);
    EXPECT_TRUE(editor.model.revertToOriginal());
    EXPECT_FALSE(editor.model.revertToOriginal());
    EXPECT_NE(findMask(editor.model.edit(), mask), nullptr);
    EXPECT_TRUE(editor.model.removeAllMasks());
    EXPECT_EQ(editor.model.undoName(), "Remove All Masks");

    Adjustments clipboard;
    clipboard.contrast = 20;
    clipboard.cropTop = 0.3;
    EXPECT_TRUE(editor.model.paste(clipboard));
    EXPECT_EQ(editor.model.edit().contrast, 20);
    EXPECT_EQ(editor.model.edit().cropTop, 0);
    EXPECT_EQ(editor.notices.back(), "Adjustments pasted");
    PasteParts cropOnly;
    cropOnly.groups.fill(false);
    cropOnly.masks = false;
    cropOnly.set(AdjustmentSpec::Group::crop, true);
    clipboard.contrast = 70;
    EXPECT_TRUE(editor.model.paste(clipboard, cropOnly));
    EXPECT_EQ(editor.model.edit().contrast, 20);
    EXPECT_EQ(editor.model.edit().cropTop, 0.3);
    EXPECT_EQ(editor.model.copied(), editor.model.edit());
    EXPECT_EQ(editor.notices.back(), "Adjustments copied");
    while (editor.model.canUndo())
        editor.model.undo();
    EXPECT_EQ(editor.model.edit(), stored);
}

TEST(EditorModel, APreviewIsShownAndNeverSaved) {
    OpenEditor editor;
    Adjustments preview;
    preview.vibrance = 40;
    editor.model.setPreview(preview);
    EXPECT_EQ(editor.model.shown(), preview);
    EXPECT_EQ(editor.model.edit(), Adjustments());
    setExposure(editor.model, 1);
    EXPECT_EQ(editor.model.shown().vibrance, 0);
    editor.store.endAll();
    EXPECT_EQ(editor.store.saved.back().vibrance, 0);
}

TEST(EditorModel, StepsAreThereAgainWhenThePhotoIsOpenedAgain) {
    OpenEditor editor;
    setExposure(editor.model, 1);
    bool settled = false;
    editor.model.leave([&] { settled = true; });
    EXPECT_FALSE(settled); // the write is still on its way
    editor.store.endAll();
    EXPECT_TRUE(settled);
    EditedPhoto other = editor.photo;
    other.location = "/photos/b.jpg";
    editor.model.open(other, {});
    EXPECT_FALSE(editor.model.canUndo());
    Adjustments stored;
    stored.exposure = 1;
    editor.model.open(editor.photo, stored);
    EXPECT_TRUE(editor.model.canUndo());
    // Changed meanwhile: that is one more step.
    stored.exposure = 3;
    editor.model.open(editor.photo, stored);
    EXPECT_EQ(editor.model.edit().exposure, 3);
    editor.model.undo();
    EXPECT_EQ(editor.model.edit().exposure, 1);
}

TEST(EditorModel, AnEditFromANewerVersionCanOnlyBeLookedAt) {
    OpenEditor editor;
    editor.model.open(editor.photo, {}, "This edit needs a newer Kelvaro.");
    setExposure(editor.model, 1);
    EXPECT_FALSE(editor.model.revertToOriginal());
    EXPECT_FALSE(editor.model.paste({}));
    EXPECT_FALSE(editor.model.beginChange("Exposure"));
    editor.model.changedOnDisk({});
    editor.model.leave();
    EXPECT_EQ(editor.model.edit(), Adjustments());
    EXPECT_TRUE(editor.store.waiting.empty());
}

TEST(EditorModel, KeepsBothWhenTheSidecarChangesUnderIt) {
    OpenEditor editor;
    Adjustments theirs;
    theirs.clarity = 10;
    editor.model.changedOnDisk(theirs); // nothing of ours waits: it becomes a step
    EXPECT_EQ(editor.model.edit().clarity, 10);
    EXPECT_TRUE(editor.store.waiting.empty());
    setExposure(editor.model, 1);
    theirs.clarity = 20;
    editor.model.changedOnDisk(theirs); // ours is on its way
    ASSERT_EQ(editor.store.kept.size(), 1u);
    EXPECT_EQ(editor.store.kept.front().clarity, 20);
    EXPECT_EQ(editor.model.edit().clarity, 10);
    EXPECT_EQ(editor.notices.back(),
              "a.jpg was also edited elsewhere. That version is kept as “other-1”.");
    editor.store.end(SaveOutcome{"a.jpg.json.other-1"});
    EXPECT_EQ(editor.notices.back(),
              "a.jpg was also edited elsewhere. That version is kept as “a.jpg.json.other-1”.");
}

TEST(EditorModel, WaitsForAnUnpluggedDriveAndTellsOfReplacedPhotos) {
    OpenEditor editor;
    editor.model.setPresence(PhotoPresence::unplugged);
    setExposure(editor.model, 1);
    editor.store.end(
        fail(FailureKind::notFound, "“Card A” isn't available. Is its drive connected?"));
    EXPECT_FALSE(editor.model.isSaved());
    EXPECT_EQ(editor.model.saveProblem(), "“Card A” isn't available. Is its drive connected?");
    editor.model.leave();
    EXPECT_EQ(editor.saver.unsavedPhotos().size(), 1u);
    editor.model.open(editor.photo, {}); // the library still has what the disk had
    EXPECT_EQ(editor.model.edit().exposure, 1);
    editor.model.setPresence(PhotoPresence::unplugged);
    editor.model.setPresence(PhotoPresence::here);
    ASSERT_EQ(editor.store.waiting.size(), 1u);
    editor.store.end();
    EXPECT_EQ(editor.store.saved.back().exposure, 1);
    EXPECT_TRUE(editor.saver.isAllSaved());

    editor.model.setPresence(PhotoPresence::replaced);
    EXPECT_EQ(editor.reloads, 1);
    editor.model.setPresence(PhotoPresence::deleted);
    EXPECT_EQ(editor.model.presence(), PhotoPresence::deleted);
}

TEST(EditorModel, ThreeHundredStepsShareTheirStrokes) {
    OpenEditor editor;
    SeededRandom random;
    Uuid mask;
    editor.model.change("Brush", [&](Adjustments& edit) {
        mask = addMask(edit, MaskComponent::Kind::brush, {1000, 600}, random);
    });
    constexpr std::size_t steps = 300, points = 2000;
    for (std::size_t step = 0; step < steps; ++step) {
        editor.model.change("Paint", [&](Adjustments& edit) {
            BrushStroke stroke;
            stroke.points.assign(points, MaskPoint{double(step) / steps, 0.5});
            edit.masks.front().components.front().strokes.push_back(std::move(stroke));
        });
        editor.store.endAll();
        editor.store.saved.clear();
        ASSERT_EQ(editor.model.history().current().strokeCount(), step + 1);
    }
    const SharedEdit last = editor.model.history().current();
    editor.model.undo();
    EXPECT_EQ(last.sharedStrokes(editor.model.history().current()), steps - 1);
    EXPECT_EQ(editor.model.edit().masks.front().components.front().strokes.size(), steps - 1);
    // However slow the disk is: one write is on its way, and the newest edit comes after it.
    while (editor.model.canUndo())
        editor.model.undo();
    EXPECT_EQ(editor.model.edit(), Adjustments());
    EXPECT_EQ(editor.store.waiting.size(), 1u);
    while (editor.model.canRedo())
        editor.model.redo();
    EXPECT_EQ(SharedEdit::of(Adjustments(editor.model.edit())), last);
    editor.store.endAll();
    EXPECT_EQ(editor.store.saved.size(), 2u);
    EXPECT_EQ(editor.store.saved.back(), editor.model.edit());
}

} // namespace
} // namespace kelvaro
