// The program's RAW engine: LibRaw opens and unpacks, everything after that is ours.
#pragma once

#include "platform/RawEngine.h"

namespace kelvaro {

// Thread-safe; the files it opens are not.
class CameraRawEngine final : public RawEngine {
public:
    Result<std::unique_ptr<RawFile>> open(const std::filesystem::path& path) override;
};

} // namespace kelvaro
