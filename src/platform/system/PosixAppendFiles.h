// Growing files of a POSIX machine, readable by their owner only.
#pragma once

#include "platform/AppendFile.h"

namespace kelvaro {

class PosixAppendFiles final : public AppendFiles {
public:
    Result<std::unique_ptr<AppendFile>> open(const std::filesystem::path& path) override;
};

} // namespace kelvaro
