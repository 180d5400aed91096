// What exports cost: single photos of every format and recipe, what reading files back adds, and a
// batch. Prints a table with the aims of a quiet machine with two cores beside the figures;
// processor time is for busy ones.
//     export_figures OUT PHOTO... [--batch N] [--only single|batch] [--row TEXT] [--phases]
// --row leaves out the rows whose names lack the text, --phases tells the steps of single photos.
// 24-megapixel photos are meant, a RAW file and a JPEG file; the batch is of the first one.
#include "app/ExportServices.h"
#include "base/MainLoop.h"
#include "develop/Recipes.h"
#include "platform/PhotoKinds.h"
#include "platform/system/SystemClock.h"

#include <cstdlib>
#include <ctime>
#include <fmt/format.h>
#include <string_view>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace kelvaro;

namespace {

struct Row {
    std::string name;
    std::filesystem::path photo;
    Adjustments edit;
    ExportFormat format = ExportFormat::jpeg;
    bool verifies = true;
    int count = 1;
    const char* aim = "";
};

// How a process ended that did nothing but one row: start, memory and all.
struct Cost {
    double seconds = 0, processorSeconds = 0, peakMiB = 0;
    bool isDone = false;
};

double seconds(const timeval& time) {
    return double(time.tv_sec) + double(time.tv_usec) / 1e6;
}

// In a process of its own. Exits with 0 when all photos were exported.
[[noreturn]] void exportPhotos(const Row& row, const std::filesystem::path& out, bool tellsPhases) {
    Cancellation never;
    const SystemClock clock;
    MainLoop loop;
    Services services = makeServices(never);
    ExportServices parts(services, clock, loop);
    ExportSettings settings;
    settings.format = row.format;
    settings.destination = out.string();
    PhaseTimes times;
    Exporter& exporter = parts.exporter();
    exporter.start(std::vector<ExportJob>(std::size_t(row.count), {row.photo, row.edit}), settings,
                   {}, {row.verifies, {}, &times});
    loop.runUntil([&] { return !exporter.state()->running; }, 3600);
    for (const auto& failure : exporter.state()->failures)
        fmt::print(stderr, "{}: {} {}\n", failure.fileName, failure.message, failure.detail);
    if (tellsPhases)
        for (const auto& phase : times.phases())
            fmt::print("    {:<40}{:>8.1f} ms a photo\n", phase.name,
                       phase.milliseconds() / row.count);
    std::fflush(stdout);
    ::_exit(exporter.state()->exported == std::size_t(row.count) ? 0 : 1);
}

Cost measured(const Row& row, const std::filesystem::path& out, bool tellsPhases) {
    std::filesystem::remove_all(out);
    const SystemClock clock;
    const double begin = clock.monotonicSeconds();
    std::fflush(stdout);
    const pid_t child = ::fork();
    if (child == 0) exportPhotos(row, out, tellsPhases);
    int status = 0;
    rusage usage{};
    ::wait4(child, &status, 0, &usage);
    return {clock.monotonicSeconds() - begin, seconds(usage.ru_utime) + seconds(usage.ru_stime),
            double(usage.ru_maxrss) / 1024, WIFEXITED(status) && WEXITSTATUS(status) == 0};
}

void print(const Row& row, const Cost& cost) {
    if (!cost.isDone) {
        fmt::print("{:<44}  failed\n", row.name);
        return;
    }
    const double each = 1.0 / row.count;
    fmt::print("{:<44}{:>8.3f}{:>8.3f}{:>8.0f}   {}\n", row.name, cost.seconds * each,
               cost.processorSeconds * each, cost.peakMiB, row.aim);
    if (row.count > 1)
        fmt::print("{:<44}{:>8.0f} photos a minute, {:.0f} by processor time; {:.2f} cores busy\n",
                   "", 60 * row.count / cost.seconds, 60 * row.count * 2 / cost.processorSeconds,
                   cost.processorSeconds / cost.seconds);
}

std::vector<Row> rowsOf(const std::filesystem::path& photo) {
    const bool isRaw = photoKind(photo) == PhotoKind::raw;
    const std::string name = isRaw ? "RAW" : "bitmap";
    const char* aim = isRaw ? "0.40 s, 0.75 s, 350 MiB" : "0.35 s";
    Adjustments everything = test::everything();
    everything.blackAndWhite = 0;
    everything.cropLeft = everything.straighten = 0;
    using enum ExportFormat;
    return {
        {name + " to JPEG, unedited", photo, {}, jpeg, true, 1, ""},
        {name + " to JPEG, typical, not read back", photo, test::typical(), jpeg, false, 1, aim},
        {name + " to JPEG, typical", photo, test::typical(), jpeg, true, 1, ""},
        {name + " to JPEG, everything", photo, everything, jpeg, true, 1, ""},
        {name + " to HEIC, typical", photo, test::typical(), heic, true, 1, ""},
        {name + " to TIFF, typical", photo, test::typical(), tiff, true, 1, ""},
        {name + " to PNG, typical", photo, test::typical(), png, true, 1, ""}};
}

} // namespace

int main(int count, char** arguments) {
    std::filesystem::path out;
    std::vector<std::filesystem::path> photos;
    int batch = 50;
    std::string_view only, rowText;
    bool tellsPhases = false;
    for (int i = 1; i < count; ++i) {
        if (std::string_view(arguments[i]) == "--batch" && i + 1 < count)
            batch = std::atoi(arguments[++i]);
        else if (std::string_view(arguments[i]) == "--only" && i + 1 < count)
            only = arguments[++i];
        else if (std::string_view(arguments[i]) == "--row" && i + 1 < count)
            rowText = arguments[++i];
        else if (std::string_view(arguments[i]) == "--phases")
            tellsPhases = true;
        else if (out.empty())
            out = std::filesystem::path(arguments[i]) / "export-figures";
        else
            photos.emplace_back(arguments[i]);
    }
    if (photos.empty()) {
        fmt::print(stderr,
                   "export_figures OUT PHOTO... [--batch N] [--only single|batch] [--row TEXT] "
                   "[--phases]\n");
        return 2;
    }
    fmt::print("{:<44}{:>8}{:>8}{:>8}   {}\n", "whole process, verified unless told", "s", "cpu s",
               "MiB", "aim");
    for (const auto& photo : photos)
        for (const Row& row : only == "batch" ? std::vector<Row>() : rowsOf(photo))
            if (row.name.find(rowText) != std::string::npos)
                print(row, measured(row, out, tellsPhases));
    for (const bool verifies : {true, false}) {
        const Row row{fmt::format("batch of {}{}", batch, verifies ? "" : ", not read back"),
                      photos.front(),
                      test::typical(),
                      ExportFormat::jpeg,
                      verifies,
                      batch,
                      "180 photos a minute"};
        if (batch > 0 && only != "single") print(row, measured(row, out, true));
    }
    std::filesystem::remove_all(out);
    return 0;
}
