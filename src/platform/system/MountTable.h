// The drives of a Linux system, as /proc/self/mountinfo lists them. A thread of its own waits for
// the list to change.
#pragma once

#include "base/Locked.h"
#include "platform/DriveTable.h"
#include "platform/system/Descriptor.h"

#include <string_view>
#include <thread>
#include <vector>

namespace kelvaro {

class MountTable final : public DriveTable {
public:
    MountTable();
    ~MountTable() override;

    std::optional<Drive> driveOf(const std::filesystem::path& path) override;
    void onChange(std::function<void()> changed) override;

private:
    void watch();
    void read();

    Descriptor table_, wake_, woken_;
    Locked<std::vector<Drive>> drives_; // in the order of mounting
    std::mutex calling_;                // held while `changed_` is set or called
    std::function<void()> changed_;
    std::thread thread_; // last: it uses all of the above
};

// The mounts in a text of that format; lines that are none are passed over. A mount over another
// one at the same place comes later.
std::vector<Drive> drivesIn(std::string_view mountinfo);
// The one that a path lies on: the longest mount point that the path begins with, the last of
// equals.
std::optional<Drive> driveHolding(const std::vector<Drive>& drives, const std::string& path);

} // namespace kelvaro
