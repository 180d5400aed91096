#include "render/RenderWork.h"

#include "base/Require.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <utility>

namespace kelvaro {

namespace {

constexpr std::chrono::milliseconds kStep(50);
// Nothing has happened yet: long ago by any clock.
constexpr double kNever = -std::numeric_limits<double>::infinity();

bool isCancelled(const Cancellation* cancellation) {
    return cancellation && cancellation->isCancelled();
}

} // namespace

RenderWork::RenderWork(const Clock& clock, std::int64_t memory, double surfaceLifetime)
    : clock_(clock), memory_(memory), surfaceLifetime_(surfaceLifetime) {
    state_.lastInput = state_.urgentEnded = kNever;
}

bool RenderWork::Priority::isPromoted() const {
    std::lock_guard guard(lock_);
    return promoted_;
}

RenderWork::Admission::Admission(RenderWork& work, std::int64_t bytes,
                                 std::shared_ptr<Priority> priority)
    : work_(&work), bytes_(bytes), priority_(std::move(priority)) {}

RenderWork::Admission::Admission(Admission&& other) noexcept
    : work_(std::exchange(other.work_, nullptr)),
      bytes_(other.bytes_),
      priority_(std::move(other.priority_)) {}

RenderWork::Admission::~Admission() {
    if (work_) work_->release(bytes_, priority_);
}

void RenderWork::beginInteractive() {
    std::lock_guard guard(lock_);
    ++state_.urgent;
}

void RenderWork::endInteractive() {
    {
        std::lock_guard guard(lock_);
        KELVARO_REQUIRE(state_.urgent > 0);
        --state_.urgent;
        state_.urgentEnded = clock_.monotonicSeconds();
    }
    condition_.notify_all();
}

void RenderWork::noteInput() {
    std::lock_guard guard(lock_);
    state_.lastInput = clock_.monotonicSeconds();
}

void RenderWork::setEditing(bool editing) {
    {
        std::lock_guard guard(lock_);
        state_.editing = editing;
    }
    condition_.notify_all();
}

void RenderWork::setPressure(bool pressure) {
    {
        std::lock_guard guard(lock_);
        state_.pressure = pressure;
    }
    condition_.notify_all();
}

std::int64_t RenderWork::budget() const {
    return std::min(memory_ / 4, largestBudget);
}

RenderWork::State RenderWork::state() const {
    std::lock_guard guard(lock_);
    return state_;
}

// Under lock_.
bool RenderWork::isQuiet() const {
    const double quiet = state_.editing ? editingQuietSeconds : quietSeconds;
    return state_.urgent == 0 && clock_.monotonicSeconds() - state_.lastInput >= quiet;
}

// Under lock_. A render that would run alone is admitted however large it is.
bool RenderWork::mayAdmit(std::int64_t need) const {
    const int limit = state_.editing || state_.pressure ? 1 : 2;
    if (state_.urgent > 0 || state_.jobs >= limit) return false;
    if (state_.jobs > 0 && need > budget() - state_.bytes) return false;
    return isQuiet() && clock_.monotonicSeconds() - state_.urgentEnded >= surfaceLifetime_;
}

// Under lock_.
void RenderWork::reserve(std::int64_t bytes) {
    ++state_.jobs;
    state_.bytes += bytes;
}

std::optional<RenderWork::Admission> RenderWork::tryAdmit(std::int64_t bytes) {
    KELVARO_REQUIRE(bytes >= 0);
    std::lock_guard guard(lock_);
    if (!mayAdmit(bytes)) return std::nullopt;
    reserve(bytes);
    return Admission(*this, bytes, nullptr);
}

std::optional<RenderWork::Admission>
RenderWork::waitForAdmission(std::int64_t bytes, const Cancellation* cancellation,
                             std::shared_ptr<Priority> priority) {
    KELVARO_REQUIRE(bytes >= 0);
    std::unique_lock guard(lock_);
    while (true) {
        if (isCancelled(cancellation)) return std::nullopt;
        if (priority && priority->isPromoted()) {
            priority->running_ = true;
            startPromoted(*priority);
            return Admission(*this, 0, std::move(priority));
        }
        if (mayAdmit(bytes)) break;
        waitStep(guard);
    }
    reserve(bytes);
    if (priority) {
        priority->running_ = true;
        priority->reserved_ = bytes;
    }
    return Admission(*this, bytes, std::move(priority));
}

bool RenderWork::waitForQuiet(const Cancellation* cancellation, const Priority* priority) {
    std::unique_lock guard(lock_);
    while (!isCancelled(cancellation)) {
        if (isQuiet() || (priority && priority->isPromoted())) return true;
        waitStep(guard);
    }
    return false;
}

void RenderWork::waitStep(std::unique_lock<std::mutex>& guard) {
    condition_.wait_for(guard, kStep);
}

// Under lock_.
void RenderWork::startPromoted(Priority& priority) {
    priority.reserved_ = -1; // counts as urgent, not as a job
    ++state_.urgent;
}

void RenderWork::promote(Priority& priority) {
    {
        std::lock_guard guard(lock_);
        {
            std::lock_guard flag(priority.lock_);
            if (priority.promoted_) return;
            priority.promoted_ = true;
        }
        if (priority.running_) {
            --state_.jobs;
            state_.bytes -= priority.reserved_;
            startPromoted(priority);
        }
    }
    condition_.notify_all();
}

void RenderWork::release(std::int64_t bytes, const std::shared_ptr<Priority>& priority) {
    {
        std::lock_guard guard(lock_);
        if (priority) priority->running_ = false;
        if (priority && priority->reserved_ < 0) {
            --state_.urgent;
            state_.urgentEnded = clock_.monotonicSeconds();
        } else {
            --state_.jobs;
            state_.bytes -= bytes;
        }
        KELVARO_REQUIRE(state_.jobs >= 0 && state_.bytes >= 0 && state_.urgent >= 0);
    }
    condition_.notify_all();
}

std::int64_t renderEstimateBytes(std::int64_t pixels) {
    return pixels * 4 * 2;
}

} // namespace kelvaro
