// The fast renderer: walks the output in tiles that stay in the processor's caches, spread over
// threads, with vector code. Cancellation is seen between tiles.
#pragma once

#include "platform/Renderer.h"

#include <memory>

namespace kelvaro {

// `threads` 0 means one per core.
std::unique_ptr<Renderer> makeTiledRenderer(int threads = 0);
// The same, but its threads go to other renderers as soon as those have work: for exports.
std::unique_ptr<Renderer> makeBackgroundRenderer();

} // namespace kelvaro
