// The standard transfer curves and primaries that files name instead of embedding a profile, and
// the way from any primaries to linear Rec. 709. Curves map 0 … 1 stored values to linear light
// with diffuse white at 1.
#pragma once

#include "platform/Bitmap.h"

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelvaro {

using Matrix3 = std::array<std::array<double, 3>, 3>;
using ToneTable = std::shared_ptr<const std::vector<float>>;

struct Chromaticities { // CIE 1931 x, y
    double redX, redY, greenX, greenY, blueX, blueY, whiteX, whiteY;
    bool operator==(const Chromaticities&) const = default;
};
inline constexpr Chromaticities kRec709Primaries{0.64, 0.33, 0.30,   0.60,
                                                 0.15, 0.06, 0.3127, 0.3290};
inline constexpr Chromaticities kDisplayP3Primaries{0.680, 0.320, 0.265,  0.690,
                                                    0.150, 0.060, 0.3127, 0.3290};

enum class Transfer {
    sRGB,   // IEC 61966-2-1
    linear, //
    rec709, // inverse of ITU-R BT.709's camera curve
    gamma,  // a plain power
    pq,     // SMPTE ST 2084, 203 cd/m² (ITU-R BT.2408 diffuse white) at 1
    hlg,    // ITU-R BT.2100 for a 1,000 cd/m² screen, 203 cd/m² at 1
};

// What pixels without a profile mean.
struct StandardColour {
    Chromaticities primaries = kRec709Primaries;
    Transfer transfer = Transfer::sRGB;
    double gamma = 2.2; // of Transfer::gamma
    std::string name = "sRGB";
};

// Linear light of a stored value 0 … 1. HLG's system gamma of 1.2 is applied per channel, which is
// exact for neutral colours: tables cannot couple the channels.
double decodeTransfer(const StandardColour& colour, double value);

// Columns are the XYZ of the primaries, scaled so that equal amounts make the white; none for
// chromaticities that span no triangle around it.
std::optional<Matrix3> primariesToXyz(const Chromaticities& primaries);
// From linear light with these primaries to linear Rec. 709, white adapted by Bradford; none like
// above.
std::optional<Matrix3> matrixToRec709(const Chromaticities& primaries);
// From XYZ of the ICC connection space (D50) to linear Rec. 709, by Bradford.
Matrix3 connectionSpaceToRec709();

std::optional<Matrix3> inverse(const Matrix3& m);
Matrix3 multiply(const Matrix3& a, const Matrix3& b);

// One entry per stored value: 256 for u8, 65536 for u16. Values are made finite.
ToneTable makeToneTable(SampleType type, const std::function<double(double)>& curve);
// The sRGB table of a type, made once.
ToneTable sRGBToneTable(SampleType type);

// Sets the matrix, and the identity flag when no element is further than `tolerance` from it.
void setMatrix(ColourDecoding& decoding, const Matrix3& matrix, double tolerance);

// How u8 and u16 samples of this colour become linear Rec. 709. Senseless primaries count as Rec.
// 709.
ColourDecoding decodingOf(const StandardColour& colour, SampleType type);

} // namespace kelvaro
