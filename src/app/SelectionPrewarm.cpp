#include "app/SelectionPrewarm.h"

namespace kelvaro {

void SelectionPrewarm::prewarm(const Photo& photo, const Adjustments& adjustments) {
    cancelPrewarm();
    cancellation_ = std::make_shared<Cancellation>();
    later_(rest,
           [&sessions = sessions_, url = photo.url, adjustments, cancellation = cancellation_] {
               sessions.prepare(url, adjustments, usualCanvas, cancellation.get());
           });
}

void SelectionPrewarm::cancelPrewarm() {
    cancellation_->cancel();
}

void SelectionPrewarm::forget(const std::vector<PhotoUrl>& photos) {
    const std::vector<std::filesystem::path> gone(photos.begin(), photos.end());
    sessions_.forget(gone);
}

} // namespace kelvaro
