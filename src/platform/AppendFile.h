// A file that only grows: what is appended survives the end of the program at once, and the end of
// the machine's power once it is flushed. Blocking; one thread at a time appends, another one may
// flush meanwhile.
#pragma once

#include "base/Result.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <span>

namespace kelvaro {

class AppendFile {
public:
    virtual ~AppendFile() = default;
    // All of `bytes` at the end of the file. After a failure some of them may stand there.
    virtual Result<void> append(std::span<const std::byte> bytes) = 0;
    // Returns once everything that was appended before the call is on the disk.
    virtual Result<void> flush() = 0;
};

class AppendFiles {
public:
    virtual ~AppendFiles() = default;
    // Makes the file where there is none; its folder must exist. Content stays. For as long as it
    // is open, here or in another program, opening it again fails with `unwritable`.
    virtual Result<std::unique_ptr<AppendFile>> open(const std::filesystem::path& path) = 0;
};

} // namespace kelvaro
