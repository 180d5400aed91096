// The file formats of an export, as settings store them and as the writer takes them.
#pragma once

#include "platform/ImageFiles.h"

#include <array>
#include <optional>
#include <string_view>

namespace kelvaro {

enum class ExportFormat { jpeg, heic, tiff, png };

inline constexpr std::array kExportFormats{ExportFormat::jpeg, ExportFormat::heic,
                                           ExportFormat::tiff, ExportFormat::png};

std::string_view rawValue(ExportFormat format); // "jpeg"
std::optional<ExportFormat> exportFormat(std::string_view rawValue);
std::string_view fileExtension(ExportFormat format);  // "jpg"
std::string_view typeIdentifier(ExportFormat format); // "public.jpeg"
FileFormat fileFormat(ExportFormat format);
// Written with loss, at 8 bits, without transparency; the others at 16 bits.
bool isLossy(ExportFormat format);

} // namespace kelvaro
