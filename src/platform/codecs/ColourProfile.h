// Embedded ICC profiles, read through LittleCMS 2. Profiles made of curves and a matrix become tone
// tables and a matrix; all others become a transform of whole rows. Domain: profile device values
// in, linear Rec. 709 in extended range out.
#pragma once

#include "platform/codecs/StandardColour.h"

#include <optional>
#include <span>
#include <string>

namespace kelvaro {

// Turns rows of float pixels into linear Rec. 709 without clipping. One thread at a time.
class RowTransform {
public:
    virtual ~RowTransform() = default;
    // Reads `count` pixels of the profile's channels, 0 … 1 each (Lab: L 0 … 100, a and b as they
    // are), and writes three floats for each. The result is finite. The input may be changed.
    virtual void run(float* from, float* rgb, int count) = 0;
};

class ColourProfile {
public:
    enum class Space { grey, rgb, cmyk };

    // None where the bytes are no sound profile of a grey, RGB or CMYK device.
    static std::optional<ColourProfile> parse(std::span<const std::byte> icc);

    Space space() const { return space_; }
    const std::string& name() const { return name_; }
    // True when `decoding` can say all: grey curves, or RGB curves and a matrix.
    bool isMatrix() const { return isMatrix_; }
    // Of u8 or u16 samples; only where isMatrix(). Curves and matrices that differ from sRGB's by
    // no more than a profile's own rounding give exactly sRGB's table and the identity.
    ColourDecoding decoding(SampleType type) const;
    // Null when LittleCMS cannot use the profile. Relative colorimetric for CMYK, else perceptual,
    // both with black point compensation.
    std::unique_ptr<RowTransform> transform() const;

private:
    struct Handle;
    std::shared_ptr<const Handle> handle_;
    Space space_ = Space::rgb;
    bool isMatrix_ = false;
    Matrix3 toWorking_{};
    std::string name_;
};

// From CIE L*a*b* of D50, as TIFF stores it.
std::unique_ptr<RowTransform> labTransform();

} // namespace kelvaro
