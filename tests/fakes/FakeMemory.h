// Memory that runs short when a test says so.
#pragma once

#include "platform/MemoryPressure.h"

#include <utility>

namespace kelvaro {

class FakeMemory final : public MemoryMonitor {
public:
    explicit FakeMemory(std::int64_t bytes = std::int64_t(8) << 30) : bytes_(bytes) {}

    std::int64_t physicalBytes() const override { return bytes_; }
    std::unique_ptr<Subscription> subscribe(std::function<void(MemoryPressure)> handler) override {
        handler_ = std::move(handler);
        return std::make_unique<Ending>(*this);
    }
    bool isSubscribed() const { return bool(handler_); }
    void report(MemoryPressure event) {
        if (handler_) handler_(event);
    }

private:
    struct Ending final : Subscription {
        explicit Ending(FakeMemory& owner) : memory(owner) {}
        ~Ending() override { memory.handler_ = nullptr; }
        FakeMemory& memory;
    };

    std::int64_t bytes_;
    std::function<void(MemoryPressure)> handler_;
};

} // namespace kelvaro
