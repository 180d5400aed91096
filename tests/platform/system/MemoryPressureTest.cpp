#include "platform/system/LinuxMemoryMonitor.h"
#include "platform/system/PressureTracker.h"

#include <gtest/gtest.h>

namespace kelvaro {
namespace {

using P = MemoryPressure;

TEST(PressureTracker, RisesAtOnceAndFallsAfterCalm) {
    PressureTracker tracker;
    EXPECT_FALSE(tracker.passed(1e9));
    EXPECT_EQ(tracker.sign(P::warning, 10), P::warning);
    EXPECT_FALSE(tracker.sign(P::warning, 12)); // known
    EXPECT_FALSE(tracker.passed(17.9));         // the last sign is younger than 6 s
    EXPECT_EQ(tracker.sign(P::critical, 17.9), P::critical);
    EXPECT_FALSE(tracker.sign(P::warning, 20)); // still critical
    EXPECT_EQ(tracker.calmAt(), 26);
    EXPECT_EQ(tracker.passed(26), P::normal);
    EXPECT_FALSE(tracker.passed(27));
    EXPECT_FALSE(tracker.calmAt());
    EXPECT_EQ(tracker.sign(P::warning, 30), P::warning);
}

TEST(MemoryEvents, ToldFromTheCounters) {
    const auto before = MemoryEvents::parse("low 0\nhigh 3\nmax 1\noom 0\noom_kill 0\n");
    struct Case {
        const char* text;
        std::optional<P> sign;
    };
    for (const Case& test : {Case{"low 9\nhigh 3\nmax 1\noom 0\noom_kill 0\n", {}},
                             Case{"low 0\nhigh 4\nmax 1\noom 0\noom_kill 0\n", P::warning},
                             Case{"low 0\nhigh 4\nmax 2\noom 0\noom_kill 0\n", P::critical},
                             Case{"low 0\nhigh 3\nmax 1\noom 1\noom_kill 0\n", P::critical},
                             Case{"", {}}, Case{"high\nmax 1 x\nmax", {}}})
        EXPECT_EQ(MemoryEvents::parse(test.text).signSince(before), test.sign) << test.text;
}

TEST(LinuxMemoryMonitor, EndsItsSubscription) {
    LinuxMemoryMonitor monitor;
    EXPECT_GT(monitor.physicalBytes(), std::int64_t(1) << 20);
    // Where the system tells nothing there is none; where it does, it ends at once.
    const auto subscription = monitor.subscribe([](MemoryPressure) {});
    const auto another = monitor.subscribe([](MemoryPressure) {});
    EXPECT_EQ(bool(subscription), bool(another));
}

} // namespace
} // namespace kelvaro
