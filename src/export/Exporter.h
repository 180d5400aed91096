// Runs batch exports in the background and tells how they go. Everything observable lives on the
// main thread, as do all calls. The decoding of one photo overlaps the developing and encoding of
// the one before, as far as the gate of background renders admits it.
#pragma once

#include "base/MainThread.h"
#include "base/Published.h"
#include "export/PhotoExport.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace kelvaro {

// A photo that could not be exported.
struct ExportFailure {
    std::string fileName;
    std::string message; // one of the texts of ExportError
    std::string detail;  // what went wrong in particular; may be empty
    bool operator==(const ExportFailure&) const = default;
};

class Exporter {
public:
    struct State {
        bool running = false;
        std::size_t done = 0; // written, failed or skipped
        std::size_t exported = 0;
        std::size_t total = 0;
        std::vector<ExportFailure> failures;
        bool wasCancelled = false;
        std::optional<std::filesystem::path> finishedFolder; // of the last run that ended
        double startedAt = 0;                                // seconds since 1970
        double elapsed = 0;                                  // seconds, of the last run

        bool operator==(const State&) const = default;
    };

    // A short message about the run as a whole.
    struct Notice {
        std::string text;
        bool shown = false;
        bool operator==(const Notice&) const = default;
    };

    // How one photo ended; neither a file nor a failure: stopped before its end.
    struct PhotoOutcome {
        std::size_t index = 0; // among the jobs
        std::optional<ExportedFile> file;
        std::optional<ExportFailure> failure;
        double seconds = 0;
    };

    struct Options {
        bool verifies = true;
        std::function<void(const PhotoOutcome&)> onPhoto = {}; // on the main thread, as they end
        PhaseTimes* times = nullptr;
    };

    Exporter(const ExportParts& parts, MainThread& mainThread);
    // Stops a run and waits for the photos in progress.
    ~Exporter();
    Exporter(const Exporter&) = delete;
    Exporter& operator=(const Exporter&) = delete;

    const Published<State>& state() const { return state_; }
    const Published<Notice>& notice() const { return notice_; }

    // Begins a run and returns at once; false, and nothing begins, while another one is going on.
    bool start(std::vector<ExportJob> jobs, const ExportSettings& settings,
               ProtectedPaths protectedPaths, Options options);
    bool start(std::vector<ExportJob> jobs, const ExportSettings& settings,
               ProtectedPaths protectedPaths);
    // Photos that have not begun are skipped, those in progress stop at their next step. Calls
    // `completion` when that has taken effect; at once when nothing runs.
    void stop(std::function<void()> completion = {});

private:
    class Run;
    void photoEnded(const PhotoOutcome& outcome);
    void ended(std::optional<std::string> notice, double elapsed);

    const ExportParts parts_;
    MainThread& mainThread_;
    Published<State> state_;
    Published<Notice> notice_;
    std::vector<std::function<void()>> stopCompletions_;
    std::unique_ptr<Run> run_;
};

// What the panel says at the end of a run: "12 photos exported", "2 failed" or "Stopped after …".
struct DonePanelTexts {
    std::string title, failures;
};
DonePanelTexts donePanelTexts(const Exporter::State& state);

} // namespace kelvaro
