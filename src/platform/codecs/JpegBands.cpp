#include "platform/codecs/JpegBands.h"

#include "base/Bands.h"
#include "platform/codecs/JpegLayout.h"

#include <jerror.h>

namespace kelvaro {

namespace {

constexpr std::int64_t kLargestFile = std::int64_t(128) << 20; // held in memory
constexpr int kFewestRestarts = 4;

struct ParsedFile {
    std::vector<std::byte> bytes;
    JpegLayout layout;
    std::vector<std::size_t> restarts;

    int parts() const { return int(restarts.size()) - 1; }
    // The coded data between two restarts, without the marker at their end.
    std::span<const std::byte> part(int number) const {
        const std::size_t begin = restarts[std::size_t(number)];
        const std::size_t end = restarts[std::size_t(number) + 1] - (number + 1 < parts() ? 2 : 0);
        return std::span(bytes).subspan(begin, end - begin);
    }
};

std::optional<ParsedFile> parsed(const DecodeJob& job) {
    if (job.source.size() > kLargestFile) return std::nullopt;
    ParsedFile file;
    file.bytes.resize(std::size_t(job.source.size()));
    if (job.source.readAt(0, file.bytes) != file.bytes.size()) return std::nullopt;
    const auto layout = JpegLayout::of(file.bytes);
    if (!layout) return std::nullopt;
    auto restarts = layout->restarts(file.bytes);
    if (!restarts || restarts->size() <= kFewestRestarts) return std::nullopt;
    file.layout = *layout;
    file.restarts = std::move(*restarts);
    return file;
}

// Parts from … to − 1 as a picture of their own.
std::vector<std::byte> excerpt(const ParsedFile& file, int from, int to) {
    const JpegLayout& layout = file.layout;
    const int rows = layout.rowsPerRestart();
    std::vector<std::byte> bytes(file.bytes.begin(),
                                 file.bytes.begin() + std::ptrdiff_t(layout.scan));
    layout.setHeight(bytes, std::min(layout.height, to * rows) - from * rows);
    for (int number = from; number < to; ++number) {
        const auto part = file.part(number);
        bytes.insert(bytes.end(), part.begin(), part.end());
        const int marker = number + 1 < to ? JPEG_RST0 + (number - from) % 8 : JPEG_EOI;
        bytes.insert(bytes.end(), {std::byte(0xFF), std::byte(marker)});
    }
    return bytes;
}

struct Excerpt {
    explicit Excerpt(std::vector<std::byte> encoded) : bytes(std::move(encoded)) {
        info.err = prepare(errors);
    }
    Excerpt(const Excerpt&) = delete;
    Excerpt& operator=(const Excerpt&) = delete;
    ~Excerpt() { jpeg_destroy_decompress(&info); }

    std::vector<std::byte> bytes;
    jpeg_decompress_struct info{};
    JpegErrors errors;
};

// Parts first … end − 1 of the file into their rows. One more part at both sides is decoded with
// them: the colour of rows next to a restart is interpolated across it.
bool decodeParts(const DecodeJob& job, const ParsedFile& file, int first, int end,
                 const JpegTarget& target) {
    const int from = std::max(0, first - 1), to = std::min(file.parts(), end + 1);
    const int rowsEach = file.layout.rowsPerRestart() / int(target.reduction);
    const int top = first * rowsEach, bottom = std::min(target.size.height, end * rowsEach);
    Excerpt part(excerpt(file, from, to));
    auto* info = &part.info;
    const bool isOpen = guarded(part.errors, [info, &part, &target] {
        jpeg_create_decompress(info);
        jpeg_mem_src(info, reinterpret_cast<const unsigned char*>(part.bytes.data()),
                     static_cast<unsigned long>(part.bytes.size()));
        jpeg_read_header(info, TRUE);
        info->out_color_space = target.colour;
        info->scale_num = 1;
        info->scale_denom = target.reduction;
        jpeg_start_decompress(info);
    });
    if (!isOpen || int(info->output_width) != target.size.width ||
        info->output_width * unsigned(info->output_components) != target.rowBytes)
        return false;
    std::vector<std::byte> above(target.rowBytes);
    for (int y = from * rowsEach; y < bottom; ++y) {
        if (y % 16 == 0 && job.isCancelled()) return false;
        std::byte* place = y < top ? above.data() : target.rows + target.rowBytes * std::size_t(y);
        auto* row = reinterpret_cast<JSAMPROW>(place);
        if (!guarded(part.errors, [info, &row] { jpeg_read_scanlines(info, &row, 1); }))
            return false;
    }
    return part.errors.base.num_warnings == 0;
}

} // namespace

bool decodeJpegInBands(const DecodeJob& job, const JpegTarget& target) {
    const int cores = coresForBands();
    if (cores < 2) return false;
    const auto file = parsed(job);
    if (!file) return false;
    const int groups = std::min(cores, file->parts() / 2);
    bool isWhole = true;
    const auto decode = [&](int group) {
        return decodeParts(job, *file, file->parts() * group / groups,
                           file->parts() * (group + 1) / groups, target);
    };
    (void)takeInOrder(groups, decode, [&](bool isDone) -> Result<void> {
        isWhole = isWhole && isDone;
        return {};
    }).has_value();
    return isWhole;
}

} // namespace kelvaro
