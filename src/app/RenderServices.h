// What programs that show photos need beside Services: the gate, sessions, thumbnails. Put together
// once at start-up, on the main thread, and ended there.
#pragma once

#include "app/Services.h"
#include "develop/AnalysisCache.h"
#include "platform/UserFolders.h"
#include "render/PhotoSessionCache.h"
#include "render/RenderEngine.h"
#include "render/ThumbnailLoader.h"

namespace kelvaro {

// Which timing lines are written, on standard error (Perf::variable and its fellow).
struct RenderLogs {
    bool perf = false, thumbnails = false;
};

class RenderServices {
public:
    // All must outlive the object.
    RenderServices(Services& services, const Clock& clock, MainThread& mainThread,
                   const UserFolders& folders, RenderLogs logs);

    RenderEngine& engine() { return engine_; }
    AnalysisCache& analyses() { return analyses_; }
    PhotoSessionCache& sessions() { return sessions_; }
    ThumbnailLoader& thumbnails() { return thumbnails_; }
    // Of the decoded photos: while one is open, and while none is.
    std::size_t editingBytes() const;
    std::size_t browsingBytes() const;

private:
    std::unique_ptr<Renderer> exportRenderer_;
    std::unique_ptr<MemoryMonitor> memory_;
    RenderEngine engine_;
    AnalysisCache analyses_;
    PhotoSessionCache sessions_;
    ThumbnailDiskCache thumbnailFiles_;
    ThumbnailMaker thumbnailMaker_;
    ThumbnailLoader thumbnails_;
};

} // namespace kelvaro
