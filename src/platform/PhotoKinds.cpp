#include "platform/PhotoKinds.h"

#include <algorithm>
#include <string>

namespace kelvaro {

std::optional<PhotoKind> photoKind(const std::filesystem::path& file) {
    return photoKindOfName(file.native());
}

std::optional<PhotoKind> photoKindOfName(std::string_view fileName) {
    fileName.remove_prefix(fileName.rfind('/') + 1);
    const auto dot = fileName.rfind('.');
    if (dot == std::string_view::npos || dot == 0) return std::nullopt;
    std::string extension(fileName.substr(dot + 1));
    // Only ASCII letters: the result must not depend on the locale.
    for (char& c : extension)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    const auto isIn = [&](const auto& list) {
        return std::find(list.begin(), list.end(), extension) != list.end();
    };
    if (isIn(kRawExtensions)) return PhotoKind::raw;
    if (isIn(kImageExtensions)) return PhotoKind::image;
    return std::nullopt;
}

} // namespace kelvaro
