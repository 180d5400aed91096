// What a photo recorded, in scene light at the as-shot white and before any edit: what the white
// balance picker measures. Lazy images; any thread.
#pragma once

#include "develop/ImageSource.h"

namespace kelvaro {

// The decoded pixels: the RAW capture, or a bitmap lifted to scene light.
Image sceneAsShot(const ImageSource& source);
// Just under what the largest stored value becomes there: an infinite image of one colour.
Image sceneClipLevel(const ImageSource& source);

} // namespace kelvaro
