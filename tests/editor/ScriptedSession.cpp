// usage: scripted_session PHOTO SUPPORT
//
// Edits a photo by the script until it is killed, saving through the sidecar after every stroke.
// Writes a line "STEP SECONDS" (of the monotonic clock) for each step that the user would have
// seen.
#include "editor/ScriptedSession.h"

#include "base/MainLoop.h"
#include "editor/EditorModel.h"
#include "editor/JournalRecovery.h"
#include "editor/SidecarEditStore.h"
#include "platform/system/PosixAppendFiles.h"
#include "platform/system/PosixFileSystem.h"
#include "platform/system/SystemClock.h"
#include "platform/system/SystemRandom.h"

#include <cstdio>

using namespace kelvaro;

int main(int count, char** arguments) {
    if (count != 3) return 2;
    PosixFileSystem files;
    PosixAppendFiles appendFiles;
    SystemRandom random;
    SystemClock clock;
    MainLoop loop;
    SerialQueue queue("kelvaro.sidecars");
    SidecarEditStore store(files, random, queue, loop);
    SessionJournal journal(files, appendFiles, loop, newJournalPath(arguments[2], random));
    EditSaver saver(store, &journal, clock, {[] {}, [](const std::string&) {}});
    EditorModel model(saver, {[] {}, [](const std::string&) {}, [] {}});
    model.open({arguments[1], {6000, 4000}}, {});
    for (int step = 1; step <= test::lastScriptedStep; ++step) {
        if (step % test::stepsPerStroke == 1) model.beginChange("Paint");
        model.change("Paint", [&](Adjustments& edit) { edit = test::scriptedEdit(step); });
        if (step % test::stepsPerStroke == 0) model.endChange();
        std::printf("%d %.6f\n", step, clock.monotonicSeconds());
        std::fflush(stdout);
        // Other things happen on the main thread until the next event of the pointer.
        loop.runUntil([] { return false; }, 0.004);
    }
    return 0;
}
