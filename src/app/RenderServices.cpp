#include "app/RenderServices.h"

#include "platform/imaging/TiledRenderer.h"
#include "platform/system/LinuxMemoryMonitor.h"

#include <algorithm>
#include <cstdio>

namespace kelvaro {

namespace {

constexpr std::int64_t mebibytes(int count) {
    return std::int64_t(count) << 20;
}

// With what is drawn at the moment the program stays below 1.5 GiB while a photo is open, and with
// a library of 100,000 below 600 MB while none is.
constexpr std::int64_t kMostSessionBytes = mebibytes(768);
constexpr std::int64_t kMostBrowsingBytes = mebibytes(96);
constexpr std::int64_t kMostThumbnailBytes = mebibytes(128);

std::unique_ptr<Perf> perfFor(RenderLogs logs) {
    return std::make_unique<Perf>(logs.perf, logs.thumbnails, [](const std::string& line) {
        std::fprintf(stderr, "%s\n", line.c_str());
    });
}

PhotoSession::Parts partsOf(Services& services, AnalysisCache& analyses) {
    return {*services.files, *services.reader, *services.raw, *services.brushes, analyses};
}

} // namespace

RenderServices::RenderServices(Services& services, const Clock& clock, MainThread& mainThread,
                               const UserFolders& folders, RenderLogs logs)
    : exportRenderer_(makeBackgroundRenderer()),
      memory_(std::make_unique<LinuxMemoryMonitor>()),
      engine_(*services.renderer, *exportRenderer_, clock, mainThread, *memory_, perfFor(logs)),
      analyses_(*services.files, folders.caches / "Analyses", *services.renderer, {}),
      sessions_(engine_, partsOf(services, analyses_), editingBytes()),
      thumbnailFiles_(*services.files, *services.reader, *services.writer,
                      folders.caches / ThumbnailDiskCache::folderName),
      thumbnailMaker_(engine_, partsOf(services, analyses_), sessions_),
      thumbnails_(engine_, thumbnailMaker_, thumbnailFiles_, *services.files,
                  {std::size_t(std::min(memory_->physicalBytes() / 16, kMostThumbnailBytes)), 2}) {}

std::size_t RenderServices::editingBytes() const {
    return std::size_t(std::min(memory_->physicalBytes() / 4, kMostSessionBytes));
}

std::size_t RenderServices::browsingBytes() const {
    return std::size_t(std::min(memory_->physicalBytes() / 16, kMostBrowsingBytes));
}

} // namespace kelvaro
