// JPEG through libjpeg-turbo: baseline, 8 bits, streamed.
#include "platform/codecs/EncodeJob.h"
#include "platform/codecs/JpegErrors.h"
#include "platform/codecs/MetadataFrames.h"
#include "platform/codecs/OutputProfile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <jerror.h>
#include <memory>
#include <string_view>

namespace kelvaro {

namespace {

constexpr int kRowsAtOnce = 16;
constexpr double kFullColourQuality = 0.9; // from here on colour is not subsampled

// Everything the library points to. Not movable.
struct JpegOutput {
    explicit JpegOutput(const EncodeJob& encodeJob) : job(encodeJob) {
        info.err = prepare(errors);
        destination.init_destination = [](j_compress_ptr c) { of(c).restart(); };
        destination.empty_output_buffer = [](j_compress_ptr c) -> boolean {
            if (!of(c).store(of(c).buffer.size())) ERREXIT(c, JERR_FILE_WRITE);
            of(c).restart();
            return TRUE;
        };
        destination.term_destination = [](j_compress_ptr c) {
            if (!of(c).store(of(c).buffer.size() - of(c).destination.free_in_buffer))
                ERREXIT(c, JERR_FILE_WRITE);
        };
    }
    JpegOutput(const JpegOutput&) = delete;
    JpegOutput& operator=(const JpegOutput&) = delete;
    ~JpegOutput() { jpeg_destroy_compress(&info); }

    static JpegOutput& of(j_compress_ptr compress) {
        return *static_cast<JpegOutput*>(compress->client_data);
    }
    void restart() noexcept {
        destination.next_output_byte = reinterpret_cast<JOCTET*>(buffer.data());
        destination.free_in_buffer = buffer.size();
    }
    bool store(std::size_t count) noexcept {
        return job.sink.append(std::span(buffer).first(count));
    }

    const EncodeJob& job;
    jpeg_compress_struct info{};
    JpegErrors errors;
    jpeg_destination_mgr destination{};
    std::array<std::byte, 131072> buffer;
};

// One application segment: a name with its zero, then the data. Segments hold 64 KB; what does not
// fit is left out.
std::vector<std::byte> segment(std::string_view name, std::span<const std::byte> data) {
    constexpr std::size_t largest = 65533;
    if (data.empty() || name.size() + data.size() > largest) return {};
    const auto* first = reinterpret_cast<const std::byte*>(name.data());
    std::vector<std::byte> bytes(first, first + name.size());
    bytes.insert(bytes.end(), data.begin(), data.end());
    return bytes;
}

struct JpegSegments {
    std::vector<std::byte> exif, photoshop;

    explicit JpegSegments(const EmbeddedMetadata& metadata) {
        using namespace std::string_view_literals;
        exif = segment("Exif\0\0"sv, metadata.exif);
        if (!metadata.iptc.empty())
            photoshop = segment("Photoshop 3.0\0"sv, photoshopResource(metadata.iptc));
    }
};

void writeSegment(j_compress_ptr info, int number, const std::vector<std::byte>& bytes) {
    if (bytes.empty()) return;
    jpeg_write_marker(info, JPEG_APP0 + number, reinterpret_cast<const JOCTET*>(bytes.data()),
                      unsigned(bytes.size()));
}

// Standard Huffman tables: tables made for the picture save 1% of a photo's file at quality 0.85
// and 4% at 0.95, but take 2.6 times as long and hold all coefficients in memory.
bool begin(JpegOutput& output) {
    auto* info = &output.info;
    const auto& settings = output.job.settings;
    const int quality = std::isfinite(settings.quality)
                            ? std::clamp(int(std::lround(settings.quality * 100)), 1, 100)
                            : 90;
    const bool fullColour = settings.quality >= kFullColourQuality;
    const auto& profile = outputProfile(settings.space);
    const JpegSegments segments(settings.metadata);
    return guarded(output.errors, [info, &output, quality, fullColour, &profile, &segments] {
        jpeg_create_compress(info);
        info->client_data = &output;
        info->dest = &output.destination;
        info->image_width = JDIMENSION(output.job.pixels.size.width);
        info->image_height = JDIMENSION(output.job.pixels.size.height);
        info->input_components = 3;
        info->in_color_space = JCS_RGB;
        jpeg_set_defaults(info);
        jpeg_set_quality(info, quality, TRUE);
        const int sampling = fullColour ? 1 : 2;
        info->comp_info[0].h_samp_factor = info->comp_info[0].v_samp_factor = sampling;
        jpeg_start_compress(info, TRUE);
        writeSegment(info, 1, segments.exif);
        writeSegment(info, 13, segments.photoshop);
        jpeg_write_icc_profile(info, reinterpret_cast<const JOCTET*>(profile.data()),
                               unsigned(profile.size()));
    });
}

} // namespace

Result<void> encodeJpeg(const EncodeJob& job) {
    const auto output = std::make_unique<JpegOutput>(job);
    if (!begin(*output)) return fail(job.afterLibraryError());
    auto* info = &output->info;
    const int height = job.pixels.size.height;
    for (int y = 0; y < height; y += kRowsAtOnce) {
        if (job.isCancelled()) return fail(job.cancelled());
        std::array<JSAMPROW, kRowsAtOnce> rows{};
        const int count = std::min(kRowsAtOnce, height - y);
        for (int i = 0; i < count; ++i) // the library does not write to them
            rows[std::size_t(i)] = const_cast<JSAMPROW>(job.pixels.row<JSAMPLE>(y + i));
        auto* first = rows.data();
        if (!guarded(output->errors, [info, first, count] {
                jpeg_write_scanlines(info, first, JDIMENSION(count));
            }))
            return fail(job.afterLibraryError());
    }
    if (!guarded(output->errors, [info] { jpeg_finish_compress(info); }))
        return fail(job.afterLibraryError());
    return {};
}

} // namespace kelvaro
