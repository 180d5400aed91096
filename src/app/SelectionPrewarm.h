// Prepares the photo that is selected in the grid, so that opening it shows it at once; and lets go
// of photos that have gone. Main thread.
#pragma once

#include "app/RunLater.h"
#include "base/Cancellation.h"
#include "library/OpenPhotoWork.h"
#include "render/PhotoSessionCache.h"

#include <memory>

namespace kelvaro {

class SelectionPrewarm final : public RenderSessions {
public:
    static constexpr std::chrono::milliseconds rest{300}; // arrow keys run through the grid
    static constexpr PixelSize usualCanvas{1600, 1100};   // another size costs one more reduction

    // The sessions outlive this and the jobs of `later`.
    SelectionPrewarm(PhotoSessionCache& sessions, RunLater later)
        : sessions_(sessions), later_(std::move(later)) {}
    ~SelectionPrewarm() override { cancelPrewarm(); }

    void prewarm(const Photo& photo, const Adjustments& adjustments) override;
    void cancelPrewarm() override;
    void forget(const std::vector<PhotoUrl>& photos) override;

private:
    PhotoSessionCache& sessions_;
    const RunLater later_;
    std::shared_ptr<Cancellation> cancellation_ = std::make_shared<Cancellation>();
};

} // namespace kelvaro
