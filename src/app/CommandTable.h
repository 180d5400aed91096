// Every operation that a user can ask for, once: its title, help text and key, where it stands in
// the menu bar, and what must hold for it to be enabled. Texts are as stored (see PlatformWords.h).
// Plain data; the window makes one action per row and calls what belongs to it.
#pragma once

#include <span>
#include <string_view>

namespace kelvaro {

enum class CommandId {
    about,
    checkForUpdates,
    settings,
    quit,
    addFolder,
    exportPhotos,
    moveToTrash,
    undo,
    redo,
    copyAdjustments,
    pasteAdjustments,
    revertToOriginal,
    selectAll,
    selectNone,
    find,
    toggleSidebar,
    largerCells,
    smallerCells,
    togglePhotoBar,
    toggleClipping,
    colourAssessment,
    showOriginal,
    profile,
    openPhoto,
    favorite,
    photoInfo,
    previousPhoto,
    nextPhoto,
    crop,
    masks,
    maskOverlay,
    brushErases,
    showFolder,
    rescan,
    backToLibrary,
    introduction,
    crashReports,
    reportProblem,
    sendFeedback,
    website,
};

enum class Menu { file, edit, view, photo, help, none };

// What is the case in the window; bits, so that a row can ask for several at once.
namespace circumstance {
inline constexpr unsigned library = 1;         // the grid is shown
inline constexpr unsigned editor = 2;          // a photo is open
inline constexpr unsigned photo = 4;           // a photo is open, or at least one is selected
inline constexpr unsigned onePhoto = 8;        // a photo is open, or exactly one is selected
inline constexpr unsigned copiedRecipe = 16;   // there is something to paste
inline constexpr unsigned editedPhoto = 32;    // the photo has an edit
inline constexpr unsigned undoable = 64;       // the editor has a step to undo
inline constexpr unsigned redoable = 128;      // and one to redo
inline constexpr unsigned visiblePhotos = 256; // the grid, or the editor's row, is not empty
inline constexpr unsigned maskEditing = 512;   // a mask is being worked on
} // namespace circumstance

struct Command {
    CommandId id;
    std::string_view name; // of the action, for tests and style; lowerCamel and unique
    Menu menu;
    std::string_view title;
    std::string_view titleWhenOn; // empty: the same
    std::string_view help;
    std::string_view helpWhenOn; // empty: the same
    std::string_view key;        // "⇧⌘E"; empty: none
    unsigned needs;              // of `circumstance`, all of them
    bool endsSection = false;    // a line follows in the menu
    bool held = false;           // acts for as long as the key is down
};

// The profile's help text after the name of the user, once it is known.
inline constexpr std::string_view profileHelpAfterName = "'s profile (⇧⌘P)";

std::span<const Command> commands();
const Command& command(CommandId id);

// Whether `command` can be called while `circumstances` are the case.
bool isEnabled(const Command& command, unsigned circumstances);

} // namespace kelvaro
