// The gate that every background render passes (exports, refinements, thumbnails): interactive
// renders and the user's hand come first, and the work stays inside a memory budget. Sizes in
// bytes, times in seconds. Thread-safe; waiters look again at least every 0.05 s.
#pragma once

#include "base/Cancellation.h"
#include "base/Clock.h"

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace kelvaro {

class RenderWork {
public:
    static constexpr double editingQuietSeconds = 0.6, quietSeconds = 0.12;
    static constexpr double surfaceSeconds = 1.2;
    static constexpr std::int64_t largestBudget = std::int64_t(3) << 30;

    // `memory` is what the machine has. After an interactive render its results stay in memory for
    // `surfaceLifetime`, and background work waits that long. The clock must outlive the gate.
    RenderWork(const Clock& clock, std::int64_t memory, double surfaceLifetime = surfaceSeconds);

    // What a queued background request holds, so that it can be promoted when the user asks for
    // that very result: from then on it counts as interactive, whether it waits or runs. One
    // request each; shared between who asks and who works.
    class Priority {
    public:
        bool isPromoted() const;

    private:
        friend class RenderWork;
        mutable std::mutex lock_;
        bool promoted_ = false;
        bool running_ = false; // guarded by the gate's lock, as is the next
        std::int64_t reserved_ = 0;
    };

    // An admitted background render; gives back exactly what it took when it ends.
    class Admission {
    public:
        Admission(Admission&& other) noexcept;
        Admission& operator=(Admission&&) = delete;
        ~Admission();

    private:
        friend class RenderWork;
        Admission(RenderWork& work, std::int64_t bytes, std::shared_ptr<Priority> priority);
        RenderWork* work_;
        std::int64_t bytes_;
        std::shared_ptr<Priority> priority_; // null without one
    };

    // An interactive render in progress.
    class Interactive {
    public:
        explicit Interactive(RenderWork& work) : work_(&work) { work.beginInteractive(); }
        Interactive(Interactive&& other) noexcept : work_(std::exchange(other.work_, nullptr)) {}
        Interactive& operator=(Interactive&&) = delete;
        ~Interactive() {
            if (work_) work_->endInteractive();
        }

    private:
        RenderWork* work_;
    };

    void beginInteractive();
    void endInteractive();
    // The user moved something in the editor.
    void noteInput();
    void setEditing(bool editing);
    // The system reported that memory is short (warning or critical), or is not any more.
    void setPressure(bool pressure);
    void promote(Priority& priority);

    // Admits a render that will take about `bytes`, now or not at all.
    std::optional<Admission> tryAdmit(std::int64_t bytes);
    // Waits until the render is admitted; none when it was cancelled before. `cancellation` and
    // `priority` may be null. No lock may be held.
    std::optional<Admission> waitForAdmission(std::int64_t bytes, const Cancellation* cancellation,
                                              std::shared_ptr<Priority> priority = nullptr);
    // Waits until nothing interactive runs and the user's hand has rested: what a batch does before
    // each of its full-size renders. At once for what is promoted. False when it was cancelled.
    // Both may be null.
    bool waitForQuiet(const Cancellation* cancellation, const Priority* priority = nullptr);

    struct State {
        int jobs = 0;           // background renders admitted and not yet finished
        std::int64_t bytes = 0; // their estimated memory
        int urgent = 0;         // interactive renders in progress
        bool editing = false;   // the editor is open
        double lastInput = 0, urgentEnded = 0;
        bool pressure = false;

        bool operator==(const State&) const = default;
    };
    State state() const;
    std::int64_t budget() const;

private:
    bool mayAdmit(std::int64_t need) const;
    bool isQuiet() const;
    void reserve(std::int64_t bytes);
    void release(std::int64_t bytes, const std::shared_ptr<Priority>& priority);
    void startPromoted(Priority& priority);
    void waitStep(std::unique_lock<std::mutex>& guard);

    const Clock& clock_;
    const std::int64_t memory_;
    const double surfaceLifetime_;
    mutable std::mutex lock_; // guards state_
    std::condition_variable condition_;
    State state_;
};

// Memory that a render of `pixels` pixels takes at working precision (16 bit, 4 channels).
std::int64_t renderEstimateBytes(std::int64_t pixels);

} // namespace kelvaro
