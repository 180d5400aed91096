#include "base/MainLoop.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace kelvaro {
namespace {

TEST(MainLoop, RunsPostedJobsInOrderWithThoseTheyPost) {
    MainLoop loop;
    std::vector<int> ran;
    loop.post([&] {
        ran.push_back(1);
        loop.post([&] { ran.push_back(3); });
    });
    loop.post([&] { ran.push_back(2); });
    EXPECT_TRUE(ran.empty());
    EXPECT_EQ(loop.runPosted(), 3u);
    EXPECT_EQ(ran, (std::vector{1, 2, 3}));
    EXPECT_EQ(loop.runPosted(), 0u);
}

TEST(MainLoop, WaitsForOtherThreadsUntilAConditionHolds) {
    MainLoop loop;
    bool done = false, elsewhereIsCurrent = true;
    std::thread other([&] {
        elsewhereIsCurrent = loop.isCurrent();
        loop.post([&] { done = true; });
    });
    EXPECT_TRUE(loop.runUntil([&] { return done; }, 60));
    other.join();
    EXPECT_FALSE(elsewhereIsCurrent);
    EXPECT_TRUE(loop.isCurrent());
    EXPECT_FALSE(loop.runUntil([] { return false; }, 0));
}

} // namespace
} // namespace kelvaro
