// JPEG through libjpeg-turbo: baseline, progressive and arithmetic; grey, YCbCr, RGB, CMYK and
// YCCK.
#include "platform/codecs/JpegBands.h"
#include "platform/codecs/JpegErrors.h"
#include "platform/codecs/PictureBuilder.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <jerror.h>

namespace kelvaro {

namespace {

constexpr int kMostScans = 200; // a flood of empty scans would keep us busy for hours
constexpr int kMostRowsAtOnce = 16;

// Everything the library points to. Not movable.
struct JpegInput {
    explicit JpegInput(const DecodeJob& decodeJob) : job(decodeJob) {
        info.err = prepare(errors);
        source.init_source = [](j_decompress_ptr) {};
        source.term_source = [](j_decompress_ptr) {};
        source.resync_to_restart = jpeg_resync_to_restart;
        source.fill_input_buffer = [](j_decompress_ptr d) { return of(d).fill(); };
        source.skip_input_data = [](j_decompress_ptr d, long count) { of(d).skip(count); };
        progress.progress_monitor = [](j_common_ptr common) {
            auto* decompress = reinterpret_cast<j_decompress_ptr>(common);
            const JpegInput& input = of(decompress);
            if (input.job.isCancelled() || decompress->input_scan_number > kMostScans)
                ERREXIT(common, JERR_BAD_STATE);
        };
    }
    JpegInput(const JpegInput&) = delete;
    JpegInput& operator=(const JpegInput&) = delete;
    ~JpegInput() { jpeg_destroy_decompress(&info); }

    static JpegInput& of(j_decompress_ptr decompress) {
        return *static_cast<JpegInput*>(decompress->client_data);
    }
    boolean fill() noexcept {
        std::size_t count = job.source.readAt(offset, buffer);
        if (count == 0) { // the end: a made-up end marker lets the library finish what it has
            reachedEnd = true;
            buffer[0] = std::byte(0xFF);
            buffer[1] = std::byte(JPEG_EOI);
            count = 2;
        }
        offset += std::int64_t(count);
        source.next_input_byte = reinterpret_cast<const JOCTET*>(buffer.data());
        source.bytes_in_buffer = count;
        return TRUE;
    }
    void skip(long count) noexcept {
        if (count <= 0) return;
        const auto here = std::min(std::size_t(count), source.bytes_in_buffer);
        source.next_input_byte += here;
        source.bytes_in_buffer -= here;
        offset += std::int64_t(count) - std::int64_t(here);
    }

