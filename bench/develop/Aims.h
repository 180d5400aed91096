// The figures that the pipeline's benches are held against, and the table that compares them with
// what was measured. Times are wall-clock milliseconds on two cores; the aims were set on AVX-512
// and are half of that where only AVX2 runs.
#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace kelvaro::bench {

struct Aim {
    double value = 0; // MP/s, or ms
    bool isRate = false;
};

// A row of the table: one benchmark with 1 and 2 threads.
struct Row {
    double milliseconds[3] = {}; // by number of threads
    double megapixelsPerSecond[3] = {};
    double peakMiB = 0;
    double besideMiB = 0; // beyond source and output
};

// Prints each result as it comes, as the library does, and the table at the end.
class TableReporter : public benchmark::ConsoleReporter {
public:
    explicit TableReporter(std::map<std::string, Aim> aims) : aims_(std::move(aims)) {}

    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

private:
    Row& rowOf(const std::string& name);

    std::map<std::string, Aim> aims_;
    std::vector<std::pair<std::string, Row>> rows_; // in the order of measuring
};

} // namespace kelvaro::bench
