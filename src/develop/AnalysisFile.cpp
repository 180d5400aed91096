#include "develop/AnalysisFile.h"

#include "develop/Guides.h"

#include <cmath>
#include <cstring>
#include <type_traits>

namespace kelvaro {

namespace {

constexpr std::string_view kMagic = "KelvaroAnalysis";
constexpr std::string_view kVersionName = "TWAnalysisVersion";
constexpr std::uint32_t kByteOrderMark = 0x01020304;
constexpr std::uint32_t kBitsPerComponent = 32, kBitsPerPixel = 128;
constexpr std::size_t kLongestText = 1 << 16;

struct ImageHeader {
    std::uint32_t role, width, height, bitsPerComponent, bitsPerPixel;
};

class Writer {
public:
    explicit Writer(std::size_t reserve) { bytes_.reserve(reserve); }

    template<class T>
    void value(const T& value) {
        static_assert(std::is_trivially_copyable_v<T>);
        append(&value, sizeof value);
    }
    void text(std::string_view text) {
        value(std::uint32_t(text.size()));
        append(text.data(), text.size());
    }
    void append(const void* data, std::size_t size) {
        const auto* begin = static_cast<const std::byte*>(data);
        bytes_.insert(bytes_.end(), begin, begin + size);
    }
    std::vector<std::byte>& bytes() { return bytes_; }

private:
    std::vector<std::byte> bytes_;
};

// Reads past the end give zeros and set `failed`.
class Reader {
public:
    explicit Reader(std::span<const std::byte> bytes) : rest_(bytes) {}

