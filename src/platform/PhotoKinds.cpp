#include "platform/PhotoKinds.h"

#include <algorithm>
#include <string>

namespace kelvaro {

std::optional<PhotoKind> photoKind(const std::filesystem::path& file) {
    std::string extension = file.extension().string();
    if (extension.size() < 2) return std::nullopt;
    extension.erase(0, 1);
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
