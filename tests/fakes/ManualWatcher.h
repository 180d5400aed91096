// A folder watcher and a drive table that tell what a test tells them to.
#pragma once

#include "platform/DriveTable.h"
#include "platform/FolderWatcher.h"

#include <map>
#include <mutex>
#include <set>

namespace kelvaro {

class ManualWatcher final : public FolderWatcher {
public:
    void onChange(Changed changed) override { changed_ = std::move(changed); }
    bool watch(const std::filesystem::path& folder) override {
        std::lock_guard guard(lock_);
        if (!std::filesystem::exists(folder)) return false;
        watched_.insert(folder);
        return true;
    }
    void unwatch(const std::filesystem::path& folder) override {
        std::lock_guard guard(lock_);
        watched_.erase(folder);
    }
    bool watches(const std::filesystem::path& folder) {
        std::lock_guard guard(lock_);
        return watched_.contains(folder);
    }
    // Like the real one, silent about what nobody watches.
    void change(const std::filesystem::path& folder) {
        if (watches(folder)) changed_(folder);
    }

private:
    Changed changed_;
    std::mutex lock_; // guards watched_
    std::set<std::filesystem::path> watched_;
};

class ManualDrives final : public DriveTable {
public:
    std::optional<Drive> driveOf(const std::filesystem::path& path) override {
        std::lock_guard guard(lock_);
        for (const auto& [folder, device] : devices_)
            if (path.string().starts_with(folder)) return Drive{folder, device};
        return Drive{"/", "root"};
    }
    void onChange(std::function<void()> changed) override { changed_ = std::move(changed); }
    void mount(const std::string& folder, std::optional<std::string> device) {
        {
            std::lock_guard guard(lock_);
            devices_.erase(folder);
            if (device) devices_.emplace(folder, *device);
        }
        if (changed_) changed_();
    }

private:
    std::function<void()> changed_;
    std::mutex lock_; // guards devices_
    std::map<std::string, std::string> devices_;
};

} // namespace kelvaro
