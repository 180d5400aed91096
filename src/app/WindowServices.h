// Everything below the window, put together once at start-up on the main thread and ended there:
// the platform's objects, the renderer, the library and the exporter.
#pragma once

#include "app/EditingServices.h"
#include "app/IdleMemory.h"
#include "app/LaunchOptions.h"
#include "app/ProfileServices.h"
#include "app/RenderServices.h"
#include "app/SelectionPrewarm.h"
#include "app/Services.h"
#include "base/SerialQueue.h"
#include "export/Exporter.h"
#include "library/LibraryStore.h"
#include "platform/Desktop.h"
#include "platform/SettingsStore.h"

namespace kelvaro {

class WindowServices {
public:
    // All must outlive the object.
    WindowServices(MainThread& main, const LaunchOptions& options, const Cancellation& cancellation,
                   const std::string& version);
    ~WindowServices();

    Services& services() { return services_; }
    RenderServices& render() { return *render_; }
    LibraryStore& library() { return *library_; }
    EditingServices& editing() { return *editing_; }
    Exporter& exporter() { return *exporter_; }
    ProfileServices& profile() { return *profile_; }
    SettingsStore& settings() { return *settings_; }
    const UserFolders& folders() const { return folders_; }
    Desktop& desktop() { return *desktop_; }

private:
    Services services_;
    UserFolders folders_;
    std::unique_ptr<SettingsStore> settings_;
    std::unique_ptr<Desktop> desktop_;
    std::unique_ptr<Trash> trash_;
    std::unique_ptr<FolderWatcher> watcher_;
    std::unique_ptr<DriveTable> drives_;
    std::unique_ptr<MetaCache> metaCache_;
    std::unique_ptr<RenderServices> render_;
    SerialQueue prewarming_{"kelvaro.selection-prewarm", SerialQueue::AtEnd::drop};
    SerialQueue resting_{"kelvaro.idle-memory", SerialQueue::AtEnd::drop};
    std::unique_ptr<SelectionPrewarm> prewarm_;
    std::unique_ptr<LibraryStore> library_;
    std::unique_ptr<IdleMemory> idleMemory_;
    std::unique_ptr<EditingServices> editing_;
    std::unique_ptr<Exporter> exporter_;
    std::unique_ptr<ProfileServices> profile_;
};

// From now on a fault leaves a report in the folder that the help menu opens.
void reportCrashes(const UserFolders& folders, const std::string& version);

} // namespace kelvaro
