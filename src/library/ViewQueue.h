// Searching, sorting and grouping away from the main thread: the table of all photos on a queue of
// its own, and the latest view of it. Called on the main thread; views come back there as immutable
// blocks.
#pragma once

#include "base/Clock.h"
#include "base/Locked.h"
#include "base/MainPoster.h"
#include "base/SerialQueue.h"
#include "library/PhotoSet.h"
#include "library/PhotoTable.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelvaro {

struct ViewAnswer {
    std::shared_ptr<const LibraryView> view;
    std::optional<FilterOptions> options; // where they may have changed
    // Of the selection that the question came with, those that are still shown; none when all are.
    std::optional<PhotoSet> kept;
    std::uint64_t question = 0; // the number of the question
};

class ViewQueue {
public:
    // All outlive the queue; `answered` is called on the main thread.
    ViewQueue(const TextRules& rules, const LocalCalendar& calendar, const Clock& clock,
              MainThread& main, std::function<void(ViewAnswer)> answered);
    ~ViewQueue();

    // Changes the table on the queue's thread, then shows it anew; while results stream in, only
    // now and then.
    enum class Source { user, stream };
    void change(Source source, std::function<void(PhotoTable&)> job);
    // Whether more is about to come from scans. Ask a question at the end of a stream.
    void setStreaming(bool streaming) { isStreaming_ = streaming; }
    bool isStreaming() const { return isStreaming_; }
    // Asks another question; returns its number.
    std::uint64_t show(LibraryQuery request, PhotoSet selection);
    // Reads the table on the queue's thread, as it is after all changes so far.
    void read(std::function<void(const PhotoTable&)> job);
    // Runs after a moment, on the queue's thread; dropped when the queue ends before.
    void postLater(std::chrono::milliseconds delay, std::function<void()> job) {
        queue_.postLater(delay, std::move(job));
    }
    // Lets go of something large elsewhere than on the main thread.
    template<class T>
    void dispose(T thing) {
        queue_.post([held = std::make_shared<T>(std::move(thing))]() mutable { held.reset(); });
    }
    bool isIdle() const { return running_ == 0; }

private:
    struct Question {
        LibraryQuery request;
        PhotoSet selection;
        std::uint64_t number = 0;
    };

    void answer();
    void answerIfDue(Source source);
    void answerLater();

    const Clock& clock_;
    const MainPoster poster_;
    std::function<void(ViewAnswer)> answered_;
    PhotoTable table_; // the fields up to nextDue_: on the queue alone
    bool tableChanged_ = true, optionsChanged_ = true; // since they were told
    bool isLater_ = false;                             // an answer is on its way already
    std::uint64_t answeredNumber_ = 0;
    Scope answeredScope_;
    SharedRestriction answeredOnly_;
    double nextDue_ = 0, nextOptions_ = 0; // monotonic seconds
    Locked<Question> question_;
    std::atomic<int> changesWaiting_{0}, userChangesWaiting_{0}, running_{0};
    std::atomic<bool> isStreaming_{false};
    SerialQueue queue_{"kelvaro.library"}; // last: its jobs use all of the above
};

} // namespace kelvaro
