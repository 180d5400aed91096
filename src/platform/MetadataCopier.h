// What an exported picture takes over from its photo: the EXIF, GPS, TIFF and IPTC properties,
// ready to be embedded in a file of any format. Thread-safe and blocking.
#pragma once

#include "base/Geometry.h"
#include "base/Result.h"
#include "platform/ImageFiles.h"

#include <filesystem>

namespace kelvaro {

class MetadataCopier {
public:
    virtual ~MetadataCopier() = default;
    // For an upright picture of that size and colour space: its pixel dimensions are set, its
    // orientation is 1, and thumbnails and previews of the photo as it was stay behind. A photo
    // without properties gives those few that describe the picture itself. Failures: notFound,
    // unreadable.
    virtual Result<EmbeddedMetadata> copy(const std::filesystem::path& photo, PixelSize size,
                                          OutputSpace space) = 0;
};

} // namespace kelvaro
