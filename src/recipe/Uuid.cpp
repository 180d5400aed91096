#include "recipe/Uuid.h"

#include <cstddef>

namespace kelvaro {
namespace {

constexpr std::size_t textLength = 36;

bool isDash(std::size_t position) {
    return position == 8 || position == 13 || position == 18 || position == 23;
}

int digitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

} // namespace

Uuid randomUuid(RandomSource& random) {
    Uuid uuid;
    random.fill(std::as_writable_bytes(std::span(uuid.bytes)));
    uuid.bytes[6] = static_cast<std::uint8_t>((uuid.bytes[6] & 0x0F) | 0x40); // version 4
    uuid.bytes[8] = static_cast<std::uint8_t>((uuid.bytes[8] & 0x3F) | 0x80); // RFC variant
    return uuid;
}

std::string toText(const Uuid& uuid) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(textLength);
    for (const std::uint8_t byte : uuid.bytes) {
        if (isDash(text.size())) text += '-';
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

std::optional<Uuid> uuidFromText(std::string_view text) {
    if (text.size() != textLength) return std::nullopt;
    Uuid uuid;
    std::size_t digit = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isDash(i)) {
            if (text[i] != '-') return std::nullopt;
            continue;
        }
        const int value = digitValue(text[i]);
        if (value < 0) return std::nullopt;
        std::uint8_t& byte = uuid.bytes[digit / 2];
        byte = static_cast<std::uint8_t>(byte << 4 | value);
        ++digit;
    }
    return uuid;
}

} // namespace kelvaro
