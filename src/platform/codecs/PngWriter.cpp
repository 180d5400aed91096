// PNG: the frame through libpng, the pixels through PngBands on all cores.
#include "base/Bands.h"
#include "platform/codecs/EncodeJob.h"
#include "platform/codecs/MetadataFrames.h"
#include "platform/codecs/OutputProfile.h"
#include "platform/codecs/PngBands.h"
#include "platform/codecs/PngErrors.h"

#include <algorithm>
#include <array>

namespace kelvaro {

namespace {

struct PngOutput {
    explicit PngOutput(const EncodeJob& encodeJob) : job(encodeJob) {
        if (setjmp(errors.jump) == 0)
            png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &errors, onPngError, onPngWarning);
        if (png) info = png_create_info_struct(png);
    }
    PngOutput(const PngOutput&) = delete;
    PngOutput& operator=(const PngOutput&) = delete;
    ~PngOutput() { png_destroy_write_struct(&png, &info); }

    static void write(png_structp png, png_bytep from, std::size_t count) {
        auto* output = static_cast<PngOutput*>(png_get_io_ptr(png));
        if (!output->job.sink.append({reinterpret_cast<const std::byte*>(from), count}))
            png_error(png, "write");
    }

    const EncodeJob& job;
    PngErrors errors;
    png_structp png = nullptr;
    png_infop info = nullptr;
};

// Inside a guarded call.
void addText(PngOutput& output, int compression, const char* key, const std::string& text) {
    if (text.empty()) return;
    png_text chunk{};
    chunk.compression = compression;
    chunk.key = const_cast<char*>(key); // the library copies both
    chunk.text = const_cast<char*>(text.c_str());
    chunk.text_length = text.size();
    if (compression > 0) chunk.itxt_length = text.size();
    png_set_text(output.png, output.info, &chunk, 1);
}

bool writeHead(PngOutput& output) {
    const Bitmap& pixels = output.job.pixels;
    const auto space = output.job.settings.space;
    const auto& profile = outputProfile(space);
    const auto& metadata = output.job.settings.metadata;
    std::string iptc;
    if (!metadata.iptc.empty()) iptc = rawProfileText("iptc", photoshopResource(metadata.iptc));
    return guarded(output.errors, [&output, &pixels, &profile, &metadata, &iptc, space] {
        png_set_write_fn(output.png, &output, PngOutput::write, [](png_structp) {});
        png_set_user_limits(output.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        png_set_IHDR(output.png, output.info, png_uint_32(pixels.size.width),
                     png_uint_32(pixels.size.height), pixels.type == SampleType::u16 ? 16 : 8,
                     pixels.channels == 4 ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB,
                     PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_set_iCCP(output.png, output.info, profileNameOf(space), PNG_COMPRESSION_TYPE_BASE,
                     reinterpret_cast<png_const_bytep>(profile.data()),
                     png_uint_32(profile.size()));
        if (!metadata.exif.empty()) // the library reads it only
            png_set_eXIf_1(
                output.png, output.info, png_uint_32(metadata.exif.size()),
                reinterpret_cast<png_bytep>(const_cast<std::byte*>(metadata.exif.data())));
        addText(output, PNG_TEXT_COMPRESSION_zTXt, "Raw profile type iptc", iptc);
        addText(output, PNG_ITXT_COMPRESSION_NONE, "XML:com.adobe.xmp", metadata.xmp);
        png_write_info(output.png, output.info);
    });
}

bool writeChunk(PngOutput& output, const char* name, std::span<const std::byte> data) {
    return guarded(output.errors, [&output, name, data] {
        png_write_chunk(output.png, reinterpret_cast<png_const_bytep>(name),
                        reinterpret_cast<png_const_bytep>(data.data()), data.size());
    });
}

Result<void> writePixels(PngOutput& output) {
    const EncodeJob& job = output.job;
    const int height = job.pixels.size.height, rows = pngBandRows(job.pixels);
    std::uint32_t adler = 1;
    int y = 0;
    const auto make = [&](int band) {
        return deflateBand(job.pixels, band * rows, std::min(rows, height - band * rows));
    };
    return takeInOrder((height + rows - 1) / rows, make, [&](PngBand band) -> Result<void> {
        if (job.isCancelled()) return fail(job.cancelled());
        if (band.deflated.empty()) return fail(job.outOfMemory());
        adler = joinedAdler(adler, band);
        auto& data = band.deflated;
        // The zlib frame: 32 KB window, fastest level; the checksum at the end.
        if (y == 0) data.insert(data.begin(), {std::byte(0x78), std::byte(0x01)});
        y += rows;
        if (y >= height)
            for (int shift = 24; shift >= 0; shift -= 8)
                data.push_back(std::byte(adler >> shift));
        if (!writeChunk(output, "IDAT", data)) return fail(job.afterLibraryError());
        return {};
    });
}

} // namespace

Result<void> encodePng(const EncodeJob& job) {
    PngOutput output(job);
    if (!output.png || !output.info) return fail(job.outOfMemory());
    if (!writeHead(output)) return fail(job.afterLibraryError());
    if (auto written = writePixels(output); !written) return written;
    if (!writeChunk(output, "IEND", {})) return fail(job.afterLibraryError());
    return {};
}

} // namespace kelvaro
