#include "platform/raw/TiffDirectory.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>

namespace kelvaro {

namespace {

constexpr std::size_t kMaximumDirectories = 32, kMaximumEntries = 1024;
constexpr int kMaximumDepth = 4;
constexpr std::uint16_t kSubDirectories = 330, kExifDirectory = 34665,
                        kInteroperabilityDirectory = 40965;

std::uint64_t integerAt(const std::byte* p, int bytes, bool bigEndian) {
    std::uint64_t value = 0;
    for (int i = 0; i < bytes; ++i) {
        value = value << 8 | std::to_integer<std::uint64_t>(p[bigEndian ? i : bytes - 1 - i]);
    }
    return value;
}

int typeBytes(std::uint16_t type) {
    constexpr std::array<int, 14> sizes{0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};
    return type < sizes.size() ? sizes[type] : 0;
}

double ratio(double numerator, double denominator) {
    return denominator == 0 ? std::numeric_limits<double>::quiet_NaN() : numerator / denominator;
}

double numberAt(const std::byte* p, std::uint16_t type, bool bigEndian) {
    const auto u32 = [&](int at) { return std::uint32_t(integerAt(p + at, 4, bigEndian)); };
    switch (type) {
    case 1:
    case 7:
        return double(integerAt(p, 1, bigEndian));
    case 3:
        return double(integerAt(p, 2, bigEndian));
    case 4:
    case 13:
        return double(u32(0));
    case 5:
        return ratio(u32(0), u32(4));
    case 6:
        return double(std::int8_t(integerAt(p, 1, bigEndian)));
    case 8:
        return double(std::int16_t(integerAt(p, 2, bigEndian)));
    case 9:
        return double(std::int32_t(u32(0)));
    case 10:
        return ratio(std::int32_t(u32(0)), std::int32_t(u32(4)));
    case 11:
        return std::bit_cast<float>(u32(0));
    case 12:
        return std::bit_cast<double>(integerAt(p, 8, bigEndian));
    default:
        return std::numeric_limits<double>::quiet_NaN();
    }
}

} // namespace

const TiffEntry* TiffDirectory::find(std::uint16_t tag) const {
    const auto at = entries_.find(tag);
    return at == entries_.end() ? nullptr : &at->second;
}

std::vector<std::byte> TiffDirectory::bytes(std::uint16_t tag, std::size_t limit) const {
    const TiffEntry* entry = find(tag);
    if (!entry) return {};
    const std::uint64_t length =
        std::uint64_t(entry->count) * std::uint64_t(typeBytes(entry->type));
    if (length == 0 || length > limit) return {};
    std::vector<std::byte> value(length);
    if (read_(entry->offset, value) != value.size()) return {};
    return value;
}

std::vector<double> TiffDirectory::numbers(std::uint16_t tag, std::size_t limit) const {
    const TiffEntry* entry = find(tag);
    const int each = entry ? typeBytes(entry->type) : 0;
    if (each == 0 || entry->type == 2) return {};
    const std::size_t count = std::min<std::size_t>(entry->count, limit);
    std::vector<std::byte> raw(count * std::size_t(each));
    if (read_(entry->offset, raw) != raw.size()) return {};
    std::vector<double> values(count);
    for (std::size_t i = 0; i < count; ++i) {
        values[i] = numberAt(raw.data() + i * std::size_t(each), entry->type, bigEndian_);
    }
    return values;
}

std::optional<double> TiffDirectory::number(std::uint16_t tag) const {
    const std::vector<double> values = numbers(tag, 1);
    if (values.empty() || !std::isfinite(values[0])) return std::nullopt;
    return values[0];
}

std::string TiffDirectory::text(std::uint16_t tag) const {
    std::string value;
    for (const std::byte b : bytes(tag, 255)) {
        if (b == std::byte{0}) break;
        value.push_back(char(b));
    }
    return value;
}

TiffFile::TiffFile(ReadAt read) : read_(std::move(read)) {
    std::array<std::byte, 8> header{};
    if (read_(0, header) != header.size()) return;
    const auto first = char(header[0]), second = char(header[1]);
    if (first != second || (first != 'I' && first != 'M')) return;
    bigEndian_ = first == 'M';
    walk(integerAt(header.data() + 4, 4, bigEndian_), 0);
}

void TiffFile::walk(std::uint64_t offset, int depth) {
    while (offset != 0 && depth <= kMaximumDepth && directories_.size() < kMaximumDirectories) {
        if (std::find(visited_.begin(), visited_.end(), offset) != visited_.end()) return;
        visited_.push_back(offset);
        std::array<std::byte, 2> header{};
        if (read_(offset, header) != header.size()) return;
        const std::size_t count = integerAt(header.data(), 2, bigEndian_);
        if (count == 0 || count > kMaximumEntries) return;
        std::vector<std::byte> raw(count * 12 + 4);
        const std::size_t got = read_(offset + 2, raw);

        TiffDirectory directory;
        directory.read_ = read_;
        directory.bigEndian_ = bigEndian_;
        for (std::size_t i = 0; i < count && (i + 1) * 12 <= got; ++i) {
            const std::byte* p = raw.data() + i * 12;
            TiffEntry entry;
            const auto tag = std::uint16_t(integerAt(p, 2, bigEndian_));
            entry.type = std::uint16_t(integerAt(p + 2, 2, bigEndian_));
            entry.count = std::uint32_t(integerAt(p + 4, 4, bigEndian_));
            const bool isInline =
                std::uint64_t(entry.count) * std::uint64_t(typeBytes(entry.type)) <= 4;
            entry.offset = isInline ? offset + 2 + i * 12 + 8 : integerAt(p + 8, 4, bigEndian_);
            directory.entries_.emplace(tag, entry); // the first of two entries counts
        }
        std::vector<std::uint64_t> below;
        for (const std::uint16_t pointer :
             {kSubDirectories, kExifDirectory, kInteroperabilityDirectory}) {
            for (const double at : directory.numbers(pointer, 16)) {
                if (at > 0) below.push_back(std::uint64_t(at));
            }
        }
        directories_.push_back(std::move(directory));
        for (const std::uint64_t at : below)
            walk(at, depth + 1);
        if (got < raw.size()) return;
        offset = integerAt(raw.data() + count * 12, 4, bigEndian_);
    }
}

} // namespace kelvaro
