// Size and border of an exported picture. Sizes in pixels; pure functions, any thread.
#pragma once

#include "export/ExportSettings.h"
#include "platform/Image.h"

namespace kelvaro {

// The size that a developed photo is reduced to. With `resize` its longer side and the border
// together are `longEdge`, as exactly as whole pixels allow and never more; the other side keeps
// the proportions. Photos are never enlarged.
PixelSize resizedTo(PixelSize photo, const ExportSettings& settings);
// The photo reduced so, by Lanczos; the photo itself where it stays as large.
Image resized(const Image& photo, const ExportSettings& settings);

// Width of the border on each side.
int borderPx(PixelSize picture, const ExportSettings& settings);
// The picture on opaque white, the same margin on all sides; itself without a border.
Image bordered(const Image& picture, const ExportSettings& settings);

} // namespace kelvaro
