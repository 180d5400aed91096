#include "app/PlatformWords.h"

#include <array>

namespace kelvaro {
namespace {

struct Word {
    std::string_view stored, shown;
};

// Longer ones first where one begins with another.
constexpr std::array words{
    Word{"Show in Finder", "Show in File Manager"},
    Word{"the Finder", "the file manager"},
    Word{"Finder", "file manager"},
    Word{"Apple's RAW engine", "Kelvaro's RAW engine"},
    Word{"macOS saved a report in ~/Library/Logs/DiagnosticReports",
         "a report was saved in ~/.local/share/Kelvaro/crash-reports"},
    Word{"~/Library/Logs/DiagnosticReports", "~/.local/share/Kelvaro/crash-reports"},
    Word{"the app and macOS versions", "the program's and the system's versions"},
    Word{"macOS", "the system"},
};

struct Modifier {
    std::string_view symbol;
    unsigned bit;
};
constexpr unsigned command = 1, control = 2, option = 4, shift = 8;
constexpr std::array modifiers{Modifier{"⌘", command}, Modifier{"⌃", control},
                               Modifier{"⌥", option}, Modifier{"⇧", shift}};

// The modifier that `text` begins with; null when it begins with something else.
const Modifier* modifierAt(std::string_view text) {
    for (const Modifier& modifier : modifiers) {
        if (text.starts_with(modifier.symbol)) return &modifier;
    }
    return nullptr;
}

// The command key is Ctrl here. Where a key wants control as well, Alt takes its place.
std::string modifierNames(unsigned held) {
    std::string names;
    if (held & (command | control)) names += "Ctrl+";
    if (held & option || (held & command && held & control)) names += "Alt+";
    if (held & shift) names += "Shift+";
    return names;
}

// Reads the run of modifiers that `text` begins with and takes it off the text.
unsigned takeModifiers(std::string_view& text) {
    unsigned held = 0;
    while (const Modifier* modifier = modifierAt(text)) {
        held |= modifier->bit;
        text.remove_prefix(modifier->symbol.size());
    }
    return held;
}

bool beginsWord(std::string_view text) {
    return !text.empty() && static_cast<unsigned char>(text.front()) > ' ' && text.front() != ')';
}

} // namespace

std::string shownKey(std::string_view stored) {
    const unsigned held = takeModifiers(stored);
    return modifierNames(held) + std::string(stored);
}

std::string shownText(std::string_view stored) {
    std::string shown;
    shown.reserve(stored.size());
    while (!stored.empty()) {
        if (const unsigned held = takeModifiers(stored)) {
            std::string names = modifierNames(held);
            // A modifier on its own ("hold ⌥") is named without the plus.
            if (!beginsWord(stored)) names.pop_back();
            shown += names;
            continue;
        }
        bool replaced = false;
        for (const Word& word : words) {
            if (!stored.starts_with(word.stored)) continue;
            shown += word.shown;
            stored.remove_prefix(word.stored.size());
            replaced = true;
            break;
        }
        if (replaced) continue;
        shown += stored.front();
        stored.remove_prefix(1);
    }
    return shown;
}

} // namespace kelvaro
