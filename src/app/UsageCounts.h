// Anonymous counts of launches and exported photos, kept and sent only when the user has said yes.
// They are two numbers and the versions of the program and the system; never a file name, a place
// or a setting. Main thread.
#pragma once

#include "platform/SettingsStore.h"

#include <cstdint>
#include <string>

namespace kelvaro {

// Takes what is to be sent; this build has no address to send to.
class UsageSender {
public:
    virtual ~UsageSender() = default;
    // Whether there is anywhere to send to.
    virtual bool hasAddress() const = 0;
    // Returns whether it arrived; what did not is kept and tried again.
    virtual bool send(const std::string& message) = 0;
};

class NoUsageSender final : public UsageSender {
public:
    bool hasAddress() const override { return false; }
    bool send(const std::string&) override { return false; }
};

class UsageCounts {
public:
    // Off unless the setting "shareUsageCounts" says yes. All three must outlive the counts.
    UsageCounts(SettingsStore& settings, UsageSender& sender, std::string programVersion,
                std::string systemVersion);

    bool isShared() const;
    // Saying no forgets what was counted.
    void setShared(bool shared);

    void countLaunch();
    void countExport(std::int64_t photos);

    std::int64_t launches() const;
    std::int64_t exportedPhotos() const;
    // The whole of what would be sent, as shown to the user.
    std::string message() const;
    // Sends what has been counted and begins anew when it arrives. Does nothing when sharing is
    // off, nothing was counted, or there is no address.
    void sendPending();

private:
    std::int64_t stored(std::string_view key) const;
    void add(std::string_view key, std::int64_t count);

    SettingsStore& settings_;
    UsageSender& sender_;
    const std::string programVersion_, systemVersion_;
};

} // namespace kelvaro
