// Texts are stored once, in the words of the product; these functions turn them into what a person
// on this system reads. UTF-8 throughout.
#pragma once

#include <string>
#include <string_view>

namespace kelvaro {

// "Export (⇧⌘E)" becomes "Export (Ctrl+Shift+E)", "Show in Finder" "Show in File Manager". Texts
// that name nothing of another platform come back as they are.
std::string shownText(std::string_view stored);

// A key on its own: "⇧⌘E" becomes "Ctrl+Shift+E", "." and "C" stay. Modifiers come in the order of
// this platform: Ctrl, Alt, Shift.
std::string shownKey(std::string_view stored);

} // namespace kelvaro
