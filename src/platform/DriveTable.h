// What we ask of the system about drives that come and go. Thread-safe.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace kelvaro {

// One drive (or share) that is part of the tree of folders.
struct Drive {
    std::filesystem::path mountPoint;
    std::string device; // the system's name of what is mounted
    bool operator==(const Drive&) const = default;
};

class DriveTable {
public:
    virtual ~DriveTable() = default;

    // The drive that a path lies on, there or not; none when the system doesn't tell. Never waits
    // for a drive.
    virtual std::optional<Drive> driveOf(const std::filesystem::path& path) = 0;
    // Called on a thread of the table's after drives have come or gone. Replaces the function
    // before; once the call returns, that one will not be called again, so not from the function
    // itself.
    virtual void onChange(std::function<void()> changed) = 0;
};

} // namespace kelvaro
