#include "app/IdleMemory.h"

#include <utility>

namespace kelvaro {
namespace {

double secondsOf(std::chrono::seconds time) {
    return static_cast<double>(time.count());
}

} // namespace

IdleMemory::IdleMemory(Parts parts, Limits limits) : parts_(std::move(parts)), limits_(limits) {
    returnedAt_ = parts_.clock.monotonicSeconds();
    parts_.sessions.setLimit(limits_.browsingBytes);
    subscriptions_.push_back(parts_.openPhoto.observe([this] { photoChanged(); }));
    subscriptions_.push_back(parts_.view.observe([this] { used(); }));
    subscriptions_.push_back(parts_.selection.observe([this] { used(); }));
}

void IdleMemory::photoChanged() {
    const auto& open = parts_.openPhoto.get();
    *isEditing_ = open.has_value();
    parts_.sessions.setLimit(open ? limits_.editingBytes : limits_.browsingBytes);
    if (open)
        last_ = *open;
    else
        keep(last_);
    used();
}

void IdleMemory::keep(const std::optional<PhotoUrl>& photo) {
    parts_.later(std::chrono::milliseconds(0),
                 [&sessions = parts_.sessions, photo, isEditing = isEditing_] {
                     if (*isEditing) return;
                     if (photo)
                         sessions.forgetAllBut(*photo);
                     else
                         sessions.forgetAll();
                 });
}

void IdleMemory::used() {
    usedAt_ = parts_.clock.monotonicSeconds();
    hasReturned_ = false;
    if (!parts_.openPhoto.get()) lookSoon();
}

void IdleMemory::lookSoon() {
    if (std::exchange(looksSoon_, true)) return;
    parts_.later(rest, [&main = parts_.main, alive = std::weak_ptr(isEditing_), this] {
        main.post([alive, this] {
            if (!alive.expired()) look();
        });
    });
}

void IdleMemory::look() {
    looksSoon_ = false;
    if (parts_.openPhoto.get()) return;
    const double now = parts_.clock.monotonicSeconds(), idle = now - usedAt_;
    const bool isOver = idle >= secondsOf(keepsLast);
    if (isOver && std::exchange(last_, std::nullopt)) hasReturned_ = false;
    if (isOver) keep(std::nullopt);
    const bool isDue = idle >= secondsOf(rest) || now - returnedAt_ >= secondsOf(neverRests);
    if (isDue && !std::exchange(hasReturned_, true)) {
        returnedAt_ = now;
        parts_.later(std::chrono::milliseconds(0),
                     [returns = parts_.returnMemory, isEditing = isEditing_] {
                         if (!*isEditing) returns();
                     });
    }
    if (!isOver) lookSoon();
}

} // namespace kelvaro
