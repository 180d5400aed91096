// One atomic write: a hidden temporary file beside its target until `commit` moves it into place.
#pragma once

#include "platform/FileSystem.h"
#include "platform/system/Descriptor.h"

namespace kelvaro {

class PosixPendingFile final : public PendingFile {
public:
    static Result<std::unique_ptr<PendingFile>> begin(const std::filesystem::path& target,
                                                      const PendingOptions& options);

    ~PosixPendingFile() override;
    Result<void> writeAt(std::int64_t offset, std::span<const std::byte> bytes) override;
    Result<std::size_t> readAt(std::int64_t offset, std::span<std::byte> bytes) override;
    std::int64_t size() const override { return size_; }
    Result<void> commit() override;

private:
    PosixPendingFile(std::filesystem::path target, PendingOptions options, Descriptor folder);
    Result<void> openTemporary();
    bool openMarked(const std::string& candidate, unsigned permissions);
    bool moveIntoPlace();
    Result<void> failed(int errorNumber);

    std::filesystem::path target_;
    PendingOptions options_;
    Descriptor folder_;
    Descriptor file_;
    std::string temporaryName_; // empty once there is no temporary file
    std::int64_t size_ = 0;
};

// The hidden name `.NAME.kelvaro-XXXXXX` for a file called `name`, at most `longest` bytes; NAME is
// cut, between characters, where it does not fit.
std::string temporaryName(std::string_view name, std::string_view suffix, std::size_t longest);

// Marks an open file as being written for as long as it, or a duplicate of it, stays open; the mark
// goes with the process that set it, however that ends. Some network disks know no marks.
enum class WriterMark { ours, othersHoldIt, unknown };
WriterMark markAsWritten(const Descriptor& file);

// Renames within a folder; fails with errno EEXIST where anything stands under `to`. Disks that
// cannot do both in one step leave a moment between looking and moving.
bool renameToNew(const Descriptor& folder, const std::string& from, const std::string& to);

// Flushes an open folder. Disks that cannot flush folders are no error.
bool flushFolder(const Descriptor& folder);

} // namespace kelvaro
