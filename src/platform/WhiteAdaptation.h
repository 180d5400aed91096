// Chromatic adaptation between two white points given as correlated colour temperature and tint, as
// a matrix on linear Rec. 709 values.
#pragma once

#include "platform/Image.h"

namespace kelvaro {

// CIE 1931 chromaticity of a white point: the Planckian locus (Krystek's rational approximation,
// Color Res. Appl. 10, 1985), moved along the isotherm of CIE 1960 uv by the tint, 1/3000 per unit
// towards green: compensating for a positive tint turns the picture towards magenta.
Point whiteChromaticity(WhitePoint white);

// Light that looked neutral under `neutral` looks neutral under `target`. Linear Bradford
// transform; the exact identity when both are equal, and the luminance of neutral grey is kept.
Matrix3 whiteAdaptationMatrix(WhitePoint neutral, WhitePoint target);

} // namespace kelvaro
