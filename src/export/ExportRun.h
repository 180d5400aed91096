// One run of the exporter: a thread that names the photos in their order and waits for their
// admission, and two that export them. Made and ended on the main thread.
#pragma once

#include "base/SerialQueue.h"
#include "export/Exporter.h"

#include <array>
#include <condition_variable>

namespace kelvaro {

class Exporter::Run {
public:
    Run(Exporter& owner, std::vector<ExportJob> jobs, const ExportSettings& settings,
        ProtectedPaths protectedPaths, Options options);
    ~Run() { cancel(); }

    void cancel() { cancellation_.cancel(); }
    std::filesystem::path folder() const { return settings_.destination; }

private:
    // Photos in flight at once. The gate never admits more.
    static constexpr std::size_t workerCount = 2;

    void coordinate();
    Result<void> openFolder();
    void exportInTurn(ExportNames& names);
    bool beginWhenAdmitted(std::size_t index, std::size_t worker, ExportNames& names);
    std::optional<std::size_t> freeWorker();
    void setBusy(std::size_t worker, bool busy);
    void begin(std::size_t index, std::size_t worker, RenderWork::Admission admission,
               ExportNames::Target target, PhotoProperties properties);
    PhotoOutcome exported(std::size_t index, const ExportNames::Target& target,
                          const PhotoProperties& properties) const;
    void report(PhotoOutcome outcome);
    void postToOwner(std::function<void(Exporter&)> job);

    Exporter& owner_;
    const std::vector<ExportJob> jobs_;
    const ExportSettings settings_;
    const ProtectedPaths protected_;
    const Options options_;
    const double begun_; // monotonic seconds
    Cancellation cancellation_;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true); // looked at on the main thread

    std::mutex lock_; // guards busy_
    std::condition_variable freed_;
    std::array<bool, workerCount> busy_{};

    std::array<SerialQueue, workerCount> workers_{SerialQueue("kelvaro.export.1"),
                                                  SerialQueue("kelvaro.export.2")};
    SerialQueue coordinator_{"kelvaro.export"}; // last: it uses all of the above
};

} // namespace kelvaro
