#include "export/Exporter.h"

#include "export/ExportRun.h"

namespace kelvaro {

Exporter::Exporter(const ExportParts& parts, MainThread& mainThread)
    : parts_(parts), mainThread_(mainThread) {}

Exporter::~Exporter() = default;

bool Exporter::start(std::vector<ExportJob> jobs, const ExportSettings& settings,
                     ProtectedPaths protectedPaths, Options options) {
    KELVARO_REQUIRE(mainThread_.isCurrent());
    if (state_->running) return false;
    run_.reset(); // the last one has ended
    State begun;
    begun.running = true;
    begun.total = jobs.size();
    begun.finishedFolder = state_->finishedFolder;
    begun.startedAt = parts_.clock.wallSeconds();
    begun.elapsed = state_->elapsed;
    state_.set(begun);
    notice_.update({});
    run_ = std::make_unique<Run>(*this, std::move(jobs), settings, std::move(protectedPaths),
                                 std::move(options));
    return true;
}

bool Exporter::start(std::vector<ExportJob> jobs, const ExportSettings& settings,
                     ProtectedPaths protectedPaths) {
    return start(std::move(jobs), settings, std::move(protectedPaths), Options());
}

void Exporter::stop(std::function<void()> completion) {
    KELVARO_REQUIRE(mainThread_.isCurrent());
    if (!state_->running) {
        if (completion) completion();
        return;
    }
    if (completion) stopCompletions_.push_back(std::move(completion));
    run_->cancel();
    if (!state_->wasCancelled) state_.edit([](State& state) { state.wasCancelled = true; });
}

void Exporter::photoEnded(const PhotoOutcome& outcome) {
    state_.edit([&](State& state) {
        ++state.done;
        if (outcome.file) ++state.exported;
        if (outcome.failure) state.failures.push_back(*outcome.failure);
    });
}

void Exporter::ended(std::optional<std::string> notice, double elapsed) {
    state_.edit([&](State& state) {
        state.running = false;
        state.elapsed = elapsed;
        if (!notice) state.finishedFolder = run_->folder();
    });
    if (notice) notice_.set({std::move(*notice), true});
    for (const auto& completion : std::exchange(stopCompletions_, {}))
        completion();
}

DonePanelTexts donePanelTexts(const Exporter::State& state) {
    DonePanelTexts texts;
    texts.title = state.wasCancelled ? exportText::stopped(state.exported, state.total)
                                     : exportText::exported(state.exported);
    texts.failures = exportText::failed(state.failures.size());
    return texts;
}

} // namespace kelvaro
