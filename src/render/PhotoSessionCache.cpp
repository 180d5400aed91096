#include "render/PhotoSessionCache.h"

#include "develop/PhotoOpening.h"
#include "platform/PhotoKinds.h"

#include <algorithm>

namespace kelvaro {

namespace {

// Whether somebody holds the session beside the cache and the list that it was found in.
bool isUsed(const std::shared_ptr<PhotoSession>& session) {
    return session.use_count() > 2;
}

} // namespace

PhotoSessionCache::PhotoSessionCache(RenderEngine& engine, PhotoSession::Parts parts,
                                     std::size_t limitBytes)
    : engine_(engine),
      parts_(parts),
      limitBytes_(limitBytes),
      pressure_(engine.pressure().observe([this](MemoryPressure event) {
          if (event != MemoryPressure::normal) shed();
      })) {}

Result<std::shared_ptr<PhotoSession>>
PhotoSessionCache::session(const std::filesystem::path& photo) {
    auto fresh = separate(photo);
    if (!fresh) return fresh;
    std::shared_ptr<PhotoSession> replaced; // let go outside the lock
    return state_.with([&](State& state) {
        const std::uint64_t now = ++state.clock;
        for (Entry& entry : state.entries)
            if (entry.session->photo() == photo) {
                entry.lastUse = now;
                if (entry.session->identity() == (*fresh)->identity()) return entry.session;
                replaced = std::exchange(entry.session, *fresh);
                return entry.session;
            }
        state.entries.push_back({*fresh, now});
        return state.entries.back().session;
    });
}

std::shared_ptr<PhotoSession>
PhotoSessionCache::presentAsItIs(const std::filesystem::path& photo) const {
    const auto identity = photoIdentity(parts_.files, photo);
    if (!identity) return nullptr;
    return state_.with([&](State& state) -> std::shared_ptr<PhotoSession> {
        for (const Entry& entry : state.entries)
            if (entry.session->photo() == photo && entry.session->identity() == *identity)
                return entry.session;
        return nullptr;
    });
}

Result<std::shared_ptr<PhotoSession>>
PhotoSessionCache::separate(const std::filesystem::path& photo) const {
    if (!photoKind(photo))
        return fail(FailureKind::unsupported,
                    "“" + photo.filename().string() + "” isn't a photo that Kelvaro knows.");
    auto identity = photoIdentity(parts_.files, photo);
    if (!identity) return fail(std::move(identity).error());
    return std::make_shared<PhotoSession>(engine_, parts_, photo, std::move(*identity));
}

std::vector<std::shared_ptr<PhotoSession>> PhotoSessionCache::byAge() const {
    auto entries = state_.with([](State& state) { return state.entries; });
    std::sort(entries.begin(), entries.end(),
              [](const Entry& a, const Entry& b) { return a.lastUse < b.lastUse; });
    std::vector<std::shared_ptr<PhotoSession>> sessions;
    for (Entry& entry : entries)
        sessions.push_back(std::move(entry.session));
    return sessions;
}

void PhotoSessionCache::forget(const std::shared_ptr<PhotoSession>& session) {
    state_.with([&](State& state) {
        std::erase_if(state.entries, [&](const Entry& entry) { return entry.session == session; });
    });
}

void PhotoSessionCache::prepare(const std::filesystem::path& photo, const Adjustments& edit,
                                PixelSize fit, const Cancellation* cancellation) {
    if (cancellation->isCancelled()) return;
    const auto found = session(photo);
    if (!found) return;
    const auto admission = engine_.work().waitForAdmission((*found)->estimateBytes(), cancellation);
    if (!admission) return;
    ViewRequest request;
    request.edit = edit;
    request.fit = fit;
    request.keepAlpha = true; // as canvases ask for it
    (void)(*found)->prepare(request, cancellation).has_value();
    trim();
}

// The last one used stays, however large it is.
void PhotoSessionCache::trim() {
    std::size_t total = bytes();
    auto sessions = byAge();
    for (std::size_t i = 0; i + 1 < sessions.size() && total > limitBytes_; ++i) {
        if (isUsed(sessions[i])) continue;
        const std::size_t freed = sessions[i]->bytes();
        forget(sessions[i]);
        total -= std::min(total, freed);
    }
}

void PhotoSessionCache::shed() {
    for (const auto& session : byAge())
        if (isUsed(session))
            session->shed(false);
        else
            forget(session);
    parts_.brushes.clear();
    parts_.analyses.releaseMemory();
}

void PhotoSessionCache::forget(const std::vector<std::filesystem::path>& photos) {
    for (const auto& session : byAge())
        if (std::find(photos.begin(), photos.end(), session->photo()) != photos.end())
            forget(session);
}

void PhotoSessionCache::forgetAllBut(const std::filesystem::path& photo) {
    for (const auto& session : byAge())
        if (session->photo() != photo) forget(session);
}

void PhotoSessionCache::forgetAll() {
    for (const auto& session : byAge())
        forget(session);
}

std::size_t PhotoSessionCache::bytes() const {
    std::size_t total = 0;
    for (const auto& session : byAge())
        total += session->bytes();
    return total;
}

std::size_t PhotoSessionCache::count() const {
    return state_.with([](State& state) { return state.entries.size(); });
}

} // namespace kelvaro
