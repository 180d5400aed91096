#include "library/ByteText.h"

#include "base/Utf8.h"

namespace kelvaro {

std::string textFromBytes(std::string_view bytes) {
    if (isUtf8(bytes)) return std::string(bytes);
    std::string text(1, '\0');
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            text += c;
        } else {
            text += static_cast<char>(0xC0 | (byte >> 6));
            text += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return text;
}

std::string bytesFromText(std::string_view text) {
    if (!text.starts_with('\0')) return std::string(text);
    std::string bytes;
    for (std::size_t i = 1; i < text.size(); ++i) {
        const auto first = static_cast<unsigned char>(text[i]);
        if (first < 0x80) {
            bytes += text[i];
        } else if ((first == 0xC2 || first == 0xC3) && i + 1 < text.size()) {
            const auto second = static_cast<unsigned char>(text[++i]);
            bytes += static_cast<char>(((first & 0x03) << 6) | (second & 0x3F));
        } else {
            return std::string(text);
        }
    }
    return bytes;
}

} // namespace kelvaro
