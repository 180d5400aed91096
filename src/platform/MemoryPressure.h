// What we ask the system about memory: how much there is, and word when it runs short.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace kelvaro {

enum class MemoryPressure { normal, warning, critical };

class MemoryMonitor {
public:
    virtual ~MemoryMonitor() = default;
    // Bytes of memory that this program may use: the machine's, or less where it is confined.
    virtual std::int64_t physicalBytes() const = 0;

    // Ends when it is destroyed; the handler is not running any more then.
    class Subscription {
    public:
        virtual ~Subscription() = default;
    };
    // Calls `handler` at every change, on a thread of the monitor's own, one call at a time. Null
    // where the system tells nothing. The handler must not end its own subscription.
    virtual std::unique_ptr<Subscription>
    subscribe(std::function<void(MemoryPressure)> handler) = 0;
};

} // namespace kelvaro
