#include "bench/develop/Aims.h"

#include <hwy/highway.h>

#include <cstdio>

namespace kelvaro::bench {

namespace {

double counter(const benchmark::BenchmarkReporter::Run& run, const char* name) {
    const auto found = run.counters.find(name);
    return found == run.counters.end() ? 0 : found->second.value;
}

// The width of the machine's vectors against the ones that the aims were set with.
double shareOfAim() {
    return (hwy::SupportedTargets() & (HWY_AVX3 | HWY_AVX3_DL)) != 0 ? 1 : 0.5;
}

std::string number(double value, int digits) {
    if (!(value > 0)) return "";
    char text[32];
    std::snprintf(text, sizeof text, "%.*f", value < 10 ? digits + 1 : digits, value);
    return text;
}

std::string aimText(const Aim& aim) {
    if (!(aim.value > 0)) return "";
    return aim.isRate ? number(aim.value * shareOfAim(), 0) + " MP/s"
                      : number(aim.value / shareOfAim(), 0) + " ms";
}

// What was reached, 1 and above being as good as the aim.
std::string reached(const Aim& aim, const Row& row) {
    if (!(aim.value > 0) || !(row.milliseconds[2] > 0)) return "";
    const double share = aim.isRate ? row.megapixelsPerSecond[2] / (aim.value * shareOfAim())
                                    : aim.value / shareOfAim() / row.milliseconds[2];
    char text[16];
    std::snprintf(text, sizeof text, "%.2f", share);
    return text;
}

} // namespace

Row& TableReporter::rowOf(const std::string& name) {
    for (auto& [known, row] : rows_)
        if (known == name) return row;
    return rows_.emplace_back(name, Row{}).second;
}

void TableReporter::ReportRuns(const std::vector<Run>& runs) {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
        if (run.error_occurred) continue;
        Row& row = rowOf(run.run_name.function_name);
        const int threads = run.run_name.args == "2" ? 2 : 1;
        row.milliseconds[threads] = run.GetAdjustedRealTime();
        row.megapixelsPerSecond[threads] = counter(run, "MP/s");
        row.peakMiB = counter(run, "peak MiB");
        row.besideMiB = counter(run, "beside MiB");
    }
}

void TableReporter::Finalize() {
    std::printf("\nAims for %s. Reached: 1 and above is as good as the aim.\n",
                shareOfAim() == 1 ? "AVX-512" : "AVX2, half of those for AVX-512");
    std::printf("%-28s %9s %9s %6s %8s %10s %8s %9s %10s\n", "", "1 thread", "2 threads", "gain",
                "MP/s", "aim", "reached", "peak MiB", "beside MiB");
    for (const auto& [name, row] : rows_) {
        const auto found = aims_.find(name);
        const Aim aim = found == aims_.end() ? Aim{} : found->second;
        const double one = row.milliseconds[1], two = row.milliseconds[2];
        std::printf("%-28s %9s %9s %6s %8s %10s %8s %9s %10s\n", name.c_str(),
                    number(one, 0).c_str(), number(two, 0).c_str(),
                    two > 0 ? number(one / two, 1).c_str() : "",
                    number(row.megapixelsPerSecond[two > 0 ? 2 : 1], 0).c_str(),
                    aimText(aim).c_str(), reached(aim, row).c_str(), number(row.peakMiB, 0).c_str(),
                    number(row.besideMiB, 0).c_str());
    }
}

} // namespace kelvaro::bench
