#include "app/ExportServices.h"
#include "base/MainLoop.h"
#include "cli/Commands.h"
#include "cli/ExportPhotos.h"
#include "cli/ExportProgress.h"
#include "platform/system/SystemClock.h"

#include <fmt/format.h>

namespace kelvaro {

namespace {

constexpr double kLookSeconds = 0.1; // how often the line is renewed and Ctrl-C is looked for

ExportSettings settingsOf(const ExportOrder& request) {
    ExportSettings settings;
    settings.format = request.format;
    settings.quality = request.quality;
    settings.resize = request.longEdge.has_value();
    settings.longEdge = request.longEdge.value_or(settings.longEdge);
    settings.border = request.borderPercent.has_value();
    settings.borderPercent = request.borderPercent.value_or(settings.borderPercent);
    settings.dateStamp = request.stamp;
    settings.includeMetadata = !request.noMetadata;
    settings.destination = request.folder.string();
    settings.colorSpace = request.space;
    settings.replaceExisting = request.replace;
    return settings;
}

class Exporting {
public:
    Exporting(const ExportOrder& request, Services& services)
        : request_(request), services_(services), parts_(services, clock_, loop_) {}

    ExitCode run() {
        collect();
        for (const Failure& failure : refused_)
            report(failure);
        Exporter& exporter = parts_.exporter();
        Exporter::Options options{!request_.noVerify, [this](const auto& o) { photoEnded(o); },
                                  request_.timings ? &times_ : nullptr};
        const double begun = clock_.monotonicSeconds();
        exporter.start(jobs_, settingsOf(request_), std::move(protected_), std::move(options));
        bool isStopping = false;
        while (!loop_.runUntil([&] { return !exporter.state()->running; }, kLookSeconds)) {
            if (services_.cancellation.isCancelled() && !std::exchange(isStopping, true))
                exporter.stop();
            line_.show(progressLine(*exporter.state(), clock_.monotonicSeconds() - begun));
        }
        line_.clear();
        return conclude(*exporter.state(), *exporter.notice());
    }

private:
    void collect() {
        auto found = photosAt(request_.paths, *services_.files);
        refused_ = std::move(found.failures);
        if (request_.replace) protected_ = protectedPhotos(found.photos, *services_.files);
        for (auto& photo : shardOf(found.photos, request_.shard)) {
            auto edit = storedEdit(photo, services_);
            if (edit)
                jobs_.push_back({std::move(photo), std::move(edit->adjustments)});
            else
                refused_.push_back(edit.error());
        }
    }

    void photoEnded(const Exporter::PhotoOutcome& outcome) {
        const auto& photo = jobs_[outcome.index].photo;
        if (outcome.failure) {
            line_.clear();
            const auto& [name, message, detail] = *outcome.failure;
            report({FailureKind::internal,
                    fmt::format("“{}”: {}{}{}", name, message, detail.empty() ? "" : " ", detail)});
        }
        if (!request_.json) return;
        line_.clear();
        fmt::print("{}\n", outcomeJson(photo, outcome));
        std::fflush(stdout);
    }

    ExitCode conclude(const Exporter::State& state, const Exporter::Notice& notice) const {
        if (notice.shown) {
            report({FailureKind::unwritable, notice.text});
            return ExitCode::someFailed;
        }
        const auto texts = donePanelTexts(state);
        if (!request_.json)
            fmt::print("{}{}{}\n", texts.title, texts.failures.empty() ? "" : ", ", texts.failures);
        for (const PhaseTimes::Phase& phase : times_.phases())
            fmt::print(stderr, "{:<10}{:>9.1f} ms\n", phase.name, phase.milliseconds());
        if (state.wasCancelled) return ExitCode::stopped;
        const bool allDone = state.failures.empty() && refused_.empty();
        return allDone ? ExitCode::done : ExitCode::someFailed;
    }

    const ExportOrder& request_;
    Services& services_;
    SystemClock clock_;
    MainLoop loop_;
    PhaseTimes times_;
    ProgressLine line_;
    std::vector<ExportJob> jobs_;
    std::vector<Failure> refused_; // of what could not even begin
    ProtectedPaths protected_;
    ExportServices parts_; // last: it uses the rest
};

} // namespace

ExitCode runExport(const ExportOrder& request, Services& services) {
    return Exporting(request, services).run();
}

} // namespace kelvaro
