#include "library/ViewQueue.h"

#include <algorithm>
#include <utility>

namespace kelvaro {
namespace {

constexpr double shortestPause = 0.15; // seconds between views while changes stream in
constexpr double largestShare = 0.2;   // of the queue's time that goes into them
constexpr double optionsPause = 1;     // seconds between filter options meanwhile

// None when all of the selection is in the view.
std::optional<PhotoSet> keptOf(const PhotoSet& selection, const LibraryView& view) {
    if (selection.empty()) return std::nullopt;
    PhotoSet::Urls kept;
    for (const Photo* photo : view.photos) {
        if (selection.contains(photo->url)) kept.insert(photo->url);
    }
    if (kept.size() == selection.size()) return std::nullopt;
    return PhotoSet(std::move(kept));
}

} // namespace

ViewQueue::ViewQueue(const TextRules& rules, const LocalCalendar& calendar, const Clock& clock,
                     MainThread& main, std::function<void(ViewAnswer)> answered)
    : clock_(clock), poster_(main), answered_(std::move(answered)), table_(rules, calendar) {}

ViewQueue::~ViewQueue() {
    queue_.waitUntilIdle();
}

void ViewQueue::change(Source source, std::function<void(PhotoTable&)> job) {
    const bool isUser = source == Source::user;
    ++changesWaiting_;
    userChangesWaiting_ += isUser;
    ++running_;
    queue_.post([this, source, isUser, job = std::move(job)] {
        job(table_);
        tableChanged_ = true;
        --changesWaiting_;
        userChangesWaiting_ -= isUser;
        answerIfDue(source);
        poster_.post([this] { --running_; });
    });
}

void ViewQueue::read(std::function<void(const PhotoTable&)> job) {
    ++running_;
    queue_.post([this, job = std::move(job)] {
        job(table_);
        poster_.post([this] { --running_; });
    });
}

std::uint64_t ViewQueue::show(LibraryQuery request, PhotoSet selection) {
    Question old;
    const std::uint64_t number = question_.with([&](Question& question) {
        const std::uint64_t next = question.number + 1;
        old = std::exchange(question, {std::move(request), std::move(selection), next});
        return next;
    });
    ++running_;
    // What was asked before ends on the queue: it may have been large.
    queue_.post([this, number, old = std::make_shared<const Question>(std::move(old))] {
        // Else a later question was answered already.
        if (answeredNumber_ < number) answer();
        poster_.post([this] { --running_; });
    });
    return number;
}

void ViewQueue::answerIfDue(Source source) {
    const bool isLast = changesWaiting_ == 0 && !isStreaming_;
    // Favourites of photos in many folders come as many changes, and are shown once.
    const bool isAwaited = source == Source::user && userChangesWaiting_ == 0;
    if (isAwaited || isLast || clock_.monotonicSeconds() >= nextDue_)
        answer();
    else
        answerLater();
}

// However long the stream then pauses: a drive may take minutes to answer.
void ViewQueue::answerLater() {
    if (isLater_) return;
    isLater_ = true;
    const double pause = std::max(shortestPause, nextDue_ - clock_.monotonicSeconds());
    queue_.postLater(std::chrono::milliseconds(static_cast<int>(pause * 1000)), [this] {
        isLater_ = false;
        if (tableChanged_) answer();
    });
}

void ViewQueue::answer() {
    const double begun = clock_.monotonicSeconds();
    const Question question = question_.copy();
    if (question.number == 0) return; // nobody has asked yet
    ViewAnswer answer{.question = question.number};
    answer.view = std::make_shared<const LibraryView>(table_.query(question.request));
    const bool isElsewhere =
        !(answeredScope_ == question.request.scope) || answeredOnly_ != question.request.only;
    optionsChanged_ = optionsChanged_ || tableChanged_;
    if (isElsewhere || (optionsChanged_ && (!isStreaming_ || begun >= nextOptions_))) {
        answer.options = table_.filterOptions(question.request);
        optionsChanged_ = false;
        nextOptions_ = begun + optionsPause;
    }
    answer.kept = keptOf(question.selection, *answer.view);
    tableChanged_ = false;
    answeredNumber_ = question.number;
    answeredScope_ = question.request.scope;
    answeredOnly_ = question.request.only;
    const double ended = clock_.monotonicSeconds();
    nextDue_ = ended + std::max(shortestPause, (ended - begun) / largestShare);
    poster_.post([this, answer = std::move(answer)]() mutable { answered_(std::move(answer)); });
}

} // namespace kelvaro
