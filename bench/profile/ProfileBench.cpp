// How long the profile of a library of a hundred thousand photos takes: everything that the page
// shows of one period, and of all time.
#include "profile/Profile.h"
#include "profile/WallTime.h"

#include <benchmark/benchmark.h>

#include <array>
#include <random>

namespace kelvaro {
namespace {

constexpr int photos = 100'000;

ProfileSource library() {
    std::mt19937 random(7);
    const auto below = [&](int end) {
        return static_cast<int>(random() % static_cast<unsigned>(end));
    };
    const std::array<double, 6> apertures{1.4, 1.8, 2.8, 4, 5.6, 8};
    ProfileSource source;
    const std::int64_t newest = dayNumber({2024, 12, 31});
    for (int i = 0; i < photos; ++i) {
        ShotRecord record;
        record.taken = (newest - below(3000)) * kSecondsPerDay + below(86'400);
        record.camera = "A camera with a long name " + std::to_string(below(12));
        record.lens = "A lens with a long name 24-70mm F2.8 " + std::to_string(below(30));
        record.focal = 10 + below(400);
        record.iso = 100 << below(8);
        record.aperture = apertures[static_cast<std::size_t>(below(6))];
        record.shutter = 1.0 / (1 << below(13));
        record.isRaw = below(2) == 0;
        record.favorite = below(10) == 0;
        source.records.push_back(std::move(record));
        if (i % 7 == 0) source.editDays.push_back(newest - below(3000));
    }
    return source;
}

void profileOfPeriod(benchmark::State& state, ProfilePeriod::Kind kind) {
    const ProfileSource source = library();
    for (auto _ : state)
        benchmark::DoNotOptimize(makeProfile(source, {kind}, {2024, 12, 31, 12, 0, 0}));
    state.counters["photos"] =
        static_cast<double>(makeProfile(source, {kind}, {2024, 12, 31, 12, 0, 0}).counts.photos);
}
BENCHMARK_CAPTURE(profileOfPeriod, all_time, ProfilePeriod::Kind::allTime)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(profileOfPeriod, this_year, ProfilePeriod::Kind::thisYear)
    ->Unit(benchmark::kMillisecond);

} // namespace
} // namespace kelvaro
