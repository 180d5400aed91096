#include "develop/PhaseTimes.h"

#include <gtest/gtest.h>

namespace kelvaro {
namespace {

TEST(PhaseTimes, AddsUpByNameInTheOrderOfTheFirst) {
    using namespace std::chrono_literals;
    PhaseTimes::Duration now{};
    PhaseTimes times([&] { return now; });
    for (int i = 0; i < 2; ++i) {
        {
            const TimedPhase decode(&times, "decode");
            now += 30ms;
            const TimedPhase inner(&times, "analysis");
            now += 5ms;
        }
        const TimedPhase nobody(nullptr, "render");
        now += 100ms;
    }
    const auto phases = times.phases();
    ASSERT_EQ(phases.size(), 2u);
    EXPECT_EQ(phases[0].name, "analysis");
    EXPECT_EQ(phases[0].milliseconds(), 10);
    EXPECT_EQ(phases[1].name, "decode");
    EXPECT_EQ(phases[1].milliseconds(), 70);
    EXPECT_EQ(phases[1].count, 2);
}

} // namespace
} // namespace kelvaro
