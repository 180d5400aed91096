#include "render/KeyedWork.h"
#include "base/Locked.h"

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <thread>
#include <vector>

namespace kelvaro {
namespace {

TEST(KeyedWork, ManyAskAndEachKeyIsMadeOnce) {
    KeyedWork work;
    Locked<std::map<std::string, int>> results;
    std::atomic<int> made{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([&] {
            for (int k = 0; k < 50; ++k) {
                const std::string key = std::to_string(k);
                const auto find = [&]() -> std::optional<int> {
                    return results.with([&](auto& all) -> std::optional<int> {
                        const auto at = all.find(key);
                        return at == all.end() ? std::nullopt : std::optional(at->second);
                    });
                };
                const auto make = [&] {
                    ++made;
                    results.with([&](auto& all) { all[key] = k * k; });
                    return k * k;
                };
                EXPECT_EQ(work.run(key, nullptr, find, make), k * k);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(made, 50);
    EXPECT_EQ(work.activeCount(), 0u);
}

TEST(KeyedWork, FailedWorkIsTriedByTheNext) {
    KeyedWork work;
    const auto none = [] { return std::optional<int>(); };
    int made = 0;
    for (int i = 1; i <= 2; ++i)
        EXPECT_EQ(work.run("key", nullptr, none, [&] { return ++made; }), i);
}

TEST(KeyedWork, CancelledWaitersLeave) {
    KeyedWork work;
    const auto claim = work.tryClaim("key");
    EXPECT_FALSE(work.tryClaim("key"));
    EXPECT_TRUE(work.tryClaim("other"));
    Cancellation cancellation;
    cancellation.cancel();
    EXPECT_FALSE(work.waitFor("key", &cancellation));
}

} // namespace
} // namespace kelvaro
