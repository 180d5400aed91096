// The plain renderer: one pixel at a time, in double precision, straight from the definitions. Slow
// on purpose; tests compare the fast one with it.
#pragma once

#include "platform/Renderer.h"

#include <memory>

namespace kelvaro {

std::unique_ptr<Renderer> makeReferenceRenderer();

} // namespace kelvaro
