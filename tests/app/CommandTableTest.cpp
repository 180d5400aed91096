#include "app/CommandTable.h"

#include "app/PlatformWords.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

namespace kelvaro {
namespace {

TEST(CommandTable, IdsNamesAndKeysAreGivenOnce) {
    std::set<CommandId> ids;
    std::set<std::string_view> names;
    std::map<std::string, std::string_view> keys;
    for (const Command& row : commands()) {
        EXPECT_TRUE(ids.insert(row.id).second) << row.name;
        EXPECT_TRUE(names.insert(row.name).second) << row.name;
        EXPECT_FALSE(row.title.empty()) << row.name;
        EXPECT_FALSE(row.help.empty()) << row.name;
        if (row.key.empty()) continue;
        // Two stored keys may become one here: ⌘ and ⌃ both are Ctrl.
        const auto [place, isNew] = keys.emplace(shownKey(row.key), row.name);
        EXPECT_TRUE(isNew) << row.name << " and " << place->second << " share " << place->first;
    }
}

TEST(CommandTable, HelpTextsNameTheKeyThatWorks) {
    struct Expected {
        CommandId id;
        std::string_view key, help, helpWhenOn;
    };
    const Expected table[] = {
        {CommandId::exportPhotos, "⇧⌘E", "Export (⇧⌘E)", ""},
        {CommandId::copyAdjustments, "⇧⌘C", "Copy Adjustments (⇧⌘C)", ""},
        {CommandId::pasteAdjustments, "⇧⌘V", "Paste Adjustments (⇧⌘V)", ""},
        {CommandId::toggleSidebar, "⌃⌘S", "Show or hide the sidebar (⌃⌘S)", ""},
        {CommandId::find, "⌘F",
         "Search names and photo info: camera, lens, 35mm, f/1.8, iso 400, 1/250, 2024, March… "
         "(⌘F)",
         ""},
        {CommandId::profile, "⇧⌘P", "Your profile (⇧⌘P)", ""},
        {CommandId::togglePhotoBar, "⇧⌘F", "Show Photo Bar (⇧⌘F)", "Hide Photo Bar (⇧⌘F)"},
        {CommandId::photoInfo, "⌘I", "Photo Info (⌘I)", ""},
        {CommandId::backToLibrary, "Esc", "Back to Library (Esc)", ""},
        {CommandId::crop, "C", "Crop & Straighten (C)", ""},
        {CommandId::masks, "M", "Masks: brush, linear and radial local adjustments (M)", ""},
        {CommandId::toggleClipping, "J", "No clipped highlights. Click to show clipping (J)",
         "Highlights are clipping. Click to show where (J)"},
        {CommandId::brushErases, "E", "Hold ⌥ while painting for the other one (E switches)", ""},
        {CommandId::showOriginal, "\\", "Hold to see the original (or hold \\)", ""},
    };
    for (const Expected& expected : table) {
        const Command& row = command(expected.id);
        EXPECT_EQ(row.key, expected.key) << row.name;
        EXPECT_EQ(row.help, expected.help) << row.name;
        EXPECT_EQ(row.helpWhenOn, expected.helpWhenOn) << row.name;
    }
}

TEST(CommandTable, MenusHoldEveryTitleOnce) {
    const std::pair<std::string_view, Menu> expected[] = {
        {"About Kelvaro", Menu::help},      {"Check for Updates…", Menu::help},
        {"Copy Adjustments", Menu::edit},   {"Paste Adjustments", Menu::edit},
        {"Revert to Original", Menu::edit}, {"Move to Trash…", Menu::file},
        {"Show/Hide Clipping", Menu::view}, {"Colour Assessment", Menu::view},
        {"Show Crash Reports", Menu::help}, {"Report a Problem…", Menu::help},
        {"Kelvaro Website", Menu::help},    {"Send Feedback or an Idea…", Menu::help},
    };
    for (const auto& [title, menu] : expected) {
        const auto rows = commands();
        const auto isIt = [title = title](const Command& row) { return row.title == title; };
        ASSERT_EQ(std::ranges::count_if(rows, isIt), 1) << title;
        EXPECT_EQ(std::ranges::find_if(rows, isIt)->menu, menu) << title;
    }
}

TEST(CommandTable, NeedsAllCircumstances) {
    using namespace circumstance;
    const Command& paste = command(CommandId::pasteAdjustments);
    EXPECT_FALSE(isEnabled(paste, library | photo));
    EXPECT_FALSE(isEnabled(paste, library | copiedRecipe));
    EXPECT_TRUE(isEnabled(paste, library | photo | copiedRecipe | onePhoto));
    EXPECT_TRUE(isEnabled(command(CommandId::quit), 0));
}

} // namespace
} // namespace kelvaro
