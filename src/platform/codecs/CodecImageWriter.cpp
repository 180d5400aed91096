#include "platform/codecs/CodecImageFiles.h"
#include "platform/codecs/EncodeJob.h"

#include <new>

namespace kelvaro {

namespace {

bool takes(FileFormat format, SampleType type) {
    switch (format) {
    case FileFormat::jpeg:
    case FileFormat::heic:
        return type == SampleType::u8;
    case FileFormat::png:
        return type != SampleType::f32;
    case FileFormat::tiff:
        return true;
    }
    return false;
}

const char* nameOf(FileFormat format) {
    switch (format) {
    case FileFormat::jpeg:
        return "JPEG";
    case FileFormat::heic:
        return "HEIC";
    case FileFormat::png:
        return "PNG";
    case FileFormat::tiff:
        break;
    }
    return "TIFF";
}

int longestSide(FileFormat format) {
    switch (format) {
    case FileFormat::jpeg:
        return 65500; // libjpeg's own limit
    case FileFormat::heic:
        return 16384; // larger pictures are refused by common decoders
    case FileFormat::png:
    case FileFormat::tiff:
        break;
    }
    return 1 << 28;
}

Result<void> check(const Bitmap& pixels, FileFormat format) {
    const std::string name = nameOf(format);
    if (!takes(format, pixels.type))
        return fail(FailureKind::unsupported, name + " files cannot hold samples of this depth.");
    if (pixels.channels != 3 && (format == FileFormat::jpeg || format == FileFormat::heic))
        return fail(FailureKind::unsupported, name + " files are written without transparency.");
    if (pixels.size.width <= 0 || pixels.size.height <= 0)
        return fail(FailureKind::unsupported, "A picture without pixels cannot be written.");
    if (std::max(pixels.size.width, pixels.size.height) > longestSide(format))
        return fail(FailureKind::tooLarge, "The picture is too large for a " + name + " file.");
    return {};
}

class CodecImageWriter final : public ImageWriter {
public:
    Result<void> encode(const Bitmap& pixels, const EncodeSettings& settings, PendingFile& file,
                        const Cancellation* cancellation) override {
        OutputSink sink(file);
        return write({pixels, settings, sink, cancellation, nullptr});
    }
    Result<void> encodeStrips(const StripSource& strips, const EncodeSettings& settings,
                              PendingFile& file, const Cancellation* cancellation) override {
        if (settings.format != FileFormat::jpeg)
            return ImageWriter::encodeStrips(strips, settings, file, cancellation);
        Bitmap shape;
        shape.size = strips.size();
        shape.channels = strips.channels();
        shape.type = strips.type();
        OutputSink sink(file);
        return write({shape, settings, sink, cancellation, &strips});
    }

private:
    static Result<void> write(const EncodeJob& job) {
        if (auto sane = check(job.pixels, job.settings.format); !sane) return sane;
        if (job.isCancelled()) return fail(job.cancelled());
        try {
            auto written = encodeAs(job);
            // Some libraries go on after a failed write.
            if (written && job.sink.hasFailed()) return fail(job.afterLibraryError());
            return written;
        } catch (const std::bad_alloc&) {
            return fail(job.outOfMemory());
        }
    }
    static Result<void> encodeAs(const EncodeJob& job) {
        switch (job.settings.format) {
        case FileFormat::jpeg:
            return encodeJpeg(job);
        case FileFormat::heic:
            return encodeHeif(job);
        case FileFormat::png:
            return encodePng(job);
        case FileFormat::tiff:
            break;
        }
        return encodeTiff(job);
    }
};

} // namespace

std::unique_ptr<ImageWriter> makeImageWriter() {
    return std::make_unique<CodecImageWriter>();
}

} // namespace kelvaro
