// The program's RAW engine: LibRaw opens and unpacks, everything after that is ours.
#pragma once

#include "platform/ImageFiles.h"
#include "platform/RawEngine.h"

#include <memory>

namespace kelvaro {

// Thread-safe; the files it opens are not. Files that state no baseline exposure (all but DNG) have
// the brightness of their embedded preview when `previews` can read it, and its white where they do
// not say which one the camera took; the properties baselineExposureStops, asShotTemperature and
// asShotTint are then known after the first `develop`, and 0 and daylight before.
class CameraRawEngine final : public RawEngine {
public:
    explicit CameraRawEngine(std::shared_ptr<ImageReader> previews = nullptr)
        : previews_(std::move(previews)) {}
    Result<std::unique_ptr<RawFile>> open(const std::filesystem::path& path) override;

private:
    std::shared_ptr<ImageReader> previews_;
};

} // namespace kelvaro
