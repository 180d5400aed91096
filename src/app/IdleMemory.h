// Gives memory back while the grid is shown and nobody asks for anything: of the editor's decoded
// photos the last one stays for a while, so that going back to it shows it at once; what large
// selections and searches needed goes back to the system once the hand rests. Main thread.
#pragma once

#include "app/RunLater.h"
#include "base/Clock.h"
#include "base/MainThread.h"
#include "base/Published.h"
#include "library/LibraryStore.h"
#include "render/PhotoSessionCache.h"

#include <atomic>
#include <memory>

namespace kelvaro {

class IdleMemory final {
public:
    // Of decoded photos: while one is open, and while the grid is shown.
    struct Limits {
        std::size_t editingBytes = 0, browsingBytes = 0;
    };
    static constexpr std::chrono::seconds rest{3}, keepsLast{60}; // after the last thing asked for
    static constexpr std::chrono::seconds neverRests{20}; // after which some is given back as well

    // All outlive the object, jobs of `later` included.
    struct Parts {
        PhotoSessionCache& sessions;
        const Published<std::optional<PhotoUrl>>& openPhoto;
        const Published<std::shared_ptr<const LibraryView>>& view;
        const Published<PhotoSet>& selection;
        const Clock& clock;
        MainThread& main;
        RunLater later;
        std::function<void()> returnMemory; // to the system; called on `later`'s thread
    };
    IdleMemory(Parts parts, Limits limits);

private:
    void photoChanged();
    void used();
    void look();
    void lookSoon();
    void keep(const std::optional<PhotoUrl>& photo); // and let go of all others

    const Parts parts_;
    const Limits limits_;
    std::optional<PhotoUrl> last_;       // that was open
    double usedAt_ = 0, returnedAt_ = 0; // monotonic seconds
    bool looksSoon_ = false, hasReturned_ = false;
    // For jobs, which may begin after a photo has been opened again, or the object has gone.
    std::shared_ptr<std::atomic<bool>> isEditing_ = std::make_shared<std::atomic<bool>>(false);
    std::vector<Subscription> subscriptions_;
};

} // namespace kelvaro
