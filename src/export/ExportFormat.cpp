#include "export/ExportFormat.h"

namespace kelvaro {

namespace {

// In the order of the enumeration.
struct Row {
    std::string_view raw, extension, identifier;
    FileFormat file;
};
constexpr std::array kRows{Row{"jpeg", "jpg", "public.jpeg", FileFormat::jpeg},
                           Row{"heic", "heic", "public.heic", FileFormat::heic},
                           Row{"tiff", "tif", "public.tiff", FileFormat::tiff},
                           Row{"png", "png", "public.png", FileFormat::png}};

const Row& row(ExportFormat format) {
    return kRows[static_cast<std::size_t>(format)];
}

} // namespace

std::string_view rawValue(ExportFormat format) {
    return row(format).raw;
}

std::optional<ExportFormat> exportFormat(std::string_view rawValue) {
    for (const ExportFormat format : kExportFormats)
        if (row(format).raw == rawValue) return format;
    return std::nullopt;
}

std::string_view fileExtension(ExportFormat format) {
    return row(format).extension;
}

std::string_view typeIdentifier(ExportFormat format) {
    return row(format).identifier;
}

FileFormat fileFormat(ExportFormat format) {
    return row(format).file;
}

bool isLossy(ExportFormat format) {
    return format == ExportFormat::jpeg || format == ExportFormat::heic;
}

} // namespace kelvaro
