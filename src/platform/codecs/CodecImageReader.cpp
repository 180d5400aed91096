#include "platform/codecs/CodecImageFiles.h"
#include "platform/codecs/DecodeJob.h"

#include <array>
#include <cstring>
#include <new>

namespace kelvaro {

namespace {

using Head = std::array<unsigned char, 12>;

bool startsWith(const Head& head, std::size_t at, std::string_view text) {
    return std::memcmp(head.data() + at, text.data(), text.size()) == 0;
}

using namespace std::string_view_literals;

bool isTiff(const Head& head) {
    return startsWith(head, 0, "II*\0"sv) || startsWith(head, 0, "MM\0*"sv) ||
           startsWith(head, 0, "II+\0"sv) || startsWith(head, 0, "MM\0+"sv);
}

Result<DecodedBitmap> decodeByContent(const DecodeJob& job) {
    Head head{};
    job.source.readAt(0, std::as_writable_bytes(std::span(head)));
    if (startsWith(head, 0, "\xFF\xD8\xFF"sv)) return decodeJpeg(job);
    if (startsWith(head, 0, "\x89PNG\r\n\x1A\n"sv)) return decodePng(job);
    if (isTiff(head)) return decodeTiff(job);
    if (startsWith(head, 4, "ftyp"sv)) return decodeHeif(job);
    return fail(
        job.afterLibraryError({FailureKind::unsupported,
                               "“" + job.name + "” is not a JPEG, PNG, TIFF or HEIF picture."}));
}

Result<DecodedBitmap> decodeFrom(const DecodeJob& job) {
    if (job.isCancelled()) return fail(job.cancelled());
    try {
        return decodeByContent(job);
    } catch (const std::bad_alloc&) {
        return fail(job.outOfMemory());
    }
}

class CodecImageReader final : public ImageReader {
public:
    Result<DecodedBitmap> decode(const std::filesystem::path& path, const DecodeLimits& limits,
                                 const Cancellation* cancellation) override {
        const std::string name = path.filename().string();
        auto source = openFileSource(path, name);
        if (!source) return fail(std::move(source).error());
        return decodeFrom({**source, name, limits, cancellation});
    }
    Result<DecodedBitmap> decode(std::span<const std::byte> bytes, const std::string& name,
                                 const DecodeLimits& limits,
                                 const Cancellation* cancellation) override {
        if (bytes.empty()) return fail(FailureKind::malformed, "“" + name + "” is empty.");
        MemorySource source(bytes);
        return decodeFrom({source, name, limits, cancellation});
    }
};

} // namespace

std::unique_ptr<ImageReader> makeImageReader() {
    return std::make_unique<CodecImageReader>();
}

} // namespace kelvaro
