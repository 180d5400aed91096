// Watches folders through inotify. A thread of its own collects events and tells of a folder once
// it has been quiet for a moment, or has not become quiet for some time.
#pragma once

#include "platform/FolderWatcher.h"
#include "platform/system/Descriptor.h"

#include <chrono>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>

namespace kelvaro {

class InotifyWatcher final : public FolderWatcher {
public:
    InotifyWatcher();
    ~InotifyWatcher() override;

    void onChange(Changed changed) override;
    bool watch(const std::filesystem::path& folder) override;
    void unwatch(const std::filesystem::path& folder) override;

private:
    using Moment = std::chrono::steady_clock::time_point;
    struct Burst {
        Moment first, last;
    };

    void run();
    void readEvents();
    void note(const std::string& folder);
    void noteAll();
    int tellDue(); // returns the milliseconds until the next one is due; -1: none

    Descriptor events_, wake_, woken_;
    std::mutex lock_; // guards the two maps; one folder may be watched under several paths
    std::map<int, std::set<std::string>> folders_;
    std::map<std::string, int> numbers_;
    std::map<std::string, Burst> bursts_; // the thread's own
    std::mutex calling_;                  // held while `changed_` is set or called
    Changed changed_;
    std::thread thread_; // last: it uses all of the above
};

} // namespace kelvaro
