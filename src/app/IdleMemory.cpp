#include "app/IdleMemory.h"

#include <cmath>

namespace kelvaro {
namespace {

constexpr double restSeconds = std::chrono::duration<double>(IdleMemory::rest).count();
constexpr double keepsLastSeconds = std::chrono::duration<double>(IdleMemory::keepsLast).count();

} // namespace

IdleMemory::IdleMemory(Parts parts, Limits limits) : parts_(std::move(parts)), limits_(limits) {
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
    if (!parts_.openPhoto.get()) lookIn(restSeconds);
}

void IdleMemory::lookIn(double seconds) {
    if (std::exchange(looksSoon_, true)) return;
    const std::chrono::milliseconds delay(std::llround(std::ceil(seconds * 1000)));
    parts_.later(delay, [&main = parts_.main, alive = std::weak_ptr(isEditing_), this] {
        main.post([alive, this] {
            if (!alive.expired()) look();
        });
    });
}

void IdleMemory::look() {
    looksSoon_ = false;
    if (parts_.openPhoto.get()) return;
    const double idle = parts_.clock.monotonicSeconds() - usedAt_;
    if (idle < restSeconds) return lookIn(restSeconds - idle);
    const bool isOver = idle >= keepsLastSeconds;
    if (isOver && std::exchange(last_, std::nullopt)) hasReturned_ = false;
    if (isOver) keep(std::nullopt);
    if (!std::exchange(hasReturned_, true))
        parts_.later(std::chrono::milliseconds(0),
                     [returns = parts_.returnMemory, isEditing = isEditing_] {
                         if (!*isEditing) returns();
                     });
    if (!isOver) lookIn(keepsLastSeconds - idle);
}

} // namespace kelvaro
