// The file behind an open RAW photo, read through one small window so that a file of any length
// costs no more memory than the parts in use. Also the place where a long decode is stopped: a
// cancelled or overdue read leaves the decoder by its own exception. One thread at a time.
#pragma once

#include "base/Cancellation.h"
#include "base/Result.h"

#include <libraw/libraw_datastream.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <span>
#include <vector>

namespace kelvaro {

class RawStream final : public LibRaw_abstract_datastream {
public:
    // Failures: notFound, unreadable, malformed (empty file or not a file at all).
    static Result<std::unique_ptr<RawStream>> open(const std::filesystem::path& path);
    ~RawStream() override;

    RawStream(const RawStream&) = delete;
    RawStream& operator=(const RawStream&) = delete;

    // Reads beside the decoder's position; returns how many bytes there were.
    std::size_t readAt(INT64 offset, std::span<std::byte> bytes) const;

    // Until the next call: stop when `cancellation` is set (may be null) or this thread has worked
    // for `limit`, and start counting missing bytes anew.
    void beginTask(const Cancellation* cancellation, std::chrono::seconds limit);
    bool wasCancelled() const;
    bool isOverdue() const;
    // Bytes that the decoder asked for and the file does not have, since beginTask.
    INT64 missingBytes() const { return missing_; }

    int valid() override { return 1; }
    int read(void* target, size_t itemBytes, size_t items) override;
    int seek(INT64 offset, int whence) override;
    INT64 tell() override { return position_; }
    INT64 size() override { return size_; }
    int get_char() override {
        const INT64 at = position_ - windowStart_;
        if (at >= 0 && at < windowBytes_) {
            ++position_;
            return static_cast<unsigned char>(window_[std::size_t(at)]);
        }
        return slowChar();
    }
    char* gets(char* text, int capacity) override;
    int scanf_one(const char* format, void* value) override;
    int eof() override { return position_ >= size_; }
    void* make_jas_stream() override { return nullptr; }

private:
    RawStream(int descriptor, INT64 bytes);
    int slowChar();
    bool fillWindow(); // false at the end of the file
    void throwIfStopped() const;

    int descriptor_;
    INT64 size_;
    INT64 position_ = 0;
    INT64 missing_ = 0;
    INT64 windowStart_ = 0;
    INT64 windowBytes_ = 0;
    std::vector<char> window_;
    const Cancellation* cancellation_ = nullptr;
    std::chrono::nanoseconds deadline_ = std::chrono::nanoseconds::max();
};

} // namespace kelvaro
