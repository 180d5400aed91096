// Small sheets that only tell something: about the program, and the introduction of the first
// start.
#pragma once

#include "ui/controls/Overlay.h"

namespace kelvaro {

// Both open at once and delete themselves.
void showAbout(const Appearance& appearance, QWidget* window, const QString& version);
// Three short pages with the way to add a folder at the end; can be skipped on each.
void showIntroduction(const Appearance& appearance, QWidget* window,
                      std::function<void()> addFolder, std::function<void()> closed);

} // namespace kelvaro
