// Work on bands of a picture which know nothing of each other, on all cores. Any thread.
#pragma once

#include "base/Result.h"

#include <algorithm>
#include <deque>
#include <future>
#include <thread>

namespace kelvaro {

inline int coresForBands() {
    return int(std::clamp(std::thread::hardware_concurrency(), 1U, 16U));
}

// Calls `make` with 0 … count − 1 on several threads and `take` with what came out, in that order,
// on this one; no more than a few results wait. Ends at the first failure of `take`, and rethrows
// what `make` throws.
template<class Make, class Take>
Result<void> takeInOrder(int count, const Make& make, Take&& take) {
    const int ahead = coresForBands() + 1;
    std::deque<std::future<decltype(make(0))>> pending; // its end waits for all
    int next = 0;
    for (int i = 0; i < count; ++i) {
        // Without a free thread a band is made where it is asked for.
        for (; next < count && next < i + ahead; ++next)
            pending.push_back(
                std::async(std::launch::async | std::launch::deferred, std::cref(make), next));
        auto made = pending.front().get();
        pending.pop_front();
        if (auto taken = take(std::move(made)); !taken) return taken;
    }
    return {};
}

} // namespace kelvaro
