#include "editor/SessionJournal.h"

#include "base/Require.h"
#include "editor/EditFingerprint.h"
#include "editor/JournalCoding.h"

#include <algorithm>
#include <iterator>

namespace kelvaro {
namespace {

std::string encodedEntries(const std::vector<SessionJournal::Entry>& entries) {
    std::string text;
    for (const SessionJournal::Entry& entry : entries) {
        JournalRecord record;
        record.photo = entry.photo;
        record.time = entry.time;
        if (entry.edit) record.edit = entry.edit->value();
        for (const SharedEdit& known : entry.known)
            record.known.push_back(editFingerprint(known.value()));
        text += encodedRecord(record);
    }
    return text;
}

} // namespace

SessionJournal::SessionJournal(FileSystem& files, AppendFiles& appendFiles, MainThread& main,
                               std::filesystem::path file, double intervalSeconds)
    : main_(main),
      interval_(std::chrono::duration_cast<Steady::duration>(
          std::chrono::duration<double>(intervalSeconds))),
      self_(std::make_shared<SessionJournal*>(this)),
      nextWrite_(Steady::now()),
      file_(files, appendFiles, std::move(file)),
      worker_([this] { work(); }) {}

SessionJournal::~SessionJournal() {
    *self_ = nullptr;
    {
        std::lock_guard guard(lock_);
        ending_ = true;
    }
    wake_.notify_all();
    worker_.join();
}

void SessionJournal::setSource(Source source, Failed failed) {
    source_ = std::move(source);
    failed_ = std::move(failed);
}

void SessionJournal::changed() {
    {
        std::lock_guard guard(lock_);
        if (std::exchange(wanted_, true)) return;
    }
    wake_.notify_all();
}

void SessionJournal::changedNow() {
    collect();
}

void SessionJournal::remove() {
    {
        std::lock_guard guard(lock_);
        wanted_ = false;
        pending_.reset();
        remove_ = true;
    }
    wake_.notify_all();
}

void SessionJournal::flush() {
    KELVARO_REQUIRE(main_.isCurrent());
    collect();
    std::unique_lock guard(lock_);
    idle_.wait(guard, [this] { return !pending_ && !remove_ && !busy_; });
    guard.unlock();
    file_.waitUntilFlushed();
}

// Main thread. What the worker has not taken yet stays, but for photos that have changed again.
void SessionJournal::collect() {
    bool all = false;
    {
        std::lock_guard guard(lock_);
        wanted_ = asked_ = false;
        all = needsAll_;
    }
    std::vector<Entry> entries = source_ ? source_(all) : std::vector<Entry>();
    {
        std::lock_guard guard(lock_);
        if (pending_ && !all) {
            auto& waiting = pending_->first;
            std::erase_if(waiting, [&](const Entry& entry) { // what is newer says it all
                return std::ranges::count(entries, entry.photo, &Entry::photo) > 0;
            });
            waiting.insert(waiting.end(), std::make_move_iterator(entries.begin()),
                           std::make_move_iterator(entries.end()));
        } else if (!entries.empty() || all) {
            pending_.emplace(std::move(entries), all);
        }
        if (all) needsAll_ = false;
    }
    wake_.notify_all();
}

void SessionJournal::askMain() {
    main_.post([self = std::weak_ptr(self_)] {
        const auto alive = self.lock();
        if (alive && *alive) (*alive)->collect();
    });
}

void SessionJournal::work() {
    std::unique_lock guard(lock_);
    while (true) {
        const auto urgent = [this] { return pending_ || remove_ || ending_; };
        wake_.wait(guard, [&] { return urgent() || (wanted_ && !asked_); });
        if (!urgent() && wake_.wait_until(guard, nextWrite_, urgent) == false) {
            if (wanted_ && !asked_) {
                asked_ = true;
                askMain();
            }
            continue;
        }
        if (std::exchange(remove_, false)) {
            busy_ = true;
            guard.unlock();
            const auto removed = file_.remove();
            guard.lock();
            finish(removed, true);
        } else if (pending_) {
            const auto [entries, all] = *std::exchange(pending_, std::nullopt);
            busy_ = true;
            guard.unlock();
            write(entries, all);
            guard.lock();
        } else if (ending_) {
            return;
        }
        busy_ = false;
        nextWrite_ = Steady::now() + interval_;
        idle_.notify_all();
    }
}

// The lock is not held while encoding and writing.
void SessionJournal::write(const std::vector<Entry>& entries, bool all) {
    const std::string records = encodedEntries(entries);
    const auto result = all ? file_.replace(records) : file_.append(records);
    const bool large = file_.isLarge();
    std::lock_guard guard(lock_);
    finish(result, false);
    if (large) needsAll_ = true; // with the next change
}

// The lock is held.
void SessionJournal::finish(const Result<void>& result, bool removed) {
    if (result) {
        reported_ = false;
        return;
    }
    if (!removed) needsAll_ = wanted_ = true; // tried again, whole, after the interval
    if (std::exchange(reported_, true)) return;
    main_.post([self = std::weak_ptr(self_), failure = result.error()] {
        const auto alive = self.lock();
        if (alive && *alive && (*alive)->failed_) (*alive)->failed_(failure);
    });
}

} // namespace kelvaro
