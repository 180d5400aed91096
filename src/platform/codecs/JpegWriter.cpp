// JPEG through libjpeg-turbo: baseline, 8 bits. Bands of rows are encoded as pictures of their own;
// their scans, joined by restart markers, make the file's (ITU-T T.81, B.2.1 and F.1.1.5), with the
// same coefficients that one scan would have.
#include "base/Bands.h"
#include "base/Locked.h"
#include "platform/codecs/EncodeJob.h"
#include "platform/codecs/JpegErrors.h"
#include "platform/codecs/JpegLayout.h"
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
constexpr int kBandRows = 128; // whole blocks of every subsampling
constexpr int kBandsAtOnce = 2;
constexpr double kFullColourQuality = 0.9; // from here on colour is not subsampled

// Everything the library points to. Not movable.
struct JpegOutput {
    JpegOutput() {
        info.err = prepare(errors);
        destination.init_destination = [](j_compress_ptr c) { of(c).makeRoom(c); };
        destination.empty_output_buffer = [](j_compress_ptr c) -> boolean {
            of(c).makeRoom(c);
            return TRUE;
        };
        destination.term_destination = [](j_compress_ptr c) {
            of(c).bytes.resize(of(c).bytes.size() - of(c).destination.free_in_buffer);
        };
    }
    JpegOutput(const JpegOutput&) = delete;
    JpegOutput& operator=(const JpegOutput&) = delete;
    ~JpegOutput() { jpeg_destroy_compress(&info); }

    static JpegOutput& of(j_compress_ptr compress) {
        return *static_cast<JpegOutput*>(compress->client_data);
    }
    // The buffer was full to its end.
    void makeRoom(j_compress_ptr compress) noexcept {
        constexpr std::size_t kStep = std::size_t(1) << 18;
        const std::size_t used = bytes.size();
        if (!grow(used + kStep)) ERREXIT1(compress, JERR_OUT_OF_MEMORY, 0);
        destination.next_output_byte = reinterpret_cast<JOCTET*>(bytes.data() + used);
        destination.free_in_buffer = kStep;
    }
    bool grow(std::size_t size) noexcept {
        try {
            bytes.resize(size);
            return true;
        } catch (...) {
            return false;
        }
    }

    jpeg_compress_struct info{};
    JpegErrors errors;
    jpeg_destination_mgr destination{};
    std::vector<std::byte> bytes;
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

struct JpegShape {
    int quality = 90;
    bool fullColour = false;
    int bandRows = kBandRows;
    int bands = 1;
    unsigned restartInterval = 0; // in groups of blocks; 0 where one band is all

