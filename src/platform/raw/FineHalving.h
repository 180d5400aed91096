// Half the size of a finished picture. Scene-linear light is compressed as the rendering curve does
// before it is averaged, so that the result is what a reduction of the rendered picture would show:
// else a pixel half covered by a lamp would come out as bright as the lamp.
#pragma once

#include "platform/raw/SensorImage.h"

namespace kelvaro {

// How far around its pixels a result reaches for its input, at full size.
inline constexpr int kHalvingBorder = 5;

// In place on a plane of linear values, `width` × `height` pixels of the result; (0, 0) of the
// plane lies kHalvingBorder above and to the left of their pixels. Rows are `stride` floats apart.
void halveFinely(float* plane, std::ptrdiff_t stride, int width, int height);

} // namespace kelvaro
