// Which files are photos, told by their extension: camera RAW files and ordinary picture files.
// Extensions are compared without regard to case.
#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string_view>

namespace kelvaro {

enum class PhotoKind { raw, image };

inline constexpr std::array<std::string_view, 22> kRawExtensions{
    "arw", "srf", "sr2", "cr2", "cr3", "crw", "nef", "nrw", "raf", "rw2", "rwl",
    "orf", "dng", "pef", "srw", "3fr", "fff", "iiq", "erf", "mos", "mrw", "x3f"};
inline constexpr std::array<std::string_view, 7> kImageExtensions{"jpg", "jpeg", "heic", "heif",
                                                                  "png", "tif",  "tiff"};

// None for a file that is no photo.
std::optional<PhotoKind> photoKind(const std::filesystem::path& file);
// The same without making a path of the name, for long listings.
std::optional<PhotoKind> photoKindOfName(std::string_view fileName);

} // namespace kelvaro
