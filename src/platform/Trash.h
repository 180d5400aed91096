// What we ask of the desktop's Trash: that files go there in a way that its file manager can undo.
#pragma once

#include "base/Result.h"

#include <filesystem>

namespace kelvaro {

class Trash {
public:
    virtual ~Trash() = default;
    // Moves one file; may block, any thread. FailureKind::notFound when the file isn't there,
    // another kind when this file can't go to the Trash: it is then where it was.
    virtual Result<void> put(const std::filesystem::path& file) = 0;
};

} // namespace kelvaro
