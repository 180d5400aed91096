// Copies the properties of photo files with Exiv2. All exceptions of the library end here.
//
// Maker notes travel along where the library understands them, because it can then move what they
// point to; others only where everything in them is counted from their own beginning. Whether they
// survived is checked by reading the result.
#pragma once

#include "platform/MetadataCopier.h"

namespace kelvaro {

class ExifMetadataCopier final : public MetadataCopier {
public:
    ExifMetadataCopier();
    Result<EmbeddedMetadata> copy(const std::filesystem::path& photo, PixelSize size,
                                  OutputSpace space) override;
};

} // namespace kelvaro
