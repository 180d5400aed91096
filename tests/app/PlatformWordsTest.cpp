#include "app/PlatformWords.h"

#include "app/Mails.h"
#include "platform/system/FreedesktopDesktop.h"

#include <gtest/gtest.h>

namespace kelvaro {
namespace {

TEST(PlatformWords, TurnKeysAndNamesIntoThisPlatforms) {
    struct Row {
        std::string_view stored, shown;
    };
    const Row table[] = {
        {"Export (⇧⌘E)", "Export (Ctrl+Shift+E)"},
        {"Show or hide the sidebar (⌃⌘S)", "Show or hide the sidebar (Ctrl+Alt+S)"},
        {"Removes every mask; the other adjustments stay (⌘Z undoes)",
         "Removes every mask; the other adjustments stay (Ctrl+Z undoes)"},
        {"double-click to reset, hold ⌥ for fine control.",
         "double-click to reset, hold Alt for fine control."},
        {"Hold ⌥ while painting for the other one (E switches)",
         "Hold Alt while painting for the other one (E switches)"},
        {"Show in Finder", "Show in File Manager"},
        {"Remove from Favorites (.)", "Remove from Favorites (.)"},
        {"Hold to see the original (or hold \\)", "Hold to see the original (or hold \\)"},
        {"Launches, with the app and macOS versions.",
         "Launches, with the program's and the system's versions."},
        {"Müller — “Ä”", "Müller — “Ä”"},
        {"", ""},
    };
    for (const Row& row : table)
        EXPECT_EQ(shownText(row.stored), row.shown);
    EXPECT_EQ(shownKey("⇧⌘E"), "Ctrl+Shift+E");
    EXPECT_EQ(shownKey("⌃⌘S"), "Ctrl+Alt+S");
    EXPECT_EQ(shownKey("⌥⌘I"), "Ctrl+Alt+I");
    EXPECT_EQ(shownKey("."), ".");
    EXPECT_EQ(shownKey("Esc"), "Esc");
}

TEST(Mails, AskWhatHelpsAndNameTheSystem) {
    const MailDraft report = problemReport({"0.1.0", "Debian 12", "Example 9000"});
    EXPECT_EQ(report.subject, "Kelvaro: problem report");
    EXPECT_TRUE(report.body.starts_with(
        "What happened:\n\n\nSteps to reproduce (if you know them):\n\n\nIf Kelvaro quit "
        "unexpectedly, macOS saved a report in ~/Library/Logs/DiagnosticReports"));
    EXPECT_TRUE(report.body.ends_with(
        "— Please keep these details —\nKelvaro 0.1.0\nDebian 12\nExample 9000"));
    const std::string shown = shownText(report.body);
    EXPECT_EQ(shown.find("macOS"), std::string::npos);
    EXPECT_NE(shown.find("a report was saved in ~/.local/share/Kelvaro/crash-reports"),
              std::string::npos);
    EXPECT_EQ(feedback().body, "\n\n\n— Kelvaro");
    EXPECT_EQ(feedback().subject, "Kelvaro: feedback");
}

TEST(Mails, AreEncodedForAMailProgram) {
    EXPECT_EQ(mailAddress("a@b.c", "K: x & y", "1\n2?"),
              "mailto:a@b.c?subject=K%3A%20x%20%26%20y&body=1%0A2%3F");
}

TEST(SystemDetails, AreReadFromTheSystemsFiles) {
    EXPECT_EQ(prettyName("NAME=\"Debian\"\nPRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\n"),
              "Debian GNU/Linux 12 (bookworm)");
    EXPECT_EQ(prettyName("PRETTY_NAME=Plain\n"), "Plain");
    EXPECT_EQ(prettyName("NAME=x\n"), "");
    EXPECT_EQ(modelName("processor : 0\nmodel name\t: Example 9000 @ 3 GHz\nmodel name\t: Other\n"),
              "Example 9000 @ 3 GHz");
    EXPECT_EQ(modelName("processor : 0\n"), "");
}

} // namespace
} // namespace kelvaro
