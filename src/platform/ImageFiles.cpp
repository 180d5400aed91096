#include "platform/ImageFiles.h"

#include <algorithm>
#include <cctype>

namespace kelvaro {

const char* profileNameOf(OutputSpace space) {
    switch (space) {
    case OutputSpace::displayP3:
        return "Display P3";
    case OutputSpace::linearRec709:
        return "Linear Rec. 709";
    case OutputSpace::sRGB:
        break;
    }
    return "sRGB";
}

std::optional<FileFormat> formatOfExtension(const std::string& extension) {
    std::string lower = extension.starts_with('.') ? extension.substr(1) : extension;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (lower == "jpg" || lower == "jpeg") return FileFormat::jpeg;
    if (lower == "heic" || lower == "heif") return FileFormat::heic;
    if (lower == "tif" || lower == "tiff") return FileFormat::tiff;
    if (lower == "png") return FileFormat::png;
    return std::nullopt;
}

} // namespace kelvaro
