#include "render/PressureNotification.h"

#include "base/Require.h"

#include <utility>
#include <vector>

namespace kelvaro {

PressureNotification::Observation&
PressureNotification::Observation::operator=(Observation&& other) noexcept {
    if (this != &other) {
        end();
        observers_ = std::move(other.observers_);
        number_ = other.number_;
    }
    return *this;
}

void PressureNotification::Observation::end() {
    if (const auto observers = observers_.lock()) observers->erase(number_);
    observers_.reset();
}

PressureNotification::Observation PressureNotification::observe(Observer observer) {
    KELVARO_REQUIRE(mainThread_.isCurrent());
    observers_->emplace(++last_, std::move(observer));
    return {observers_, last_};
}

void PressureNotification::post(MemoryPressure event) {
    mainThread_.post([weak = std::weak_ptr(observers_), event] {
        const auto observers = weak.lock();
        if (!observers) return;
        // An observer may come or go while the others are told.
        std::vector<std::uint64_t> numbers;
        for (const auto& [number, observer] : *observers)
            numbers.push_back(number);
        for (const std::uint64_t number : numbers)
            if (const auto found = observers->find(number); found != observers->end())
                Observer(found->second)(event);
    });
}

} // namespace kelvaro
