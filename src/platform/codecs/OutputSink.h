// Between the C libraries and the file that is being written: keeps the first failure, so that it
// can be answered when the library has given up, and never throws into C code.
#pragma once

#include "platform/FileSystem.h"

#include <optional>

namespace kelvaro {

class OutputSink {
public:
    explicit OutputSink(PendingFile& file) : file_(file) {}

    // False after any failure; nothing is written any more then.
    bool writeAt(std::int64_t offset, std::span<const std::byte> bytes) noexcept;
    bool append(std::span<const std::byte> bytes) noexcept;
    std::size_t readAt(std::int64_t offset, std::span<std::byte> bytes) noexcept;
    std::int64_t size() const noexcept { return end_; } // of what was written

    bool hasFailed() const { return failure_.has_value(); }
    // The file's own failure, or `otherwise` where the file is not to blame.
    Failure failureOr(Failure otherwise) const { return failure_.value_or(std::move(otherwise)); }

private:
    PendingFile& file_;
    std::int64_t end_ = 0;
    std::optional<Failure> failure_;
};

} // namespace kelvaro
