// One atomic write: a hidden temporary file beside its target until `commit` moves it into place.
#pragma once

#include "platform/FileSystem.h"
#include "platform/system/Descriptor.h"

namespace kelvaro {

class PosixPendingFile final : public PendingFile {
public:
    static Result<std::unique_ptr<PendingFile>> begin(const std::filesystem::path& target);

    ~PosixPendingFile() override;
    Result<void> writeAt(std::int64_t offset, std::span<const std::byte> bytes) override;
    Result<std::size_t> readAt(std::int64_t offset, std::span<std::byte> bytes) override;
    std::int64_t size() const override { return size_; }
    Result<void> commit() override;

private:
    PosixPendingFile(std::filesystem::path target, Descriptor folder);
    Result<void> openTemporary();
    Result<void> failed(int errorNumber);

    std::filesystem::path target_;
    Descriptor folder_;
    Descriptor file_;
    std::string temporaryName_; // empty once there is no temporary file
    std::int64_t size_ = 0;
};

// The hidden name `.NAME.kelvaro-XXXXXX` for a file called `name`, at most `longest` bytes; NAME is
// cut, between characters, where it does not fit.
std::string temporaryName(std::string_view name, std::string_view suffix, std::size_t longest);

// Flushes an open folder. Disks that cannot flush folders are no error.
bool flushFolder(const Descriptor& folder);

} // namespace kelvaro
