#include "develop/ImageSource.h"

#include "develop/PreparedControls.h"
#include "develop/kernels/Kernels.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {

namespace {

double pixelScaleOf(const Image& decoded, PixelSize full) {
    const int longer = std::max(full.width, full.height);
    return longer > 0 ? double(decoded.extent().longerSide()) / longer : 1;
}

} // namespace

ImageSource bitmapSource(std::filesystem::path url, std::string identity, Image bitmap,
                         PixelSize fullSize) {
    ImageSource source;
    source.analysis = std::make_shared<PhotoAnalysis>(url, false, std::move(identity));
    source.url = std::move(url);
    source.extent = {0, 0, fullSize.width, fullSize.height};
    source.pixelScale = pixelScaleOf(bitmap, fullSize);
    source.bitmap = std::move(bitmap);
    return source;
}

ImageSource rawSource(std::filesystem::path url, std::string identity, Image linearCapture,
                      const RawProperties& properties) {
    ImageSource source;
    source.analysis = std::make_shared<PhotoAnalysis>(url, true, identity);
    source.rawToneAnalysis = std::make_shared<RawToneAnalysis>(url, std::move(identity));
    source.url = std::move(url);
    source.extent = {0, 0, properties.size.width, properties.size.height};
    source.pixelScale = pixelScaleOf(linearCapture, properties.size);
    source.linearCapture = std::move(linearCapture);
    source.asShotTemperature = properties.asShotTemperature;
    source.asShotTint = properties.asShotTint;
    source.baselineExposureStops = properties.baselineExposureStops;
    source.defaultSharpness = properties.defaultSharpness;
    source.supportsSharpness = properties.supportsSharpness;
    return source;
}

ImageSource withPixels(const ImageSource& source, Image decoded) {
    ImageSource other = source;
    other.pixelScale = pixelScaleOf(decoded, source.extent.size());
    (source.isRaw() ? other.linearCapture : other.bitmap) = std::move(decoded);
    return other;
}

RawDevelopSettings rawSettings(const Adjustments& edit, const RawProperties& properties,
                               double scale, bool isSettled) {
    return preparedControls(edit, properties).at(scale, isSettled);
}

double renderScale(const ImageSource& source, double scale) {
    return std::min(scale > 0 ? scale : 1.0, source.pixelScale);
}

Image atRenderScale(const Image& image, const ImageSource& source, double scale) {
    const double wanted = renderScale(source, scale);
    const int longer = source.extent.longerSide();
    if (longer <= 0 || image.extent().longerSide() <= longer * wanted) return image;
    const auto scaled = [&](int side) { return std::max(1, int(std::lround(side * wanted))); };
    return lanczosResized(image, {scaled(source.extent.width), scaled(source.extent.height)});
}

Image atViewScale(const ImageSource& source, double scale) {
    if (!source.isRaw()) return atRenderScale(source.decoded(), source, scale);
    const Image compressed = applyKernel(kernel::compressedLight(), {source.linearCapture}, {});
    const Image small = atRenderScale(compressed, source, scale);
    return small == compressed ? source.linearCapture
                               : applyKernel(kernel::expandedLight(), {small}, {});
}

} // namespace kelvaro
