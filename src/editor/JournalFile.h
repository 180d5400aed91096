// The file of one session's journal: made when there is something to keep, gone when there is not.
// What is written survives the end of the program at once; a thread of its own brings it to the
// disk, so that a busy disk keeps nobody waiting. One thread at a time.
#pragma once

#include "base/Locked.h"
#include "base/SerialQueue.h"
#include "platform/AppendFile.h"
#include "platform/FileSystem.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace kelvaro {

class JournalFile {
public:
    static constexpr std::int64_t largeBytes = 4 << 20;

    JournalFile(FileSystem& files, AppendFiles& appendFiles, std::filesystem::path path)
        : files_(files), appendFiles_(appendFiles), path_(std::move(path)) {}

    // Fails also where what was written before did not reach the disk. After a failure the file
    // may end in half a record: `replace` it.
    Result<void> append(const std::string& records);
    // These records instead of all that stand there: in a second file that says so, which takes
    // the first one's place once it is on the disk.
    Result<void> replace(const std::string& records);
    // A missing file is a success.
    Result<void> remove();
    // Blocks until all that was written is on the disk.
    void waitUntilFlushed() { flushes_.waitUntilIdle(); }

    // Whether it has grown so much since it was begun that it is worth writing anew.
    bool isLarge() const { return bytes_ > std::max(largeBytes, 4 * begunBytes_); }

private:
    struct ToFlush {
        std::shared_ptr<AppendFile> file;            // null: nothing new
        std::vector<std::filesystem::path> replaced; // files that may go then
        std::optional<Failure> failure;
    };

    Result<std::shared_ptr<AppendFile>> opened(const std::filesystem::path& path);
    void flushSoon();
    void flush();

    FileSystem& files_;
    AppendFiles& appendFiles_;
    std::filesystem::path path_; // of the file that is written now
    std::shared_ptr<AppendFile> file_;
    std::int64_t bytes_ = 0, begunBytes_ = 0; // written by this session; by the last `replace`
    Locked<ToFlush> toFlush_;
    SerialQueue flushes_{"kelvaro.journal"};
};

} // namespace kelvaro