    const DecodeJob& job;
    jpeg_decompress_struct info{};
    JpegErrors errors;
    jpeg_source_mgr source{};
    jpeg_progress_mgr progress{};
    std::array<std::byte, 65536> buffer;
    std::int64_t offset = 0;
    bool reachedEnd = false;
};

bool readHeader(JpegInput& input) {
    auto* info = &input.info;
    return guarded(input.errors, [info, &input] {
        jpeg_create_decompress(info);
        info->client_data = &input;
        info->src = &input.source;
        info->progress = &input.progress;
        jpeg_save_markers(info, JPEG_APP0 + 1, 0xFFFF);
        jpeg_save_markers(info, JPEG_APP0 + 2, 0xFFFF);
        jpeg_read_header(info, TRUE);
    });
}

Failure failureOf(const JpegInput& input) {
    const DecodeJob& job = input.job;
    if (job.isCancelled()) return job.cancelled();
    switch (input.errors.code) {
    case JERR_OUT_OF_MEMORY:
        return job.outOfMemory();
    case JERR_SOF_UNSUPPORTED:
    case JERR_BAD_PRECISION:
    case JERR_CONVERSION_NOTIMPL:
    case JERR_ARITH_NOTIMPL:
    case JERR_NOT_COMPILED:
    case JERR_NOTIMPL:
        return job.unsupported("a rare kind of JPEG compression");
    default:
        break;
    }
    return job.afterLibraryError(input.reachedEnd ? job.brokenOff() : job.damaged());
}

struct FreeDeleter {
    void operator()(JOCTET* p) const noexcept { std::free(p); }
};
using JpegIcc = std::unique_ptr<JOCTET, FreeDeleter>;

std::span<const std::byte> readProfile(JpegInput& input, JpegIcc& owner) {
    JOCTET* data = nullptr;
    unsigned size = 0;
    auto* info = &input.info;
    const bool sound = guarded(input.errors, [info, &data, &size] {
        if (!jpeg_read_icc_profile(info, &data, &size)) data = nullptr;
    });
    owner.reset(data);
    if (!sound || !data) return {};
    return {reinterpret_cast<const std::byte*>(data), size};
}

int orientationOf(const jpeg_decompress_struct& info) {
    constexpr std::size_t kMark = 6; // "Exif", two zeros
    for (auto* marker = info.marker_list; marker; marker = marker->next) {
        if (marker->marker != JPEG_APP0 + 1 || marker->data_length < kMark) continue;
        if (std::memcmp(marker->data, "Exif\0", kMark - 1) != 0) continue;
        return exifOrientation({reinterpret_cast<const std::byte*>(marker->data) + kMark,
                                marker->data_length - kMark});
    }
    return 1;
}

// A Huffman code has at least one bit and every 8 × 8 block at least one code. Arithmetic coding
// has no such bound; 1/64 of it is far below what flat pictures need.
double largestExpansion(const jpeg_decompress_struct& info) {
    const double bytesPerFileByte = 8 * 64 * double(info.output_components);
    return info.arith_code ? 64 * bytesPerFileByte : bytesPerFileByte;
}

std::optional<ColourModel> chooseModel(jpeg_decompress_struct& info) {
    switch (info.jpeg_color_space) {
    case JCS_GRAYSCALE:
        info.out_color_space = JCS_GRAYSCALE;
        info.output_components = 1;
        return ColourModel::grey;
    case JCS_CMYK:
    case JCS_YCCK:
        info.out_color_space = JCS_CMYK;
        info.output_components = 4;
        return ColourModel::cmyk;
    case JCS_YCbCr:
    case JCS_RGB:
        info.out_color_space = JCS_RGB;
        info.output_components = 3;
        return ColourModel::rgb;
    default:
        return std::nullopt;
    }
}

// The largest reduction that leaves `enough` pixels on the longer side.
int reductionOf(const jpeg_decompress_struct& info, int enough) {
    const auto longer = int(std::max(info.image_width, info.image_height));
    int reduction = 1;
    while (enough > 0 && reduction < 8 && longer / (reduction * 2) >= enough)
        reduction *= 2;
    return reduction;
}

// Files that close with an end marker were not cut: what is missing there is damage.
bool endsWithMarker(ByteSource& source) {
    std::array<std::byte, 2> last{};
    source.readAt(source.size() - 2, last);
    return last[0] == std::byte(0xFF) && last[1] == std::byte(JPEG_EOI);
}

// Whether the picture needed more than the file held. A missing end marker alone is no loss.
bool brokeOff(JpegInput& input) {
    auto& info = input.info;
    if (!input.reachedEnd || endsWithMarker(input.job.source)) return false;
    if (input.errors.ranOutOfBits || info.arith_code) return true;
    if (!info.progressive_mode) return jpeg_has_multiple_scans(&info);
    for (int c = 0; c < info.num_components; ++c)
        for (int k = 0; k < DCTSIZE2; ++k)
            if (!info.coef_bits || info.coef_bits[c][k] != 0) return true;
    return false;
}

// Adobe's programs store ink the other way round; everybody follows them where their marker stands.
void invert(std::byte* row, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        row[i] = ~row[i];
}

Result<void> readRows(JpegInput& input, PictureBuilder& builder, ColourModel model) {
    auto* info = &input.info;
    const std::size_t rowBytes = std::size_t(info->output_width) * std::size_t(channelsOf(model));
    const bool inverted = model == ColourModel::cmyk && info->saw_Adobe_marker;
    while (info->output_scanline < info->output_height) {
        if (info->output_scanline % kMostRowsAtOnce == 0 && input.job.isCancelled())
            return fail(input.job.cancelled());
        auto* row = reinterpret_cast<JSAMPROW>(builder.row());
        if (!guarded(input.errors, [info, &row] { jpeg_read_scanlines(info, &row, 1); }))
            return fail(failureOf(input));
        if (input.reachedEnd && brokeOff(input)) return fail(input.job.brokenOff());
        if (inverted) invert(builder.row(), rowBytes);
        builder.rowDone();
    }
    return {};
}

// Where it can be done, and nothing is wrong: damage is for the one who reads from top to bottom.
bool readInBands(JpegInput& input, PictureBuilder& builder, PixelSize size) {
    const auto& info = input.info;
    if (info.restart_interval == 0 || info.progressive_mode || info.arith_code) return false;
    std::byte* rows = builder.rows();
    if (!rows) return false;
    const std::size_t rowBytes = std::size_t(size.width) * std::size_t(info.output_components);
    if (!decodeJpegInBands(input.job,
                           {info.out_color_space, info.scale_denom, size, rows, rowBytes}))
        return false;
    for (int y = 0; y < size.height; ++y)
        builder.rowDone();
    return true;
}

} // namespace

Result<DecodedBitmap> decodeJpeg(const DecodeJob& job) {
    const auto input = std::make_unique<JpegInput>(job);
    if (!readHeader(*input)) return fail(failureOf(*input));
    auto* info = &input->info;
    const auto model = chooseModel(*info);
    if (!model) return fail(job.unsupported("an unknown set of JPEG colour channels"));
    JpegIcc profile;
    StoredPicture stored;
    stored.fullSize = {int(info->image_width), int(info->image_height)};
    if (auto sane = checkClaimedSize(job, stored.fullSize.width, stored.fullSize.height, 3, 0, 0);
        !sane)
        return fail(std::move(sane).error());
    info->scale_num = 1;
    info->scale_denom = unsigned(reductionOf(*info, job.limits.enoughSide));
    if (!guarded(input->errors, [info] { jpeg_calc_output_dimensions(info); }))
        return fail(failureOf(*input));
    stored.size = {int(info->output_width), int(info->output_height)};
    stored.model = *model;
    stored.orientation = orientationOf(*info);
    stored.icc = readProfile(*input, profile);
    stored.largestExpansion = largestExpansion(*info);
    auto builder = PictureBuilder::begin(job, stored);
    if (!builder) return fail(std::move(builder).error());
    if (readInBands(*input, *builder, stored.size)) return builder->finish();
    if (!guarded(input->errors, [info] { jpeg_start_decompress(info); }))
        return fail(failureOf(*input));
    if (auto read = readRows(*input, *builder, *model); !read) return fail(std::move(read).error());
    if (job.source.hasFailed()) return fail(job.afterLibraryError(job.damaged()));
    return builder->finish();
}

} // namespace kelvaro
