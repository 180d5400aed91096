#include "platform/codecs/JpegLayout.h"

#include <algorithm>
#include <cstring>

namespace kelvaro {

namespace {

constexpr int kStart = 0xD8, kEnd = 0xD9, kScan = 0xDA, kRestartInterval = 0xDD,
              kFirstRestart = 0xD0;
constexpr int kBaseline = 0xC0, kExtended = 0xC1, kTables = 0xC4, kArithmeticTables = 0xCC;
constexpr std::size_t kMarkerBytes = 2;

int byteAt(std::span<const std::byte> file, std::size_t at) {
    return at < file.size() ? std::to_integer<int>(file[at]) : -1;
}

int numberAt(std::span<const std::byte> file, std::size_t at) {
    return at + 1 < file.size() ? byteAt(file, at) << 8 | byteAt(file, at + 1) : -1;
}

bool isFrame(int marker) {
    return marker >= kBaseline && marker <= 0xCF && marker != kTables &&
           marker != kArithmeticTables && marker != 0xC8;
}

} // namespace

std::optional<JpegLayout> JpegLayout::of(std::span<const std::byte> file) {
    JpegLayout layout;
    if (byteAt(file, 0) != 0xFF || byteAt(file, 1) != kStart) return std::nullopt;
    for (std::size_t at = kMarkerBytes;;) {
        const int marker = byteAt(file, at) == 0xFF ? byteAt(file, at + 1) : -1;
        const int length = numberAt(file, at + 2);
        if (marker < kBaseline || length < 2) return std::nullopt;
        const std::size_t body = at + 4;
        if (marker == kBaseline || marker == kExtended) {
            if (layout.components != 0 || byteAt(file, body) != 8) return std::nullopt;
            layout.heightAt = body + 1;
            layout.height = numberAt(file, body + 1);
            layout.width = numberAt(file, body + 3);
            layout.components = byteAt(file, body + 5);
            if (layout.components < 1 || layout.components > 4 ||
                length != 8 + 3 * layout.components)
                return std::nullopt;
            for (int c = 0; layout.components > 1 && c < layout.components; ++c) {
                const int factors = byteAt(file, body + 7 + 3 * std::size_t(c));
                layout.acrossMost = std::max(layout.acrossMost, factors >> 4);
                layout.downMost = std::max(layout.downMost, factors & 15);
            }
        } else if (isFrame(marker)) {
            return std::nullopt;
        } else if (marker == kRestartInterval) {
            layout.restartInterval = unsigned(std::max(0, numberAt(file, body)));
        } else if (marker == kScan) {
            const bool isWhole = layout.components > 0 && byteAt(file, body) == layout.components &&
                                 layout.width > 0 && layout.height > 0 && layout.acrossMost <= 4 &&
                                 layout.downMost <= 4;
            layout.scan = at + kMarkerBytes + std::size_t(length);
            if (!isWhole || layout.scan >= file.size()) return std::nullopt;
            return layout;
        }
        at += kMarkerBytes + std::size_t(length);
    }
}

void JpegLayout::setHeight(std::span<std::byte> file, int rows) const {
    file[heightAt] = std::byte(rows >> 8);
    file[heightAt + 1] = std::byte(rows & 0xFF);
}

int JpegLayout::rowsPerRestart() const {
    const int group = 8 * acrossMost;
    const auto groupsPerRow = unsigned((width + group - 1) / group);
    if (restartInterval % groupsPerRow != 0) return 0;
    return int(restartInterval / groupsPerRow) * 8 * downMost;
}

std::optional<std::vector<std::size_t>>
JpegLayout::restarts(std::span<const std::byte> file) const {
    const int rows = rowsPerRestart();
    if (rows == 0) return std::nullopt;
    const auto expected = std::size_t((height + rows - 1) / rows);
    std::vector<std::size_t> places{scan};
    const auto* bytes = reinterpret_cast<const unsigned char*>(file.data());
    for (std::size_t at = scan; at + 1 < file.size();) {
        const void* mark = std::memchr(bytes + at, 0xFF, file.size() - 1 - at);
        if (!mark) break;
        at = std::size_t(static_cast<const unsigned char*>(mark) - bytes) + kMarkerBytes;
        const int marker = bytes[at - 1];
        if (marker == 0) continue; // a byte of data
        if (marker == kEnd) {
            if (places.size() != expected) return std::nullopt;
            places.push_back(at - kMarkerBytes);
            return places;
        }
        if (marker != kFirstRestart + int((places.size() - 1) % 8) || places.size() == expected)
            return std::nullopt;
        places.push_back(at);
    }
    return std::nullopt;
}

} // namespace kelvaro
