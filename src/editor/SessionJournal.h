// Keeps what the user did and no sidecar holds yet in a small file of this session, at most a
// second behind, so that a crash or a power cut costs no more. Encoding and writing happen on a
// thread of its own, flushing on another; everything here is called on the main thread, which is
// never kept waiting but by `flush`.
#pragma once

#include "base/MainThread.h"
#include "editor/JournalFile.h"
#include "editor/SharedEdit.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace kelvaro {

class SessionJournal {
public:
    static constexpr double defaultIntervalSeconds = 0.25; // at least, between two writes

    // What is to be kept of one photo.
    struct Entry {
        std::filesystem::path photo;
        std::optional<SharedEdit> edit; // none: it stands in the sidecar by now
        std::vector<SharedEdit> known;  // what the sidecar holds, or is being given
        double time = 0;                // seconds since 1970-01-01 00:00 UTC
    };
    // Gives what changed since it was last asked; with `all` everything that is unsaved.
    using Source = std::function<std::vector<Entry>(bool all)>;
    using Failed = std::function<void(const Failure&)>;

    SessionJournal(FileSystem& files, AppendFiles& appendFiles, MainThread& main,
                   std::filesystem::path file, double intervalSeconds = defaultIntervalSeconds);
    // Finishes what it was given. The file stays where something is unsaved.
    ~SessionJournal();
    SessionJournal(const SessionJournal&) = delete;
    SessionJournal& operator=(const SessionJournal&) = delete;

    // `failed` hears, once until a write succeeds again, that nothing can be kept.
    void setSource(Source source, Failed failed);
    // There is something new; the source is asked for it within the interval.
    void changed();
    // The same, at once: a change is finished, and its sidecar is about to be written.
    void changedNow();
    // The session ends and all stands in the sidecars: the file goes.
    void remove();
    // Asks the source now and waits until it is on the disk.
    void flush();

private:
    using Steady = std::chrono::steady_clock;

    void collect(); // main thread
    void work();
    void askMain();
    void write(const std::vector<Entry>& entries, bool all);
    void finish(const Result<void>& result, bool removed);

    MainThread& main_;
    const Steady::duration interval_;
    Source source_; // main thread only, like the next
    Failed failed_;
    std::shared_ptr<SessionJournal*> self_; // emptied at the end, for jobs still posted then

    std::mutex lock_; // guards the fields up to ending_
    std::condition_variable wake_, idle_;
    bool wanted_ = false, asked_ = false, busy_ = false, remove_ = false, ending_ = false;
    bool needsAll_ = false; // the file must be written anew
    std::optional<std::pair<std::vector<Entry>, bool>> pending_;
    Steady::time_point nextWrite_;

    JournalFile file_; // the worker's, like the next
    bool reported_ = false;
    std::thread worker_; // last: it uses all of the above
};

} // namespace kelvaro