    explicit JpegShape(const EncodeJob& job) {
        const double asked = job.settings.quality;
        if (std::isfinite(asked)) quality = std::clamp(int(std::lround(asked * 100)), 1, 100);
        fullColour = asked >= kFullColourQuality;
        const auto [width, height] = job.pixels.size;
        const int group = fullColour ? 8 : 16;
        const auto interval = [&, columns = (width + group - 1) / group] {
            return unsigned(columns * (bandRows / group));
        };
        while (interval() > 65535)
            bandRows /= 2;
        bands = (height + bandRows - 1) / bandRows;
        if (bands > 1) restartInterval = interval();
    }
};

// Standard Huffman tables: tables made for the picture save 1% of a photo's file at quality 0.85
// and 4% at 0.95, but take 2.6 times as long and hold all coefficients in memory.
bool begin(JpegOutput& output, const JpegShape& shape, PixelSize size,
           const EncodeSettings* described) {
    auto* info = &output.info;
    const std::span<const std::byte> profile =
        described ? std::span<const std::byte>(outputProfile(described->space))
                  : std::span<const std::byte>();
    const JpegSegments segments(described ? described->metadata : EmbeddedMetadata());
    return guarded(output.errors, [info, &output, &shape, size, profile, &segments] {
        jpeg_create_compress(info);
        info->client_data = &output;
        info->dest = &output.destination;
        info->image_width = JDIMENSION(size.width);
        info->image_height = JDIMENSION(size.height);
        info->input_components = 3;
        info->in_color_space = JCS_RGB;
        jpeg_set_defaults(info);
        jpeg_set_quality(info, shape.quality, TRUE);
        const int sampling = shape.fullColour ? 1 : 2;
        info->comp_info[0].h_samp_factor = info->comp_info[0].v_samp_factor = sampling;
        info->restart_interval = shape.restartInterval;
        jpeg_start_compress(info, TRUE);
        writeSegment(info, 1, segments.exif);
        writeSegment(info, 13, segments.photoshop);
        if (!profile.empty())
            jpeg_write_icc_profile(info, reinterpret_cast<const JOCTET*>(profile.data()),
                                   unsigned(profile.size()));
    });
}

// Memory of bands that stand in the file waits for the next ones. Any thread.
class BandMemory {
public:
    std::vector<std::byte> taken() {
        return spare_.with([](auto& spare) {
            std::vector<std::byte> bytes;
            if (spare.empty()) return bytes;
            bytes.swap(spare.back());
            spare.pop_back();
            return bytes;
        });
    }
    void giveBack(std::vector<std::byte> bytes) {
        bytes.clear();
        spare_.with([&](auto& spare) { spare.push_back(std::move(bytes)); });
    }

private:
    Locked<std::vector<std::vector<std::byte>>> spare_;
};

// A band as a picture of its own, the first one with all that describes the file. `pixels` begin at
// row `top` of the picture. Throws std::bad_alloc.
Result<std::vector<std::byte>> encodedBand(const EncodeJob& job, const JpegShape& shape, int band,
                                           const Bitmap& pixels, int top, BandMemory& memory) {
    const int firstRow = band * shape.bandRows - top;
    const int rows = std::min(shape.bandRows, job.pixels.size.height - band * shape.bandRows);
    JpegOutput output;
    output.bytes = memory.taken();
    const auto failed = [&]() -> Unexpected<Failure> {
        if (output.errors.code == JERR_OUT_OF_MEMORY) throw std::bad_alloc();
        return fail(job.notEncoded());
    };
    if (!begin(output, shape, {job.pixels.size.width, rows}, band == 0 ? &job.settings : nullptr))
        return failed();
    auto* info = &output.info;
    for (int y = 0; y < rows; y += kRowsAtOnce) {
        if (job.isCancelled()) return fail(job.cancelled());
        std::array<JSAMPROW, kRowsAtOnce> lines{};
        const int count = std::min(kRowsAtOnce, rows - y);
        for (int i = 0; i < count; ++i) // the library does not write to them
            lines[std::size_t(i)] = const_cast<JSAMPROW>(pixels.row<JSAMPLE>(firstRow + y + i));
        auto* first = lines.data();
        if (!guarded(output.errors, [info, first, count] {
                jpeg_write_scanlines(info, first, JDIMENSION(count));
            }))
            return failed();
    }
    if (!guarded(output.errors, [info] { jpeg_finish_compress(info); })) return failed();
    return std::move(output.bytes);
}

using Bands = std::vector<std::vector<std::byte>>;

// Some bands from `first` on, of one strip where the picture comes in strips.
Result<Bands> encodedBands(const EncodeJob& job, const JpegShape& shape, int first,
                           BandMemory& memory) {
    const int end = std::min(shape.bands, first + kBandsAtOnce);
    const int top = first * shape.bandRows;
    Bitmap strip;
    if (job.strips) {
        if (job.isCancelled()) return fail(job.cancelled());
        auto made =
            job.strips->rows(top, std::min(end * shape.bandRows, job.pixels.size.height) - top);
        if (!made) return fail(std::move(made).error());
        strip = std::move(*made);
    }
    Bands bands;
    for (int band = first; band < end; ++band) {
        auto bytes = job.strips ? encodedBand(job, shape, band, strip, top, memory)
                                : encodedBand(job, shape, band, job.pixels, 0, memory);
        if (!bytes) return fail(std::move(bytes).error());
        bands.push_back(std::move(*bytes));
    }
    return bands;
}

// A band goes into the file without what would end or begin a picture within it.
bool append(const EncodeJob& job, const JpegShape& shape, int band, std::span<std::byte> bytes) {
    const auto layout = JpegLayout::of(bytes);
    if (!layout) return false;
    if (band == 0) layout->setHeight(bytes, job.pixels.size.height);
    if (band + 1 < shape.bands) bytes = bytes.first(bytes.size() - 2); // the end marker
    if (band > 0) {
        bytes = bytes.subspan(layout->scan - 2);
        bytes[0] = std::byte(0xFF);
        bytes[1] = std::byte(JPEG_RST0 + (band - 1) % 8);
    }
    return job.sink.append(bytes);
}

} // namespace

Result<void> encodeJpeg(const EncodeJob& job) {
    const JpegShape shape(job);
    int band = 0;
    BandMemory memory;
    const auto make = [&](int group) {
        return encodedBands(job, shape, group * kBandsAtOnce, memory);
    };
    const auto take = [&](Result<Bands> bands) -> Result<void> {
        if (!bands) return fail(job.afterError(std::move(bands).error()));
        for (auto& bytes : *bands) {
            if (!append(job, shape, band++, bytes)) return fail(job.afterLibraryError());
            memory.giveBack(std::move(bytes));
        }
        return {};
    };
    return takeInOrder((shape.bands + kBandsAtOnce - 1) / kBandsAtOnce, make, take);
}

} // namespace kelvaro
