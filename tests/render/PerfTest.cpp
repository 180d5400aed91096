#include "render/Perf.h"

#include <gtest/gtest.h>

#include <vector>

namespace kelvaro {
namespace {

TEST(Perf, LinesHaveTheirFormats) {
    std::vector<std::string> lines;
    Perf perf(true, true, [&](const std::string& line) { lines.push_back(line); });
    const auto first = perf.encoded(12.34, 100.0), second = perf.encoded(5, 100.5);
    perf.displayed(second, 100.75);
    perf.displayed(first, 101.0);
    perf.displayed(first, 102.0); // shown once
    perf.rawStage(3.25, 41);
    perf.thumbnail(1.0625, "a b.jpg", 7, "disk", 3.6, 512);
    EXPECT_EQ(lines, (std::vector<std::string>{"[perf] encode 5.0 ms latency 250.0 ms",
                                               "[perf] encode 12.3 ms latency 1000.0 ms",
                                               "[perf] raw stage gpu 3.2 ms, total 41.0 ms",
                                               "[thumb] 1.062 a b.jpg #7 disk 4 ms size 512"}));
}

TEST(Perf, SaysNothingUnasked) {
    int count = 0;
    Perf perf(false, false, [&](const std::string&) { ++count; });
    perf.displayed(perf.encoded(1, 1), 2);
    perf.rawStage(1, 2);
    perf.thumbnail(0, "a", 1, "disk", 1, 1);
    EXPECT_EQ(count, 0);
}

} // namespace
} // namespace kelvaro
