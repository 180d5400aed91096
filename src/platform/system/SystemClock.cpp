#include "platform/system/SystemClock.h"

#include <chrono>

namespace kelvaro {
namespace {

template<class Timer>
double now() {
    return std::chrono::duration<double>(Timer::now().time_since_epoch()).count();
}

} // namespace

double SystemClock::monotonicSeconds() const {
    return now<std::chrono::steady_clock>();
}

double SystemClock::wallSeconds() const {
    return now<std::chrono::system_clock>();
}

} // namespace kelvaro
