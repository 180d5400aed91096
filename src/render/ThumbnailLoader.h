// Small pictures of photos for grids and film strips: from memory, from the disk, from what the
// camera embedded, or developed. What is on screen comes first, and of that the newest request.
// Called on the main thread, which also gets the results.
//
//     auto ticket = thumbnails.request({photo, edit, 320}, ThumbnailPriority::visible,
//                                      [](const ThumbnailResult& result) { … });
//
// Keep the ticket as long as the picture is wanted: destroying it drops the request.
#pragma once

#include "base/Result.h"
#include "platform/Bitmap.h"
#include "recipe/Adjustments.h"
#include "render/RenderEngine.h"
#include "render/ThumbnailDiskCache.h"
#include "render/ThumbnailMaker.h"

#include <filesystem>
#include <functional>
#include <memory>

namespace kelvaro {

// How much somebody is waiting for the picture.
enum class ThumbnailPriority { visible, nearby };

struct ThumbnailRequest {
    std::filesystem::path photo;
    Adjustments edit;
    int sizePx = 256; // longer side on the screen, in device pixels; served from the next larger of
                      // kThumbnailSizes
};

// 8-bit sRGB, opaque, upright, cropped like the edit, rows top-down.
using Thumbnail = std::shared_ptr<const Bitmap>;
// The picture, or why there is none: one sentence that names the file.
using ThumbnailResult = Result<Thumbnail>;

class ThumbnailLoader {
public:
    using Callback = std::function<void(const ThumbnailResult&)>;

    struct Limits {
        std::size_t memoryBytes = std::size_t(256) << 20;
        int workers = 2; // threads for pictures that need no developing
    };

    // A request in progress. Its callback is called at most once, on the main thread, never from
    // inside request(), and never after the ticket's end.
    class Ticket {
    public:
        Ticket() = default;
        Ticket(Ticket&&) = default;
        Ticket& operator=(Ticket&& other) noexcept;
        ~Ticket() { end(); }

        // The picture came or scrolled into sight, or out of it.
        void setPriority(ThumbnailPriority priority);
        // The user opened this photo: its thumbnail need not wait for quieter times.
        void promote();

    private:
        friend class ThumbnailLoader;
        void end();
        struct Wish;
        std::shared_ptr<Wish> wish_;
    };

    // All must outlive the loader. Sheds its memory on the engine's notification.
    ThumbnailLoader(RenderEngine& engine, ThumbnailMaker& maker, ThumbnailDiskCache& disk,
                    Limits limits);
    ~ThumbnailLoader();

    [[nodiscard]] Ticket request(ThumbnailRequest request, ThumbnailPriority priority,
                                 Callback callback);
    // The picture if it is in memory; null otherwise. Never looks at the disk, so that the photo
    // may have changed since.
    Thumbnail inMemory(const ThumbnailRequest& request);

    // Lets go of the pictures in memory.
    void shed();
    std::size_t memoryBytes() const;
};

} // namespace kelvaro
