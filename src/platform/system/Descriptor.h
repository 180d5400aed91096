// An open file descriptor that is closed with its owner, and calls that go on after a signal.
#pragma once

#include <cerrno>
#include <unistd.h>
#include <utility>

namespace kelvaro {

// Repeats a system call for as long as a signal interrupts it.
template<class Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor() { close(); }

    explicit operator bool() const { return number_ >= 0; }
    int number() const { return number_; }
    // False, with errno set, when the system reports late that it could not keep what was written.
    // The number is free in any case, also after an interruption.
    bool close() {
        if (number_ < 0) return true;
        return ::close(std::exchange(number_, -1)) == 0 || errno == EINTR;
    }

private:
    int number_ = -1;
};

} // namespace kelvaro
