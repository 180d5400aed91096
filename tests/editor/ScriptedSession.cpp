// usage: scripted_session PHOTO SUPPORT
//
// Edits a photo of a library by the script until it is killed, saving through the library after
// every stroke, as the window does. Writes a line "STEP SECONDS" (of the monotonic clock) for each
// step that the user would have seen.
#include "editor/ScriptedSession.h"

#include "app/EditingServices.h"
#include "base/MainLoop.h"
#include "editor/EditorModel.h"
#include "fakes/FolderTrash.h"
#include "fakes/MemorySettings.h"

#include <cstdio>

using namespace kelvaro;

int main(int count, char** arguments) {
    if (count != 3) return 2;
    const std::filesystem::path photo = arguments[1], support = arguments[2];
    const Cancellation interruption;
    Services services = makeServices(interruption);
    const UserFolders folders{support, support, support, support, support};
    MemorySettings settings;
    settings.set("folders", std::vector<std::string>{photo.parent_path().string()});
    FolderTrash trash(support / "trash");
    MainLoop loop;
    LibraryStore library(LibraryServices{.files = *services.files,
                                         .settings = settings,
                                         .folders = folders,
                                         .clock = *services.clock,
                                         .main = loop,
                                         .random = *services.random,
                                         .properties = *services.properties,
                                         .texts = *services.texts,
                                         .calendar = *services.calendar,
                                         .trash = trash});
    EditingServices editing(services, folders, loop, library, {});
    EditorModel model(editing.saver(), {[] {}, [](const std::string&) {}, [] {}});
    if (!loop.runUntil([&] { return library.photo(photo.string()) != nullptr; }, 20)) return 1;
    model.open({photo, {6000, 4000}}, {});
    for (int step = 1; step <= test::lastScriptedStep; ++step) {
        if (step % test::stepsPerStroke == 1) model.beginChange("Paint");
        model.change("Paint", [&](Adjustments& edit) { edit = test::scriptedEdit(step); });
        if (step % test::stepsPerStroke == 0) model.endChange();
        std::printf("%d %.6f\n", step, services.clock->monotonicSeconds());
        std::fflush(stdout);
        // Other things happen on the main thread until the next event of the pointer.
        loop.runUntil([] { return false; }, 0.004);
    }
    return 0;
}
