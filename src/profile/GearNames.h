// What the name of a camera or a lens gives away. Names are as cameras record them.
#pragma once

#include <string_view>

namespace kelvaro {

// Whether the name holds a range of focal lengths ("24-70mm", "18 - 55"); any other lens is of one
// fixed focal length.
bool isZoomLens(std::string_view lens);

// Whether the camera is a telephone's.
bool isPhone(std::string_view camera);

} // namespace kelvaro
