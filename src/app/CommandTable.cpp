#include "app/CommandTable.h"

#include "base/Require.h"

#include <algorithm>
#include <array>

namespace kelvaro {
namespace {

using namespace circumstance;

// In the order of the menus. Columns: id, name, menu, title, title when on, help, help when on,
// key, needs, whether a line follows, whether it acts while held.
constexpr std::array table{
    Command{CommandId::addFolder, "addFolder", Menu::file, "Add Folder…", "",
            "Add a folder of photos; originals are never changed", "", "⌘O", 0, true},
    Command{CommandId::exportPhotos, "exportPhotos", Menu::file, "Export…", "", "Export (⇧⌘E)", "",
            "⇧⌘E", photo},
    Command{CommandId::showFolder, "showFolder", Menu::file, "Show in Finder", "",
            "Show the photo's file in the Finder (⇧⌘R)", "", "⇧⌘R", photo},
    Command{CommandId::rescan, "rescan", Menu::file, "Look for Changes", "",
            "Look for new and changed photos in every folder (F5)", "", "F5", library, true},
    Command{CommandId::moveToTrash, "moveToTrash", Menu::file, "Move to Trash…", "",
            "Move the selected photos to the Trash (Delete)", "", "Delete", library | photo, true},
    Command{CommandId::settings, "settings", Menu::file, "Settings…", "", "Settings (⌘,)", "", "⌘,",
            0},
    Command{CommandId::quit, "quit", Menu::file, "Quit", "", "Quit Kelvaro (⌘Q)", "", "⌘Q", 0},

    Command{CommandId::undo, "undo", Menu::edit, "Undo", "", "Undo (⌘Z)", "", "⌘Z",
            editor | undoable},
    Command{CommandId::redo, "redo", Menu::edit, "Redo", "", "Redo (⇧⌘Z)", "", "⇧⌘Z",
            editor | redoable, true},
    Command{CommandId::copyAdjustments, "copyAdjustments", Menu::edit, "Copy Adjustments", "",
            "Copy Adjustments (⇧⌘C)", "", "⇧⌘C", onePhoto | editedPhoto},
    Command{CommandId::pasteAdjustments, "pasteAdjustments", Menu::edit, "Paste Adjustments", "",
            "Paste Adjustments (⇧⌘V)", "", "⇧⌘V", photo | copiedRecipe},
    Command{CommandId::revertToOriginal, "revertToOriginal", Menu::edit, "Revert to Original", "",
            "Clears every adjustment, including the crop; masks stay (⌘Z undoes)", "", "",
            photo | editedPhoto, true},
    Command{CommandId::selectAll, "selectAll", Menu::edit, "Select All", "",
            "Select all photos shown (⌘A)", "", "⌘A", library | visiblePhotos},
    Command{CommandId::selectNone, "selectNone", Menu::edit, "Select None", "",
            "Select no photo (⇧⌘A)", "", "⇧⌘A", library | photo, true},
    Command{CommandId::find, "find", Menu::edit, "Find", "",
            "Search names and photo info: camera, lens, 35mm, f/1.8, iso 400, 1/250, 2024, March… "
            "(⌘F)",
            "", "⌘F", library},

    Command{CommandId::toggleSidebar, "toggleSidebar", Menu::view, "Show Sidebar", "Hide Sidebar",
            "Show or hide the sidebar (⌃⌘S)", "", "⌃⌘S", library},
    Command{CommandId::togglePhotoBar, "togglePhotoBar", Menu::view, "Show Photo Bar",
            "Hide Photo Bar", "Show Photo Bar (⇧⌘F)", "Hide Photo Bar (⇧⌘F)", "⇧⌘F", editor, true},
    Command{CommandId::largerCells, "largerCells", Menu::view, "Larger Photos", "",
            "Larger photos in the grid (⌘+)", "", "⌘+", library},
    Command{CommandId::smallerCells, "smallerCells", Menu::view, "Smaller Photos", "",
            "Smaller photos in the grid (⌘-)", "", "⌘-", library, true},
    Command{CommandId::toggleClipping, "toggleClipping", Menu::view, "Show/Hide Clipping", "",
            "No clipped highlights. Click to show clipping (J)",
            "Highlights are clipping. Click to show where (J)", "J", editor},
    Command{CommandId::colourAssessment, "colourAssessment", Menu::view, "Colour Assessment", "",
            "Show the photo on middle grey with a white frame, to judge its colours", "", "",
            editor},
    Command{CommandId::showOriginal, "showOriginal", Menu::view, "Show Original", "",
            "Hold to see the original (or hold \\)", "", "\\", editor, true, true},
    Command{CommandId::profile, "profile", Menu::view, "Your Profile", "", "Your profile (⇧⌘P)", "",
            "⇧⌘P", 0},

    Command{CommandId::openPhoto, "openPhoto", Menu::photo, "Open", "", "Open the photo (Return)",
            "", "", library | photo},
    Command{CommandId::favorite, "favorite", Menu::photo, "Favorite", "Remove from Favorites",
            "Favorite (.)", "Remove from Favorites (.)", ".", photo},
    Command{CommandId::photoInfo, "photoInfo", Menu::photo, "Photo Info", "", "Photo Info (⌘I)", "",
            "⌘I", onePhoto, true},
    Command{CommandId::previousPhoto, "previousPhoto", Menu::photo, "Previous Photo", "",
            "Previous photo (⌘[)", "", "⌘[", editor},
    Command{CommandId::nextPhoto, "nextPhoto", Menu::photo, "Next Photo", "", "Next photo (⌘])", "",
            "⌘]", editor, true},
    Command{CommandId::crop, "crop", Menu::photo, "Crop & Straighten", "", "Crop & Straighten (C)",
            "", "C", editor},
    Command{CommandId::masks, "masks", Menu::photo, "Masks", "",
            "Masks: brush, linear and radial local adjustments (M)", "", "M", editor},
    Command{CommandId::maskOverlay, "maskOverlay", Menu::photo, "Show Mask Overlay",
            "Hide Mask Overlay", "Show where all the masks apply, in orange (O)",
            "Hide the orange overlay (O)", "O", editor},
    Command{CommandId::brushErases, "brushErases", Menu::none, "Erase", "",
            "Hold ⌥ while painting for the other one (E switches)", "", "E", editor | maskEditing},
    Command{CommandId::backToLibrary, "backToLibrary", Menu::photo, "Back to Library", "",
            "Back to Library (Esc)", "", "Esc", editor},

    Command{CommandId::introduction, "introduction", Menu::help, "Introduction", "",
            "Show the short introduction again", "", "", library, true},
    Command{CommandId::crashReports, "crashReports", Menu::help, "Show Crash Reports", "",
            "Open the folder of crash reports", "", "", 0},
    Command{CommandId::reportProblem, "reportProblem", Menu::help, "Report a Problem…", "",
            "Write a mail about something that went wrong", "", "", 0},
    Command{CommandId::sendFeedback, "sendFeedback", Menu::help, "Send Feedback or an Idea…", "",
            "Write a mail with an idea or a thought", "", "", 0, true},
    Command{CommandId::checkForUpdates, "checkForUpdates", Menu::help, "Check for Updates…", "",
            "See how Kelvaro is kept up to date", "", "", 0},
    Command{CommandId::website, "website", Menu::help, "Kelvaro Website", "",
            "Open Kelvaro's web page", "", "", 0},
    Command{CommandId::about, "about", Menu::help, "About Kelvaro", "", "About Kelvaro", "", "", 0},
};

} // namespace

std::span<const Command> commands() {
    return table;
}

const Command& command(CommandId id) {
    const auto found = std::ranges::find(table, id, &Command::id);
    KELVARO_REQUIRE(found != table.end());
    return *found;
}

bool isEnabled(const Command& command, unsigned circumstances) {
    return (command.needs & ~circumstances) == 0;
}

} // namespace kelvaro
