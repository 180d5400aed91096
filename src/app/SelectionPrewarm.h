// Prepares the photo that is selected in the grid, so that opening it shows it at once; and lets go
// of photos that have gone. Main thread.
#pragma once

#include "base/Cancellation.h"
#include "base/SerialQueue.h"
#include "library/OpenPhotoWork.h"
#include "render/PhotoSessionCache.h"

#include <memory>

namespace kelvaro {

class SelectionPrewarm final : public RenderSessions {
public:
    // The sessions outlive this.
    explicit SelectionPrewarm(PhotoSessionCache& sessions) : sessions_(sessions) {}
    ~SelectionPrewarm() override { cancelPrewarm(); }

    void prewarm(const Photo& photo, const Adjustments& adjustments) override;
    void cancelPrewarm() override;
    void forget(const std::vector<PhotoUrl>& photos) override;

private:
    PhotoSessionCache& sessions_;
    std::shared_ptr<Cancellation> cancellation_ = std::make_shared<Cancellation>();
    SerialQueue queue_{"kelvaro.selection-prewarm", SerialQueue::AtEnd::drop};
};

} // namespace kelvaro