    template<class T>
    T value() {
        static_assert(std::is_trivially_copyable_v<T>);
        T value{};
        const auto from = take(sizeof value);
        if (!from.empty()) std::memcpy(&value, from.data(), sizeof value);
        return value;
    }
    bool expectText(std::string_view expected) {
        const auto length = value<std::uint32_t>();
        if (failed_ || length > kLongestText || length != expected.size()) return false;
        const auto from = take(length);
        return !failed_ && std::memcmp(from.data(), expected.data(), length) == 0;
    }
    std::span<const std::byte> take(std::size_t size) {
        if (size > rest_.size()) failed_ = true;
        if (failed_) return {};
        const auto taken = rest_.first(size);
        rest_ = rest_.subspan(size);
        return taken;
    }
    bool failed() const { return failed_; }
    bool atEnd() const { return rest_.empty(); }

private:
    std::span<const std::byte> rest_;
    bool failed_ = false;
};

std::size_t pixelBytes(const ImageHeader& header) {
    return std::size_t(header.width) * header.height * (kBitsPerPixel / 8);
}

// Rows top-down, red, green, blue and an alpha of 1.
void writeImage(Writer& out, AnalysisImage role, const Raster& raster) {
    const PixelRect& extent = raster.extent();
    out.value(ImageHeader{std::uint32_t(role), std::uint32_t(extent.width),
                          std::uint32_t(extent.height), kBitsPerComponent, kBitsPerPixel});
    std::vector<float> row(std::size_t(extent.width) * 4);
    for (int y = 0; y < extent.height; ++y) {
        for (int x = 0; x < extent.width; ++x) {
            for (int plane = 0; plane < 3; ++plane)
                row[std::size_t(x) * 4 + std::size_t(plane)] = raster.row(plane, y)[x];
            row[std::size_t(x) * 4 + 3] = 1;
        }
        out.append(row.data(), row.size() * sizeof(float));
    }
}

bool isOurs(const ImageHeader& header) {
    return header.role >= std::uint32_t(AnalysisImage::small) &&
           header.role <= std::uint32_t(AnalysisImage::haze) && header.width >= 1 &&
           header.height >= 1 && header.width <= std::uint32_t(kAnalysisLongerSide) &&
           header.height <= std::uint32_t(kAnalysisLongerSide) &&
           header.bitsPerComponent == kBitsPerComponent && header.bitsPerPixel == kBitsPerPixel;
}

std::optional<Raster> rasterFrom(const ImageHeader& header, std::span<const std::byte> pixels) {
    Raster raster({0, 0, int(header.width), int(header.height)}, false);
    for (int y = 0; y < raster.extent().height; ++y)
        for (int x = 0; x < raster.extent().width; ++x) {
            float pixel[4];
            std::memcpy(pixel, pixels.data(), sizeof pixel);
            pixels = pixels.subspan(sizeof pixel);
            for (int plane = 0; plane < 3; ++plane) {
                if (!std::isfinite(pixel[plane])) return std::nullopt;
                raster.row(plane, y)[x] = pixel[plane];
            }
        }
    return raster;
}

bool readImages(Reader& in, StoredAnalysis& analysis) {
    const auto count = in.value<std::uint32_t>();
    for (std::uint32_t i = 0; i < count && !in.failed(); ++i) {
        const auto header = in.value<ImageHeader>();
        if (in.failed() || !isOurs(header)) return false;
        const auto pixels = in.take(pixelBytes(header));
        if (in.failed()) return false;
        auto raster = rasterFrom(header, pixels);
        if (!raster) return false;
        analysis.images.insert_or_assign(AnalysisImage(header.role), std::move(*raster));
    }
    return !in.failed() && in.atEnd();
}

} // namespace

std::uint64_t checksum(std::span<const std::byte> bytes) {
    std::uint64_t hash = 0xCBF29CE484222325u ^ bytes.size();
    const auto fold = [&](std::uint64_t word) {
        hash = (hash ^ word) * 0x100000001B3u;
        hash ^= hash >> 29; // words reach the low bits too
    };
    std::size_t i = 0;
    for (; i + 8 <= bytes.size(); i += 8) {
        std::uint64_t word;
        std::memcpy(&word, bytes.data() + i, 8);
        fold(word);
    }
    for (; i < bytes.size(); ++i)
        fold(std::to_integer<std::uint64_t>(bytes[i]));
    return hash;
}

std::vector<std::byte> encodedAnalysis(const StoredAnalysis& analysis, std::string_view version,
                                       std::string_view key) {
    std::size_t size = 1024 + version.size() + key.size();
    for (const auto& [role, raster] : analysis.images)
        size += 64 + std::size_t(raster.extent().width) * std::size_t(raster.extent().height) * 16;
    Writer out(size);
    out.append(kMagic.data(), kMagic.size() + 1);
    out.value(kByteOrderMark);
    out.text(kVersionName);
    out.text(version);
    out.text(key);
    out.value(std::uint8_t(analysis.levels.has_value()));
    out.value(std::uint8_t(analysis.hazeSought));
    out.value(analysis.levels.value_or(ToneLevels{}));
    out.value(analysis.airlight);
    out.value(std::uint32_t(analysis.images.size()));
    for (const auto& [role, raster] : analysis.images)
        writeImage(out, role, raster);
    out.value(checksum(out.bytes()));
    return std::move(out.bytes());
}

std::optional<StoredAnalysis> decodedAnalysis(std::span<const std::byte> file,
                                              std::string_view version, std::string_view key) {
    constexpr std::size_t kSumBytes = sizeof(std::uint64_t);
    if (file.size() < kSumBytes) return std::nullopt;
    const auto content = file.first(file.size() - kSumBytes);
    std::uint64_t sum;
    std::memcpy(&sum, file.data() + content.size(), kSumBytes);
    if (sum != checksum(content)) return std::nullopt;

    Reader in(content);
    const auto magic = in.take(kMagic.size() + 1);
    if (in.failed() || std::memcmp(magic.data(), kMagic.data(), kMagic.size() + 1) != 0 ||
        in.value<std::uint32_t>() != kByteOrderMark || !in.expectText(kVersionName) ||
        !in.expectText(version) || !in.expectText(key))
        return std::nullopt;
    StoredAnalysis analysis;
    const bool hasLevels = in.value<std::uint8_t>() != 0;
    analysis.hazeSought = in.value<std::uint8_t>() != 0;
    const auto levels = in.value<ToneLevels>();
    analysis.airlight = in.value<std::array<double, 3>>();
    if (!readImages(in, analysis)) return std::nullopt;
    for (const double value :
         {levels.lo, levels.hi, analysis.airlight[0], analysis.airlight[1], analysis.airlight[2]})
        if (!std::isfinite(value)) return std::nullopt;
    if (hasLevels) analysis.levels = levels;
    return analysis;
}

} // namespace kelvaro
