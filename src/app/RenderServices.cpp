#include "app/RenderServices.h"

#include "platform/imaging/TiledRenderer.h"
#include "platform/system/LinuxMemoryMonitor.h"

#include <algorithm>
#include <cstdio>

namespace kelvaro {

namespace {

// With what is drawn at the moment the program stays below 1.5 GiB.
constexpr std::int64_t kMostSessionBytes = std::int64_t(768) << 20;
constexpr std::int64_t kMostThumbnailBytes = std::int64_t(256) << 20;

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
      sessions_(engine_, partsOf(services, analyses_),
                std::size_t(std::min(memory_->physicalBytes() / 4, kMostSessionBytes))),
      thumbnailFiles_(*services.files, *services.reader, *services.writer,
                      folders.caches / ThumbnailDiskCache::folderName),
      thumbnailMaker_(engine_, partsOf(services, analyses_), sessions_),
      thumbnails_(engine_, thumbnailMaker_, thumbnailFiles_, *services.files,
                  {std::size_t(std::min(memory_->physicalBytes() / 16, kMostThumbnailBytes)), 2}) {}

} // namespace kelvaro
