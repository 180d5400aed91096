#include "platform/codecs/ByteSource.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kelvaro {

namespace {

class FileSource final : public ByteSource {
public:
    FileSource(int descriptor, std::int64_t size) : descriptor_(descriptor), size_(size) {}
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;
    ~FileSource() override { ::close(descriptor_); }

    std::int64_t size() const noexcept override { return size_; }
    bool hasFailed() const noexcept override { return failed_; }
    std::size_t readAt(std::int64_t offset, std::span<std::byte> bytes) noexcept override {
        if (offset < 0 || offset >= size_) return 0;
        std::size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t got = ::pread(descriptor_, bytes.data() + done, bytes.size() - done,
                                        off_t(offset) + off_t(done));
            if (got < 0 && errno == EINTR) continue;
            if (got < 0) failed_ = true;
            if (got <= 0) break;
            done += std::size_t(got);
        }
        return done;
    }

private:
    int descriptor_;
    std::int64_t size_;
    bool failed_ = false;
};

} // namespace

std::size_t MemorySource::readAt(std::int64_t offset, std::span<std::byte> bytes) noexcept {
    if (offset < 0 || offset >= size()) return 0;
    const std::size_t count = std::min(bytes.size(), bytes_.size() - std::size_t(offset));
    std::memcpy(bytes.data(), bytes_.data() + offset, count);
    return count;
}

Result<std::unique_ptr<ByteSource>> openFileSource(const std::filesystem::path& path,
                                                   const std::string& name) {
    // Not blocking, or a named pipe without a writer would hold us up before we can see what it is.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        if (errno == ENOENT || errno == ENOTDIR)
            return fail(FailureKind::notFound, "“" + name + "” does not exist.");
        return fail(FailureKind::unreadable,
                    "“" + name + "” could not be opened: " + std::strerror(errno) + ".");
    }
    struct stat status {};
    const bool known = ::fstat(descriptor, &status) == 0;
    auto source =
        std::make_unique<FileSource>(descriptor, known ? std::int64_t(status.st_size) : 0);
    if (!known) return fail(FailureKind::unreadable, "“" + name + "” could not be read.");
    if (!S_ISREG(status.st_mode))
        return fail(FailureKind::unsupported, "“" + name + "” is not a regular file.");
    if (status.st_size == 0) return fail(FailureKind::malformed, "“" + name + "” is empty.");
    return std::unique_ptr<ByteSource>(std::move(source));
}

} // namespace kelvaro
