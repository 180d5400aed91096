// What bad input may cost: processor time and memory of this process from the constructor on.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <ctime>
#include <fstream>
#include <string>

namespace kelvaro::test {

// The shadow memory of sanitisers would be counted too.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kCountsMemory = false;
#elif defined(__has_feature)
inline constexpr bool kCountsMemory =
    !__has_feature(address_sanitizer) && !__has_feature(thread_sanitizer);
#else
inline constexpr bool kCountsMemory = true;
#endif

class Measured {
public:
    Measured() {
        // Linux forgets the largest size so far when it is told so.
        std::ofstream("/proc/self/clear_refs") << "5";
        resident_ = kilobytes("VmRSS:");
        start_ = std::clock();
    }
    // Processor time of all threads is never less than what a waiting person sees on a free
    // machine.
    void expectModest(const std::string& what, std::int64_t megabytes) const {
        const double seconds = double(std::clock() - start_) / CLOCKS_PER_SEC;
        EXPECT_LT(seconds, 10) << what;
        if (kCountsMemory) {
            EXPECT_LT(peakMegabytes(), megabytes) << what;
        }
    }
    std::int64_t peakMegabytes() const { return (kilobytes("VmHWM:") - resident_) / 1024; }

private:
    static std::int64_t kilobytes(const std::string& name) {
        std::ifstream status("/proc/self/status");
        for (std::string word; status >> word;) {
            std::int64_t value = 0;
            if (word == name && status >> value) return value;
        }
        return 0;
    }
    std::int64_t resident_ = 0;
    std::clock_t start_ = 0;
};

} // namespace kelvaro::test
