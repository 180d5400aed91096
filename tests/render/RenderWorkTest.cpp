#include "render/RenderWork.h"
#include "fakes/ManualClock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <random>
#include <thread>
#include <vector>

namespace kelvaro {
namespace {

constexpr std::int64_t kMiB = 1 << 20, kGiB = 1024 * kMiB;

// What stands before a request, and whether it is admitted.
struct Case {
    const char* name;
    std::int64_t memory, need;
    std::vector<std::int64_t> running = {};
    bool editing = false, pressure = false, urgent = false;
    std::optional<double> sinceInput = {}, sinceUrgent = {};
    bool admitted = true;
};

const Case kCases[] = {
    {"alone", 8 * kGiB, kGiB, {}},
    {"a huge one alone", 8 * kGiB, 5 * kGiB, {}},
    {"two at most", 64 * kGiB, 1, {1, 1}, false, false, false, {}, {}, false},
    {"a second", 8 * kGiB, kGiB, {kGiB}},
    {"the budget to the byte", 8 * kGiB, kGiB, {kGiB}},
    {"one byte too many", 8 * kGiB, kGiB + 1, {kGiB}, false, false, false, {}, {}, false},
    {"beside 2.5 GiB of 2", 8 * kGiB, kGiB, {5 * kGiB / 2}, false, false, false, {}, {}, false},
    {"3 GiB at most", 64 * kGiB, kGiB, {2 * kGiB}},
    {"more than 3 GiB", 64 * kGiB, kGiB + 1, {2 * kGiB}, false, false, false, {}, {}, false},
    {"editing, alone", 8 * kGiB, kGiB, {}, true},
    {"editing, a second", 8 * kGiB, 1, {1}, true, false, false, {}, {}, false},
    {"pressure, alone", 8 * kGiB, kGiB, {}, false, true},
    {"pressure, a second", 8 * kGiB, 1, {1}, false, true, false, {}, {}, false},
    {"interactive", 8 * kGiB, 1, {}, false, false, true, {}, {}, false},
    {"input", 8 * kGiB, 1, {}, false, false, false, 0.1, {}, false},
    {"quiet", 8 * kGiB, 1, {}, false, false, false, 0.125, {}},
    {"input while editing", 8 * kGiB, 1, {}, true, false, false, 0.5, {}, false},
    {"quiet while editing", 8 * kGiB, 1, {}, true, false, false, 0.625, {}},
    {"surfaces", 8 * kGiB, 1, {}, false, false, false, {}, 1.125, false},
    {"surfaces gone", 8 * kGiB, 1, {}, false, false, false, {}, 1.25},
};

TEST(RenderWork, AdmitsByTheTable) {
    for (const Case& test : kCases) {
        SCOPED_TRACE(test.name);
        ManualClock clock;
        RenderWork work(clock, test.memory);
        std::vector<RenderWork::Admission> running;
        for (const std::int64_t bytes : test.running)
            running.push_back(work.tryAdmit(bytes).value());
        if (test.sinceUrgent) {
            RenderWork::Interactive ended(work);
        }
        if (test.sinceUrgent) clock.advance(*test.sinceUrgent);
        if (test.sinceInput) work.noteInput();
        if (test.sinceInput) clock.advance(*test.sinceInput);
        work.setEditing(test.editing);
        work.setPressure(test.pressure);
        std::optional<RenderWork::Interactive> urgent;
        if (test.urgent) urgent.emplace(work);
        EXPECT_EQ(work.tryAdmit(test.need).has_value(), test.admitted);
    }
}

TEST(RenderWork, BudgetIsAQuarterAtMostThreeGiB) {
    ManualClock clock;
    EXPECT_EQ(RenderWork(clock, 64 * kGiB).budget(), 3221225472);
    EXPECT_EQ(RenderWork(clock, 8 * kGiB).budget(), 2 * kGiB);
}

TEST(RenderWork, AMovingSliderHoldsEverythingBack) {
    ManualClock clock;
    RenderWork work(clock, 8 * kGiB);
    work.setEditing(true);
    for (int i = 0; i < 20; ++i) {
        work.noteInput();
        clock.advance(0.3);
        EXPECT_FALSE(work.tryAdmit(1));
    }
    clock.advance(0.3125);
    EXPECT_TRUE(work.tryAdmit(1));
}

TEST(RenderWork, GivesBackWhatItTook) {
    ManualClock clock;
    RenderWork work(clock, 8 * kGiB);
    const RenderWork::State before = work.state();
    {
        auto first = work.tryAdmit(7), second = work.tryAdmit(11);
        EXPECT_EQ(work.state().jobs, 2);
        EXPECT_EQ(work.state().bytes, 18);
        const auto moved = std::move(*first);
        EXPECT_EQ(work.state().jobs, 2);
    }
    EXPECT_EQ(work.state(), before);
}

TEST(RenderWork, CancelledWaitersTakeNothing) {
    ManualClock clock;
    RenderWork work(clock, 8 * kGiB);
    RenderWork::Interactive urgent(work);
    Cancellation cancellation;
    std::thread waiting([&] {
        EXPECT_FALSE(work.waitForAdmission(1, &cancellation));
        EXPECT_FALSE(work.waitForQuiet(&cancellation));
    });
    cancellation.cancel();
    waiting.join();
    EXPECT_EQ(work.state().jobs, 0);
}

TEST(RenderWork, WaitersStartWhenTheLastReasonGoes) {
    ManualClock clock;
    RenderWork work(clock, 8 * kGiB, 0);
    auto urgent = std::make_optional<RenderWork::Interactive>(work);
    std::atomic<int> done{0};
    std::thread admitted([&] { done += work.waitForAdmission(1, nullptr).has_value(); });
    std::thread quiet([&] { done += work.waitForQuiet(nullptr); });
    EXPECT_EQ(done, 0);
    urgent.reset();
    admitted.join();
    quiet.join();
    EXPECT_EQ(done, 2);
}

TEST(RenderWork, PromotionBeforeAndDuringTheRun) {
    ManualClock clock;
    RenderWork work(clock, 8 * kGiB);
    work.setEditing(true);
    work.noteInput(); // nothing in the background may start
    const auto early = std::make_shared<RenderWork::Priority>();
    work.promote(*early);
    {
        const auto admission = work.waitForAdmission(kGiB, nullptr, early);
        ASSERT_TRUE(admission);
        EXPECT_EQ(work.state().urgent, 1);
        EXPECT_EQ(work.state().jobs, 0);
    }
    EXPECT_EQ(work.state().urgent, 0);
    EXPECT_EQ(work.state().urgentEnded, clock.monotonicSeconds());

    clock.advance(10);
    const auto late = std::make_shared<RenderWork::Priority>();
    {
        const auto admission = work.waitForAdmission(kGiB, nullptr, late);
        EXPECT_EQ(work.state().bytes, kGiB);
        work.promote(*late);
        work.promote(*late); // twice is once
        EXPECT_EQ(work.state().bytes, 0);
        EXPECT_EQ(work.state().urgent, 1);
    }
    EXPECT_EQ(work.state().urgent + work.state().jobs, 0);
    work.promote(*early); // long done
    EXPECT_EQ(work.state().urgent, 0);
}

TEST(RenderWork, CountersReturnToZeroWhateverHappens) {
    ManualClock clock;
    RenderWork work(clock, 8 * kGiB, 0);
    const std::uint32_t seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::atomic<int> mostJobs{0};
    std::vector<std::thread> threads;
    for (std::uint32_t t = 0; t < 6; ++t)
        threads.emplace_back([&, t] {
            std::mt19937 random(seed + t);
            for (int i = 0; i < 200; ++i) {
                const auto dice = random();
                clock.advance(0.2);
                if (dice % 5 == 0) {
                    const RenderWork::Interactive urgent(work);
                } else if (dice % 7 == 0) {
                    work.setEditing(dice % 2);
                    work.setPressure(dice % 3 == 0);
                } else {
                    Cancellation cancellation;
                    if (dice % 11 == 0) cancellation.cancel();
                    const auto priority = std::make_shared<RenderWork::Priority>();
                    if (dice % 13 == 0) work.promote(*priority);
                    const auto admission =
                        work.waitForAdmission(dice % (2 * kGiB), &cancellation, priority);
                    if (admission && dice % 17 == 0) work.promote(*priority);
                    const int jobs = work.state().jobs;
                    if (jobs > mostJobs) mostJobs = jobs;
                }
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    const RenderWork::State end = work.state();
    EXPECT_EQ(end.jobs, 0);
    EXPECT_EQ(end.bytes, 0);
    EXPECT_EQ(end.urgent, 0);
    EXPECT_LE(mostJobs, 2);
}

} // namespace
} // namespace kelvaro
