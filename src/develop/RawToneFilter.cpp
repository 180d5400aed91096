#include "develop/RawToneFilter.h"

#include "develop/SceneTone.h"

namespace kelvaro {

Image RawToneFilter::outputImage() const {
    const double g = linearGain;
    Image image = linearInput ? linearInput : inputImage;
    image = colourMatrix(image, {{{g, 0, 0}, {0, g, 0}, {0, 0, g}}});
    image = dehazed(image, settings, haze, airlight);
    return sceneToned(image, settings, guide, endpoints, guideShift);
}

} // namespace kelvaro
