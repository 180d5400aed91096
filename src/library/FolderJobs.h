// Work on folders, by a few threads, one job per folder at a time: the preferred folder first, the
// others in the order in which they were asked for. Asking again for a folder that still waits
// changes nothing; for one that is being worked on it means one more run. Thread-safe.
#pragma once

#include "base/SerialQueue.h"
#include "library/Photo.h"

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace kelvaro {

class FolderJobs {
public:
    using Run = std::function<void(const FolderUrl&)>;

    // `run` is called on the threads and must not throw.
    FolderJobs(const std::string& label, int threads, Run run);
    // Drops what waits and lets what runs end.
    ~FolderJobs();

    void add(const FolderUrl& folder);
    void prefer(const FolderUrl& folder); // this one next, whenever it waits
    void drop(const FolderUrl& folder);   // where it waits

private:
    void work();
    bool take(FolderUrl& folder);

    Run run_;
    std::mutex lock_; // guards the fields up to preferred_
    std::deque<FolderUrl> waiting_;
    std::set<FolderUrl> waits_, runs_;
    FolderUrl preferred_;
    std::vector<std::unique_ptr<SerialQueue>> threads_; // last: they use all of the above
};

} // namespace kelvaro
