#include "base/SerialQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <vector>

namespace kelvaro {
namespace {

TEST(SerialQueue, RunsJobsInOrderOnOneThread) {
    SerialQueue queue("kelvaro.test");
    std::vector<int> order; // only the queue's thread touches it until the wait
    bool elsewhere = false;
    for (int i = 0; i < 1000; ++i)
        queue.post([&, i] {
            order.push_back(i);
            elsewhere = elsewhere || !queue.isCurrent();
        });
    queue.waitUntilIdle();
    ASSERT_EQ(order.size(), 1000u);
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(order[std::size_t(i)], i);
    EXPECT_FALSE(elsewhere);
    EXPECT_FALSE(queue.isCurrent());
    EXPECT_EQ(queue.label(), "kelvaro.test");
}

TEST(SerialQueue, WaitsOnlyForWhatWasPostedBefore) {
    SerialQueue queue("kelvaro.test");
    queue.waitUntilIdle();
    std::atomic<int> ended{0};
    queue.post([&] {
        queue.post([&] { ++ended; }); // a job may post another
        ++ended;
    });
    queue.waitUntilIdle();
    EXPECT_GE(ended, 1);
    queue.waitUntilIdle();
    EXPECT_EQ(ended, 2);
}

TEST(SerialQueue, DrainsAtItsEnd) {
    std::atomic<int> run{0};
    {
        SerialQueue queue("kelvaro.test", SerialQueue::AtEnd::drain);
        for (int i = 0; i < 100; ++i)
            queue.post([&] { ++run; });
    }
    EXPECT_EQ(run, 100);
}

TEST(SerialQueue, DropsWhatHasNotBegun) {
    std::atomic<int> run{0};
    std::promise<void> begun, dropped;
    auto waiting = std::shared_ptr<int>(new int, [&](int* p) {
        delete p;
        dropped.set_value(); // the destructor let the waiting job go
    });
    {
        SerialQueue queue("kelvaro.test", SerialQueue::AtEnd::drop);
        queue.post([&] {
            begun.set_value();
            dropped.get_future().wait();
            ++run;
        });
        queue.post([&run, waiting] { run += 10; });
        waiting.reset();
        begun.get_future().wait();
    }
    EXPECT_EQ(run, 1);
}

TEST(SerialQueue, RunsLateJobsInTheOrderOfTheirTimesAndDropsTheRest) {
    std::vector<int> order;
    std::promise<void> last;
    std::atomic<bool> isRun{false};
    {
        using std::chrono::milliseconds;
        SerialQueue queue("kelvaro.test");
        queue.postLater(std::chrono::hours(1), [&] { isRun = true; });
        queue.postLater(milliseconds(20), [&] {
            order.push_back(3);
            last.set_value();
        });
        queue.postLater(milliseconds(1), [&] { order.push_back(2); });
        queue.post([&] { order.push_back(1); });
        last.get_future().wait();
    }
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
    EXPECT_FALSE(isRun);
}

TEST(SerialQueue, LetsGoOfAJobBeforeItCountsAsEnded) {
    SerialQueue queue("kelvaro.test");
    auto held = std::make_shared<int>(1);
    queue.post([held] {});
    queue.waitUntilIdle();
    EXPECT_EQ(held.use_count(), 1);
}

} // namespace
} // namespace kelvaro
