// Light and surface colours of each kind of landscape.
#pragma once

#include "samples/Scene.h"

namespace kelvaro::samples {

Palette paletteOf(SceneKind kind);

} // namespace kelvaro::samples
