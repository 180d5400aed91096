// Where a decoder gets its bytes from: an open file or memory. Random access, so that no decoder
// has to hold the encoded file whole. One thread at a time.
#pragma once

#include "base/Result.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

namespace kelvaro {

class ByteSource {
public:
    virtual ~ByteSource() = default;
    virtual std::int64_t size() const noexcept = 0;
    // Copies bytes from `offset` on and returns how many there were: fewer than asked for only at
    // the end of the source or after a read error, 0 for an offset outside it. Called from inside C
    // libraries, therefore it never throws.
    virtual std::size_t readAt(std::int64_t offset, std::span<std::byte> bytes) noexcept = 0;
    // The system has refused to read what ought to be there.
    virtual bool hasFailed() const noexcept { return false; }
};

// The bytes must outlive the source.
class MemorySource final : public ByteSource {
public:
    explicit MemorySource(std::span<const std::byte> bytes) : bytes_(bytes) {}
    std::int64_t size() const noexcept override { return std::int64_t(bytes_.size()); }
    std::size_t readAt(std::int64_t offset, std::span<std::byte> bytes) noexcept override;

private:
    std::span<const std::byte> bytes_;
};

// Opens a regular file. `name` is what messages call it. Failures: notFound, unreadable,
// unsupported for folders, pipes and devices, malformed for an empty file.
Result<std::unique_ptr<ByteSource>> openFileSource(const std::filesystem::path& path,
                                                   const std::string& name);

} // namespace kelvaro
