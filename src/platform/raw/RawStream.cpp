#include "platform/raw/RawStream.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kelvaro {

namespace {

constexpr std::size_t kWindowBytes = 256 * 1024;

// Processor time of the thread, so that a busy machine or a slow drive makes no photo unreadable.
std::chrono::nanoseconds threadTime() {
    timespec now{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

Failure openFailure(const std::filesystem::path& path) {
    const std::string name = path.filename().string();
    if (errno == ENOENT || errno == ENOTDIR) {
        return {FailureKind::notFound, "The file \"" + name + "\" is not there."};
    }
    return {FailureKind::unreadable, "The file \"" + name + "\" cannot be read."};
}

} // namespace

Result<std::unique_ptr<RawStream>> RawStream::open(const std::filesystem::path& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return fail(openFailure(path));
    std::unique_ptr<RawStream> stream(new RawStream(descriptor, 0));
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) return fail(openFailure(path));
    const std::string name = path.filename().string();
    if (!S_ISREG(status.st_mode)) {
        return fail(FailureKind::malformed, "\"" + name + "\" is not a file.");
    }
    if (status.st_size == 0) {
        return fail(FailureKind::malformed, "The file \"" + name + "\" is empty.");
    }
    stream->size_ = status.st_size;
    return stream;
}

RawStream::RawStream(int descriptor, INT64 bytes)
    : descriptor_(descriptor), size_(bytes), window_(kWindowBytes) {}

RawStream::~RawStream() {
    ::close(descriptor_);
}

std::size_t RawStream::readAt(INT64 offset, std::span<std::byte> bytes) const {
    std::size_t done = 0;
    while (done < bytes.size() && offset >= 0) {
        const ssize_t got = ::pread(descriptor_, bytes.data() + done, bytes.size() - done,
                                    off_t(offset) + off_t(done));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        done += std::size_t(got);
    }
    return done;
}

void RawStream::beginTask(const Cancellation* cancellation, std::chrono::seconds limit) {
    cancellation_ = cancellation;
    deadline_ = threadTime() + limit;
    missing_ = 0;
}

bool RawStream::wasCancelled() const {
    return cancellation_ && cancellation_->isCancelled();
}

bool RawStream::isOverdue() const {
    return threadTime() > deadline_;
}

void RawStream::throwIfStopped() const {
    // The decoder's own exception: it releases what it holds and returns an error code.
    if (wasCancelled() || isOverdue()) throw LIBRAW_EXCEPTION_CANCELLED_BY_CALLBACK;
}

bool RawStream::fillWindow() {
    throwIfStopped();
    windowStart_ = position_;
    windowBytes_ = INT64(readAt(position_, std::as_writable_bytes(std::span(window_))));
    return windowBytes_ > 0;
}

int RawStream::slowChar() {
    if (position_ >= size_ || !fillWindow()) {
        // Damaged data can make a decoder ask for the end of the file without end.
        if ((++missing_ & 0xffff) == 0) throwIfStopped();
        return -1;
    }
    ++position_;
    return static_cast<unsigned char>(window_[0]);
}

int RawStream::read(void* target, size_t itemBytes, size_t items) {
    const size_t wanted = itemBytes * items;
    if (wanted == 0) return 0;
    char* out = static_cast<char*>(target);
    size_t done = 0;
    while (done < wanted && position_ < size_) {
        const INT64 at = position_ - windowStart_;
        if (at >= 0 && at < windowBytes_) {
            const size_t count = std::min(wanted - done, size_t(windowBytes_ - at));
            std::memcpy(out + done, window_.data() + at, count);
            done += count;
            position_ += INT64(count);
        } else if (wanted - done >= kWindowBytes) {
            throwIfStopped();
            const size_t count =
                readAt(position_, std::as_writable_bytes(std::span(out + done, wanted - done)));
            if (count == 0) break;
            done += count;
            position_ += INT64(count);
        } else if (!fillWindow()) {
            break;
        }
    }
    if (done < wanted) {
        // Filling a buffer beyond the end is no damage; having nothing to read at all is.
        if (done == 0) missing_ += INT64(wanted);
        std::memset(out + done, 0, wanted - done);
        throwIfStopped();
    }
    return int(done / itemBytes);
}

int RawStream::seek(INT64 offset, int whence) {
    const INT64 base = whence == SEEK_CUR ? position_ : whence == SEEK_END ? size_ : 0;
    if (__builtin_add_overflow(base, offset, &position_)) position_ = size_;
    if (position_ > size_) missing_ += std::min<INT64>(position_ - size_, 1 << 20);
    position_ = std::clamp<INT64>(position_, 0, size_);
    return 0;
}

char* RawStream::gets(char* text, int capacity) {
    int n = 0;
    while (n < capacity - 1) {
        const int c = get_char();
        if (c < 0) break;
        text[n++] = char(c);
        if (c == '\n') break;
    }
    if (capacity > 0) text[n] = 0;
    return n > 0 ? text : nullptr;
}

int RawStream::scanf_one(const char* format, void* value) {
    // One number or word, as the decoder's few text headers need it.
    char word[32] = {};
    int n = 0, c = get_char();
    while (c == ' ' || (c >= '\t' && c <= '\r'))
        c = get_char();
    while (c > ' ' && n < int(sizeof word) - 1) {
        word[n++] = char(c);
        c = get_char();
    }
    if (c >= 0) seek(-1, SEEK_CUR);
    if (n == 0) return -1;
    return std::sscanf(word, format, value); // NOLINT: the format is the decoder's
}

} // namespace kelvaro
