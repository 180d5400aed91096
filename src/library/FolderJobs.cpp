#include "library/FolderJobs.h"

#include <algorithm>

namespace kelvaro {

FolderJobs::FolderJobs(const std::string& label, int threads, Run run) : run_(std::move(run)) {
    for (int i = 0; i < threads; ++i)
        threads_.push_back(std::make_unique<SerialQueue>(label, SerialQueue::AtEnd::drop));
}

FolderJobs::~FolderJobs() {
    std::lock_guard guard(lock_);
    waiting_.clear();
    waits_.clear();
}

void FolderJobs::add(const FolderUrl& folder) {
    std::lock_guard guard(lock_);
    if (!waits_.insert(folder).second) return;
    waiting_.push_back(folder);
    // A folder that is being worked on gets its thread when that run has ended. Else every thread
    // looks: any of them may be waiting for a drive that does not answer.
    if (runs_.contains(folder)) return;
    for (const auto& thread : threads_)
        thread->post([this] { work(); });
}

void FolderJobs::prefer(const FolderUrl& folder) {
    std::lock_guard guard(lock_);
    preferred_ = folder;
}

void FolderJobs::drop(const FolderUrl& folder) {
    std::lock_guard guard(lock_);
    if (waits_.erase(folder)) std::erase(waiting_, folder);
}

// The next folder that waits and is not being worked on.
bool FolderJobs::take(FolderUrl& folder) {
    std::lock_guard guard(lock_);
    const auto isFree = [&](const FolderUrl& one) { return !runs_.contains(one); };
    auto found = waiting_.end();
    if (waits_.contains(preferred_) && isFree(preferred_))
        found = std::find(waiting_.begin(), waiting_.end(), preferred_);
    if (found == waiting_.end()) found = std::find_if(waiting_.begin(), waiting_.end(), isFree);
    if (found == waiting_.end()) return false;
    folder = std::move(*found);
    waiting_.erase(found);
    waits_.erase(folder);
    runs_.insert(folder);
    return true;
}

// Until nothing is left, whoever brought it; most calls find nothing any more.
void FolderJobs::work() {
    FolderUrl folder;
    while (take(folder)) {
        run_(folder);
        std::lock_guard guard(lock_);
        runs_.erase(folder);
    }
}

} // namespace kelvaro
