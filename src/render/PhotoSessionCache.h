// The decoded photos of this program, found by their files: the open one, its neighbours, and those
// opened last. The least recently used go first when they take too many bytes together. Also what
// all of them share. Thread-safe.
#pragma once

#include "base/Locked.h"
#include "render/PhotoSession.h"
#include "render/RenderEngine.h"

#include <atomic>
#include <filesystem>
#include <memory>
#include <vector>

namespace kelvaro {

class PhotoSessionCache {
public:
    // All parts must outlive the cache. Made on the main thread; sheds itself, the brush rasters
    // and the analyses in memory on the engine's notification that memory is short.
    PhotoSessionCache(RenderEngine& engine, PhotoSession::Parts parts, std::size_t limitBytes);

    // The session of the file as it is now where there is one already, else null.
    std::shared_ptr<PhotoSession> presentAsItIs(const std::filesystem::path& photo) const;
    // A session of the file that is not kept here.
    Result<std::shared_ptr<PhotoSession>> separate(const std::filesystem::path& photo) const;
    // The session of the file as it is now; a file that changed since gets a new one. Blocks on the
    // disk: not on the main thread.
    Result<std::shared_ptr<PhotoSession>> session(const std::filesystem::path& photo);
    // Makes a photo ready to be shown at that size (device pixels), once the gate lets background
    // work pass. Failures are told when it is opened. Blocks: not on the main thread.
    void prepare(const std::filesystem::path& photo, const Adjustments& edit, PixelSize fit,
                 const Cancellation* cancellation);
    // Lets go of what is over the limit, except for the last one and those in use.
    void trim();
    // Another limit for the next trims.
    void setLimit(std::size_t bytes) { limitBytes_ = bytes; }
    // Memory is short: keeps the decodes that somebody uses, without what can be made from them.
    void shed();

    // Lets go of these photos, of all but one, of everything; sessions in use live on without being
    // found here.
    void forget(const std::vector<std::filesystem::path>& photos);
    void forgetAllBut(const std::filesystem::path& photo);
    void forgetAll();

    std::size_t bytes() const;
    std::size_t count() const;

private:
    struct Entry {
        std::shared_ptr<PhotoSession> session;
        std::uint64_t lastUse = 0;
    };
    struct State {
        std::vector<Entry> entries;
        std::uint64_t clock = 0;
    };

    std::vector<std::shared_ptr<PhotoSession>> byAge() const; // least recently used first
    void forget(const std::shared_ptr<PhotoSession>& session);

    RenderEngine& engine_;
    const PhotoSession::Parts parts_;
    std::atomic<std::size_t> limitBytes_;
    mutable Locked<State> state_;
    PressureNotification::Observation pressure_;
};

} // namespace kelvaro
