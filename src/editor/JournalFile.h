// The file of one session's journal: made when there is something to keep, gone when there is not.
// Blocking; one thread at a time.
#pragma once

#include "platform/AppendFile.h"
#include "platform/FileSystem.h"

#include <algorithm>
#include <string>

namespace kelvaro {

class JournalFile {
public:
    static constexpr std::int64_t largeBytes = 4 << 20;

    JournalFile(FileSystem& files, AppendFiles& appendFiles, std::filesystem::path path)
        : files_(files), appendFiles_(appendFiles), path_(std::move(path)) {}

    // On the disk when it returns. After a failure the file may end in half a record: `replace` it.
    Result<void> append(const std::string& records);
    // These records instead of all that stand there, in one step.
    Result<void> replace(const std::string& records);
    // A missing file is a success.
    Result<void> remove();

    // Whether it has grown so much since it was begun that it is worth writing anew.
    bool isLarge() const { return bytes_ > std::max(largeBytes, 4 * begunBytes_); }

private:
    Result<void> open();

    FileSystem& files_;
    AppendFiles& appendFiles_;
    std::filesystem::path path_;
    std::unique_ptr<AppendFile> file_;
    std::int64_t bytes_ = 0, begunBytes_ = 0; // written by this session; by the last `replace`
};

} // namespace kelvaro
