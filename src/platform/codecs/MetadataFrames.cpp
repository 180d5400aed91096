#include "platform/codecs/MetadataFrames.h"

#include <algorithm>
#include <string_view>

namespace kelvaro {

namespace {

constexpr std::uint16_t kAscii = 2, kShort = 3, kLong = 4, kRational = 5;

std::size_t bytesOfType(std::uint16_t type) {
    switch (type) {
    case kShort:
        return 2;
    case kLong:
        return 4;
    case kRational:
        return 8;
    default:
        return 1;
    }
}

std::uint32_t littleEndian(std::span<const std::byte> bytes) {
    std::uint32_t value = 0;
    for (std::size_t i = bytes.size(); i-- > 0;)
        value = value << 8 | std::to_integer<std::uint32_t>(bytes[i]);
    return value;
}

} // namespace

std::vector<std::byte> photoshopResource(std::span<const std::byte> iptc) {
    std::vector<std::byte> block;
    for (const char c : std::string_view("8BIM\x04\x04\0\0", 8)) // resource 0x0404 without a name
        block.push_back(std::byte(c));
    for (int shift = 24; shift >= 0; shift -= 8)
        block.push_back(std::byte(iptc.size() >> shift));
    block.insert(block.end(), iptc.begin(), iptc.end());
    if (block.size() % 2) block.push_back({});
    return block;
}

std::string rawProfileText(const std::string& name, std::span<const std::byte> data) {
    constexpr std::string_view digits = "0123456789abcdef";
    constexpr std::size_t bytesPerLine = 36;
    const std::string length = std::to_string(data.size());
    std::string text =
        "\n" + name + "\n" + std::string(8 - std::min<std::size_t>(8, length.size()), ' ') + length;
    for (std::size_t i = 0; i < data.size(); ++i) {
        if (i % bytesPerLine == 0) text += '\n';
        const auto byte = std::to_integer<std::size_t>(data[i]);
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text + "\n";
}

ExifDirectory::ExifDirectory(std::span<const std::byte> block) : block_(block) {}

std::optional<std::uint32_t> ExifDirectory::word(std::size_t at, int bytes) const {
    if (at > block_.size() || block_.size() - at < std::size_t(bytes)) return std::nullopt;
    return littleEndian(block_.subspan(at, std::size_t(bytes)));
}

std::optional<ExifDirectory::Entry> ExifDirectory::find(std::uint16_t tag) const {
    const auto directory = word(4, 4);
    const auto entries = directory ? word(*directory, 2) : std::nullopt;
    for (std::size_t i = 0; entries && i < *entries; ++i) {
        const std::size_t at = *directory + 2 + 12 * i;
        if (word(at, 2) != tag) continue;
        const auto type = word(at + 2, 2), count = word(at + 4, 4);
        if (!type || !count) return std::nullopt;
        const std::size_t bytes = *count * bytesOfType(std::uint16_t(*type));
        const auto from = bytes <= 4 ? std::optional(std::uint32_t(at + 8)) : word(at + 8, 4);
        if (!from || *from > block_.size() || block_.size() - *from < bytes) return std::nullopt;
        return Entry{std::uint16_t(*type), block_.subspan(*from, bytes)};
    }
    return std::nullopt;
}

std::optional<std::uint32_t> ExifDirectory::offset(std::uint16_t tag) const {
    const auto entry = find(tag);
    if (!entry || entry->data.size() != 4) return std::nullopt;
    const std::uint32_t at = littleEndian(entry->data);
    return at < block_.size() ? std::optional(at) : std::nullopt;
}

std::optional<std::string> ExifDirectory::text(std::uint16_t tag) const {
    const auto entry = find(tag);
    if (!entry || entry->type != kAscii) return std::nullopt;
    std::string text(reinterpret_cast<const char*>(entry->data.data()), entry->data.size());
    text.resize(std::min(text.size(), text.find('\0')));
    return text.empty() ? std::nullopt : std::optional(std::move(text));
}

std::optional<double> ExifDirectory::rational(std::uint16_t tag) const {
    const auto entry = find(tag);
    if (!entry || entry->type != kRational || entry->data.size() < 8) return std::nullopt;
    const double top = littleEndian(entry->data.first(4));
    const double bottom = littleEndian(entry->data.subspan(4, 4));
    return bottom > 0 ? std::optional(top / bottom) : std::nullopt;
}

std::optional<std::uint16_t> ExifDirectory::number(std::uint16_t tag) const {
    const auto entry = find(tag);
    if (!entry || entry->type != kShort || entry->data.size() < 2) return std::nullopt;
    return std::uint16_t(littleEndian(entry->data.first(2)));
}

} // namespace kelvaro
