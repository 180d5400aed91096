// Small pictures of photos for grids and film strips: from memory, from the disk, from what the
// camera embedded, or developed. What is on screen comes first, and of that the newest request.
// Called on the main thread, which also gets the results.
//
//     auto ticket = thumbnails.request({photo, edit, 320}, ThumbnailPriority::visible,
//                                      [](const ThumbnailResult& result) { … });
//
// Keep the ticket as long as the picture is wanted: destroying it drops the request.
#pragma once

#include "base/SerialQueue.h"
#include "render/RenderEngine.h"
#include "render/ThumbnailDiskCache.h"
#include "render/ThumbnailMaker.h"
#include "render/ThumbnailMemory.h"

#include <array>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

namespace kelvaro {

// How much somebody is waiting for the picture.
enum class ThumbnailPriority { nearby, visible };

// Longer sides of the pictures that are made; each request is served from the next larger one.
inline constexpr std::array kThumbnailSizes{160, 320, 640, 1280};

struct ThumbnailRequest {
    std::filesystem::path photo;
    Adjustments edit;
    int sizePx = 320; // longer side on the screen, in device pixels
    // What `photoIdentity` said when the file was last seen: finds what was kept of a photo whose
    // drive is away. Empty where the file is there.
    std::string lastIdentity{};
};

class ThumbnailLoader {
    struct Job;

public:
    using Callback = std::function<void(const ThumbnailResult&)>;

    struct Limits {
        std::size_t memoryBytes = std::size_t(256) << 20;
        int workers = 2; // threads for pictures that need no developing
    };

    // A request in progress. Main thread only; may outlive the loader.
    class Ticket {
    public:
        Ticket() = default;
        Ticket(Ticket&&) = default;
        Ticket& operator=(Ticket&& other) noexcept;
        ~Ticket() { end(); }

        // The picture came into sight or left it.
        void setPriority(ThumbnailPriority priority);
        // The user asked for this very photo: its picture need not wait for quieter times.
        void promote();

    private:
        friend class ThumbnailLoader;
        Ticket(std::weak_ptr<ThumbnailLoader*> loader, std::shared_ptr<Job> job, std::uint64_t wish)
            : loader_(std::move(loader)), job_(std::move(job)), wish_(wish) {}
        void end();
        std::weak_ptr<ThumbnailLoader*> loader_;
        std::shared_ptr<Job> job_;
        std::uint64_t wish_ = 0;
    };

    // All must outlive the loader. Sheds its memory on the engine's notification.
    ThumbnailLoader(RenderEngine& engine, ThumbnailMaker& maker, ThumbnailDiskCache& disk,
                    FileSystem& files, Limits limits);
    ~ThumbnailLoader();

    // The callback is called at most once, on the main thread: never from inside this call, and
    // never after the ticket's end.
    [[nodiscard]] Ticket request(ThumbnailRequest request, ThumbnailPriority priority,
                                 Callback callback);
    // The picture if it is in memory; null otherwise. Never looks at the disk, so that the photo
    // may have changed since.
    Thumbnail inMemory(const ThumbnailRequest& request);

    // Lets go of the pictures in memory.
    void shed() { memory_.clear(); }
    std::size_t memoryBytes() const { return memory_.bytes(); }
    // Requests whose pictures have not been delivered, counting each picture once.
    std::size_t openRequests() const { return jobs_.size(); }

private:
    using JobPointer = std::shared_ptr<Job>;
    struct Waiting {
        std::vector<JobPointer> quick, developing;
        std::uint64_t lastNumber = 0;
    };

    static ThumbnailKey keyOf(ThumbnailRequest request);
    void reprioritise(Job& job);
    void drop(const JobPointer& job, std::uint64_t wish);
    JobPointer next(std::vector<JobPointer> Waiting::*lane);
    void runQuick();
    void develop(const JobPointer& job);
    void runDeveloping();
    void finish(const JobPointer& job, ThumbnailResult result, const char* origin);
    void arrived(const JobPointer& job, const ThumbnailResult& result);
    std::string diskKey(const Job& job) const;

    RenderEngine& engine_;
    ThumbnailMaker& maker_;
    ThumbnailDiskCache& disk_;
    FileSystem& files_;
    const double begin_; // monotonic seconds
    ThumbnailMemory memory_;
    std::unordered_map<ThumbnailKey, JobPointer, ThumbnailKey::Hash> jobs_; // main thread
    std::uint64_t lastWish_ = 0;                                            // main thread
    Locked<Waiting> waiting_;
    std::shared_ptr<ThumbnailLoader*> self_ = std::make_shared<ThumbnailLoader*>(this);
    PressureNotification::Observation pressure_;
    SerialQueue developing_{"kelvaro.editor-thumbnails", SerialQueue::AtEnd::drop};
    std::vector<std::unique_ptr<SerialQueue>> quick_; // last: their jobs use the rest
    std::size_t nextQueue_ = 0;
};

} // namespace kelvaro
