// The ICC profiles that exported files carry: version 4, curves and matrix, about half a kilobyte.
// They are the same bytes whenever they are made.
#pragma once

#include "platform/ImageFiles.h"
#include "platform/codecs/LcmsContext.h"

#include <cstddef>
#include <vector>

namespace kelvaro {

// Null when out of memory.
LcmsProfile makeLcmsProfile(cmsContext context, OutputSpace space);

// Named by profileNameOf(). Throws std::bad_alloc.
const std::vector<std::byte>& outputProfile(OutputSpace space);

} // namespace kelvaro
