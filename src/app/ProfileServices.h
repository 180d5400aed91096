// What the program counts about its own use, and the profile that is made of it and the library:
// launches, exports by day, the usage counts that the user may share. Main thread.
#pragma once

#include "app/UsageCounts.h"
#include "export/Exporter.h"
#include "platform/Desktop.h"
#include "profile/ProfileModel.h"

namespace kelvaro {

class ProfileServices {
public:
    // All outlive the object.
    struct Parts {
        LibraryStore& library;
        Exporter& exporter;
        SettingsStore& settings;
        const Desktop& desktop;
        const Clock& clock;
        const LocalCalendar& calendar;
        const TextRules& texts;
        MainThread& main;
        std::string version;
    };
    // Counts a launch.
    explicit ProfileServices(const Parts& parts);

    ProfileModel& model() { return model_; }
    UsageCounts& usage() { return usage_; }
    const ExportHistory& exports() const { return exports_; }

private:
    void noteExports();

    const Exporter& exporter_;
    NoUsageSender sender_;
    UsageCounts usage_;
    ExportHistory exports_;
    ProfileModel model_;
    std::size_t noted_ = 0; // photos of the run that have been counted
    Subscription runs_;
};

} // namespace kelvaro
