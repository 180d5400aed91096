#include "app/SelectionPrewarm.h"

namespace kelvaro {
namespace {

constexpr std::chrono::milliseconds rest(300); // arrow keys run through the grid
constexpr PixelSize usualCanvas{1600, 1100};   // another size costs one more reduction

} // namespace

void SelectionPrewarm::prewarm(const Photo& photo, const Adjustments& adjustments) {
    cancelPrewarm();
    cancellation_ = std::make_shared<Cancellation>();
    queue_.postLater(rest, [this, url = photo.url, adjustments, cancellation = cancellation_] {
        sessions_.prepare(url, adjustments, usualCanvas, cancellation.get());
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
