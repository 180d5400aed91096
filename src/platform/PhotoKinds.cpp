#include "platform/PhotoKinds.h"

#include <algorithm>
#include <cstdint>
#include <span>

namespace kelvaro {
namespace {

// An extension of up to four bytes as one number, without regard to case; 0 for all others. Only
// ASCII letters: the result must not depend on the locale.
constexpr std::uint32_t packed(std::string_view extension) {
    if (extension.size() > 4) return 0;
    std::uint32_t number = 0;
    for (const char c : extension) {
        const char small = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        number = number << 8 | static_cast<unsigned char>(small);
    }
    return number;
}

template<std::size_t Count>
constexpr auto packedAll(const std::array<std::string_view, Count>& extensions) {
    std::array<std::uint32_t, Count> numbers{};
    for (std::size_t i = 0; i < Count; ++i)
        numbers[i] = packed(extensions[i]);
    return numbers;
}

constexpr auto kPackedRaw = packedAll(kRawExtensions);
constexpr auto kPackedImages = packedAll(kImageExtensions);

bool isIn(std::span<const std::uint32_t> list, std::uint32_t extension) {
    return extension != 0 && std::find(list.begin(), list.end(), extension) != list.end();
}

} // namespace

std::optional<PhotoKind> photoKind(const std::filesystem::path& file) {
    return photoKindOfName(file.native());
}

std::optional<PhotoKind> photoKindOfName(std::string_view fileName) {
    fileName.remove_prefix(fileName.rfind('/') + 1);
    const auto dot = fileName.rfind('.');
    if (dot == std::string_view::npos || dot == 0) return std::nullopt;
    const std::uint32_t extension = packed(fileName.substr(dot + 1));
    if (isIn(kPackedRaw, extension)) return PhotoKind::raw;
    if (isIn(kPackedImages, extension)) return PhotoKind::image;
    return std::nullopt;
}

} // namespace kelvaro
