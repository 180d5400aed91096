// The notification that memory is short, as caches hear it: posted from any thread, heard on the
// main thread.
#pragma once

#include "base/MainThread.h"
#include "platform/MemoryPressure.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string_view>

namespace kelvaro {

class PressureNotification {
public:
    static constexpr std::string_view name = "KelvaroRenderMemoryPressure";
    using Observer = std::function<void(MemoryPressure)>;

    explicit PressureNotification(MainThread& mainThread) : mainThread_(mainThread) {}

    // Observes until it is destroyed, on the main thread. May outlive the notification.
    class Observation {
    public:
        Observation() = default;
        Observation(Observation&&) = default;
        Observation& operator=(Observation&& other) noexcept;
        ~Observation() { end(); }

    private:
        friend class PressureNotification;
        using Observers = std::map<std::uint64_t, Observer>;
        Observation(std::weak_ptr<Observers> observers, std::uint64_t number)
            : observers_(std::move(observers)), number_(number) {}
        void end();
        std::weak_ptr<Observers> observers_;
        std::uint64_t number_ = 0;
    };

    // On the main thread. Observers hear every event, "normal" too, in the order of their coming.
    [[nodiscard]] Observation observe(Observer observer);
    void post(MemoryPressure event);

private:
    MainThread& mainThread_;
    // Main thread only; shared so that a posted job may find the notification gone.
    std::shared_ptr<Observation::Observers> observers_ = std::make_shared<Observation::Observers>();
    std::uint64_t last_ = 0;
};

} // namespace kelvaro
