// Every RAW file as we render it beside the picture that its camera made of it.
#pragma once

#include "Picture.h"
#include "app/Services.h"

#include <filesystem>

namespace kelvaro::report {

// For each file in `raw`: the embedded preview, the default rendering and 100 % crops, as one PNG
// per file and one sheet of all, in `folder`.
void makeContactSheets(const std::filesystem::path& raw, const std::filesystem::path& folder,
                       Services& services);

// Median CIEDE2000 between preview and default rendering at 512 pixels, per file, beside that of
// the scene-linear picture without any rendering.
void printCameraMatch(const std::filesystem::path& raw, Services& services);

} // namespace kelvaro::report
