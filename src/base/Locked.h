// A value behind a lock: reached only inside a call, for the read or update and nothing longer.
#pragma once

#include <mutex>
#include <utility>

namespace kelvaro {

template<class T>
class Locked {
public:
    Locked() = default;
    explicit Locked(T value) : value_(std::move(value)) {}

    template<class F>
    auto with(F&& use) {
        std::lock_guard guard(lock_);
        return std::forward<F>(use)(value_);
    }
    T copy() const {
        std::lock_guard guard(lock_);
        return value_;
    }

private:
    mutable std::mutex lock_;
    T value_{};
};

} // namespace kelvaro
