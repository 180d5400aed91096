#include "platform/CacheFolder.h"

#include <algorithm>
#include <string>
#include <vector>

namespace kelvaro {

namespace {

constexpr std::string_view kTemporaryMark = ".kelvaro-"; // follows a target's name in a hidden one
constexpr double kTemporarySeconds = 24 * 3600;          // then nobody is writing it any more

struct Written {
    std::filesystem::path path;
    FileStatus status;
};

} // namespace

std::int64_t trimCacheFolder(FileSystem& files, const std::filesystem::path& folder,
                             std::string_view ending, std::int64_t limitBytes) {
    const auto names = files.list(folder);
    if (!names) return 0;
    const std::string mark = std::string(ending) + std::string(kTemporaryMark);
    std::vector<Written> finished, unfinished;
    for (const FolderEntry& entry : *names) {
        const bool temporary =
            entry.name.starts_with('.') && entry.name.find(mark) != std::string::npos;
        if (!temporary && !entry.name.ends_with(ending)) continue;
        const auto status = files.status(folder / entry.name);
        if (status && status->kind == FileStatus::Kind::file)
            (temporary ? unfinished : finished).push_back({folder / entry.name, *status});
    }
    if (finished.empty()) return 0;
    std::sort(finished.begin(), finished.end(), [](const Written& a, const Written& b) {
        return a.status.modified.nanoseconds > b.status.modified.nanoseconds;
    });
    const double now = finished.front().status.modified.seconds();
    for (const Written& file : unfinished)
        if (now - file.status.modified.seconds() > kTemporarySeconds)
            static_cast<void>(files.remove(file.path));
    std::int64_t bytes = 0;
    bool isFull = false;
    for (const Written& file : finished) {
        isFull = isFull || bytes + file.status.size > limitBytes;
        if (!isFull || !files.remove(file.path)) bytes += file.status.size;
    }
    return bytes;
}

} // namespace kelvaro
