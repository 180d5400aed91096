// What the crop tool shows beside the photo, as a plain value, and its words.
#pragma once

#include "editor/CropAspect.h"

#include <string>
#include <string_view>

namespace kelvaro {

struct CropState {
    Aspect aspect = Aspect::free;
    bool portrait = false; // a fixed ratio is inverted, so that those of titles stand upright
    bool automatic = true; // the orientation follows the crop until the user chooses one
    bool dragging = false;
    bool rotating = false; // the drag turns the photo

    bool operator==(const CropState&) const = default;
};

namespace texts {
inline constexpr std::string_view cropTip = "Crop & Straighten (C)";
inline constexpr std::string_view keepCropTip = "Keep the crop (Return)";
} // namespace texts

// "Straightened +3.0°"
std::string straightenedNotice(double degrees);
// As the panel shows it: "+3.0°".
std::string straightenText(double degrees);

} // namespace kelvaro
