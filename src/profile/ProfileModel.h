// The profile of the library as it is now, for the chosen period. While it is followed it is made
// anew after changes, on threads of its own, one at a time: a library that is being indexed costs
// no more than it takes. Main thread.
#pragma once

#include "base/Clock.h"
#include "base/MainPoster.h"
#include "base/Published.h"
#include "base/SerialQueue.h"
#include "library/LibraryStore.h"
#include "profile/ExportHistory.h"
#include "profile/Profile.h"

#include <memory>

namespace kelvaro {

// All outlive the model.
struct ProfileModelParts {
    LibraryStore& library;
    ExportHistory& exports;
    SettingsStore& settings;
    const Clock& clock;
    const LocalCalendar& calendar;
    const TextRules& texts;
    MainThread& main;
};

class ProfileModel {
public:
    static constexpr std::string_view periodKey = "profilePeriod"; // of the settings

    explicit ProfileModel(const ProfileModelParts& parts);

    // Null until the first one has been made.
    const Published<std::shared_ptr<const Profile>>& profile() const { return profile_; }
    const ProfilePeriod& period() const { return period_; }
    void setPeriod(const ProfilePeriod& period);
    // Between these the profile follows the library; what was made stays.
    void follow();
    void rest();

    CivilTime now() const; // in the user's time zone
    // Shows photos of the profile shown in the library's grid.
    void showBar(const Chart& chart, std::size_t bar);
    void showDay(std::int64_t day);

private:
    void collect();
    void take(std::shared_ptr<const ProfileSource> source);
    void make();

    const ProfileModelParts parts_;
    ProfilePeriod period_;
    Published<std::shared_ptr<const Profile>> profile_;
    std::shared_ptr<const ProfileSource> source_; // null: not collected yet
    bool collecting_ = false, collectsAgain_ = false, making_ = false, makesAgain_ = false;
    std::vector<Subscription> following_;
    // Ends with the model: the library's thread may come with a source after that.
    std::shared_ptr<char> alive_ = std::make_shared<char>();
    MainPoster poster_;
    SerialQueue queue_{"kelvaro.profile", SerialQueue::AtEnd::drop}; // last: it uses the above
};

} // namespace kelvaro
