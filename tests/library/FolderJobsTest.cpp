#include "library/FolderJobs.h"

#include <condition_variable>
#include <gtest/gtest.h>

namespace kelvaro {
namespace {

// A drive that does not answer keeps its own folder waiting and no other.
TEST(FolderJobs, OneThatHangsHoldsUpNoOther) {
    std::mutex lock;
    std::condition_variable changed;
    std::vector<FolderUrl> ended;
    bool answers = false, hangs = false;
    {
        FolderJobs jobs("test", 2, [&](const FolderUrl& folder) {
            std::unique_lock guard(lock);
            if (folder == "/hung") {
                hangs = true;
                changed.notify_all();
                changed.wait(guard, [&] { return answers; });
            }
            ended.push_back(folder);
            changed.notify_all();
        });
        jobs.add("/hung");
        std::unique_lock guard(lock);
        changed.wait(guard, [&] { return hangs; });
        // One after another, so that each has to find a thread of its own accord.
        for (const std::size_t count : {1, 2, 3}) {
            guard.unlock();
            jobs.add("/folder" + std::to_string(count));
            guard.lock();
            EXPECT_TRUE(changed.wait_for(guard, std::chrono::seconds(20),
                                         [&] { return ended.size() == count; }))
                << "folder " << count << " waits behind the drive";
        }
        answers = true;
        changed.notify_all();
    }
    EXPECT_EQ(ended.back(), "/hung");
}

} // namespace
} // namespace kelvaro
