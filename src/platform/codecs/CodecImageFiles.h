// The platform's picture files, fulfilled by libjpeg-turbo, libpng, libtiff, libheif and
// LittleCMS 2. Both objects are stateless and may be used from any number of threads.
#pragma once

#include "platform/ImageFiles.h"

#include <memory>

namespace kelvaro {

std::unique_ptr<ImageReader> makeImageReader();
std::unique_ptr<ImageWriter> makeImageWriter();

} // namespace kelvaro
