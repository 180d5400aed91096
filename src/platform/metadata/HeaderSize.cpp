#include "platform/metadata/HeaderSize.h"

#include <array>
#include <cstdint>
#include <fstream>
#include <string_view>
#include <vector>

namespace kelvaro {

namespace {

class Reader {
public:
    explicit Reader(const std::filesystem::path& path) : file_(path, std::ios::binary) {}
    // Big-endian unless told otherwise; zeros past the end.
    std::uint64_t number(std::uint64_t offset, std::size_t bytes, bool isLittle = false) {
        std::array<char, 8> raw{};
        if (offset > std::uint64_t(1) << 60) return 0;
        file_.clear();
        file_.seekg(std::streamoff(offset));
        file_.read(raw.data(), std::streamsize(bytes));
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < bytes; ++i) {
            value = value << 8 | std::uint8_t(raw[isLittle ? bytes - 1 - i : i]);
        }
        return value;
    }

private:
    std::ifstream file_;
};

std::optional<PixelSize> size(std::uint64_t width, std::uint64_t height) {
    if (width < 1 || height < 1 || width > 1 << 20 || height > 1 << 20) return std::nullopt;
    return PixelSize{int(width), int(height)};
}

std::optional<PixelSize> pngSize(Reader& file) {
    if (file.number(12, 4) != 0x49484452) return std::nullopt; // IHDR
    return size(file.number(16, 4), file.number(20, 4));
}

// Where the length of the frame header stands, after its marker.
std::optional<std::uint64_t> jpegFrame(Reader& file) {
    std::uint64_t at = 2;
    for (int segment = 0; segment < 300; ++segment) {
        const auto marker = file.number(at, 2);
        if (marker >> 8 != 0xff || marker == 0xffda || marker == 0xffd9) return std::nullopt;
        if (marker == 0xffff) {
            ++at;
            continue;
        }
        const bool isFrame = marker >= 0xffc0 && marker <= 0xffcf && marker != 0xffc4 &&
                             marker != 0xffc8 && marker != 0xffcc;
        if (isFrame) return at + 2;
        at += 2 + file.number(at + 2, 2);
    }
    return std::nullopt;
}

std::optional<PixelSize> jpegSize(Reader& file) {
    const auto frame = jpegFrame(file);
    return frame ? size(file.number(*frame + 5, 2), file.number(*frame + 3, 2)) : std::nullopt;
}

std::optional<PixelSize> bigTiffSize(Reader& file, bool isLittle) {
    const auto directory = file.number(8, 8, isLittle);
    const auto entries = file.number(directory, 8, isLittle);
    std::uint64_t width = 0, height = 0;
    for (std::uint64_t i = 0; i < entries && i < 200; ++i) {
        const auto at = directory + 8 + i * 20;
        const auto tag = file.number(at, 2, isLittle), type = file.number(at + 2, 2, isLittle);
        const std::size_t bytes = type == 3 ? 2 : type == 4 ? 4 : 8;
        if (tag == 256) width = file.number(at + 12, bytes, isLittle);
        if (tag == 257) height = file.number(at + 12, bytes, isLittle);
    }
    return size(width, height);
}

} // namespace

bool canRead(const std::filesystem::path& path) {
    return std::filesystem::is_regular_file(path) && std::ifstream(path, std::ios::binary).good();
}

std::optional<PixelSize> sizeInHeader(const std::filesystem::path& path) {
    Reader file(path);
    const auto start = file.number(0, 8);
    if (start == 0x89504e470d0a1a0a) return pngSize(file);
    if (start >> 48 == 0xffd8) return jpegSize(file);
    if (start >> 32 == 0x49492b00) return bigTiffSize(file, true);
    if (start >> 32 == 0x4d4d002b) return bigTiffSize(file, false);
    return std::nullopt;
}

std::optional<int> bitsInHeader(const std::filesystem::path& path) {
    Reader file(path);
    std::uint64_t bits = 0;
    if (file.number(0, 8) == 0x89504e470d0a1a0a) {
        bits = file.number(24, 1);
    } else if (file.number(0, 2) == 0xffd8) {
        if (const auto frame = jpegFrame(file)) bits = file.number(*frame + 2, 1);
    }
    return bits >= 1 && bits <= 16 ? std::optional(int(bits)) : std::nullopt;
}

} // namespace kelvaro
