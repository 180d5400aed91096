// What we ask of the system to follow changes inside folders. Thread-safe.
#pragma once

#include <filesystem>
#include <functional>

namespace kelvaro {

class FolderWatcher {
public:
    virtual ~FolderWatcher() = default;

    // Called on a thread of the watcher's with each folder in which something was added, removed,
    // renamed or written, after things have become quiet: a burst is one call. Also with a folder
    // that has itself gone away. Replaces the function before; once the call returns, that one
    // will not be called again, so not from the function itself.
    using Changed = std::function<void(const std::filesystem::path& folder)>;
    virtual void onChange(Changed changed) = 0;

    // Begins to watch the names and files directly in a folder; false where the system can't (the
    // folder isn't there, its disk can't tell, or too many are watched). Once is enough.
    virtual bool watch(const std::filesystem::path& folder) = 0;
    virtual void unwatch(const std::filesystem::path& folder) = 0;
};

} // namespace kelvaro
