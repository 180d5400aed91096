#include "export/Leftovers.h"

#include "export/ExportFormat.h"
#include "recipe/Uuid.h"

#include <algorithm>

namespace kelvaro {

namespace {

constexpr std::string_view kPrefix = ".kelvaro-export-";
constexpr std::size_t kUuidLength = 36;
// Longer than any photo takes to encode, on disks that do not tell whether somebody still writes.
constexpr double kUnattendedSeconds = 20 * 60;

} // namespace

std::string temporaryExportName(RandomSource& random, std::string_view extension) {
    return std::string(kPrefix) + toText(randomUuid(random)) + "." + std::string(extension);
}

bool isTemporaryExportName(std::string_view name) {
    if (!name.starts_with(kPrefix)) return false;
    name.remove_prefix(kPrefix.size());
    if (name.size() <= kUuidLength || name[kUuidLength] != '.') return false;
    const auto extension = name.substr(kUuidLength + 1);
    return uuidFromText(name.substr(0, kUuidLength)) &&
           std::any_of(kExportFormats.begin(), kExportFormats.end(),
                       [&](ExportFormat format) { return fileExtension(format) == extension; });
}

std::size_t removeLeftovers(FileSystem& files, const std::filesystem::path& folder,
                            double wallSeconds) {
    const auto entries = files.list(folder);
    if (!entries) return 0;
    const FileTime before{std::int64_t((wallSeconds - kUnattendedSeconds) * 1e9)};
    std::size_t removed = 0;
    for (const FolderEntry& entry : *entries) {
        if (entry.kind != FileStatus::Kind::file || !isTemporaryExportName(entry.name)) continue;
        const auto gone = files.removeAbandoned(folder / entry.name, before);
        if (gone && *gone) ++removed;
    }
    return removed;
}

} // namespace kelvaro
