#include "app/WindowServices.h"

#include "app/ExportServices.h"
#include "platform/FreeMemory.h"
#include "platform/cache/SqliteMetaCache.h"
#include "platform/system/CrashReporter.h"
#include "platform/system/FreedesktopDesktop.h"
#include "platform/system/FreedesktopTrash.h"
#include "platform/system/InotifyWatcher.h"
#include "platform/system/MountTable.h"
#include "platform/system/UserEnvironment.h"

namespace kelvaro {
namespace {

RunLater laterOn(SerialQueue& queue) {
    return [&queue](std::chrono::milliseconds delay, std::function<void()> job) {
        queue.postLater(delay, std::move(job));
    };
}

} // namespace

WindowServices::WindowServices(MainThread& main, const LaunchOptions& options,
                               const Cancellation& cancellation, const std::string& version)
    : services_(makeServices(cancellation)),
      folders_(userFolders(processEnvironment())),
      settings_(openSettings(*services_.files, processEnvironment())),
      desktop_(makeDesktop()),
      trash_(std::make_unique<FreedesktopTrash>(folders_.home / ".local/share/Trash",
                                                *services_.clock, *services_.calendar)),
      watcher_(std::make_unique<InotifyWatcher>()),
      drives_(std::make_unique<MountTable>()),
      metaCache_(std::make_unique<SqliteMetaCache>(folders_.caches / "metadata.sqlite")) {
    render_ = std::make_unique<RenderServices>(
        services_, *services_.clock, main, folders_,
        RenderLogs{options.logsRenderTimes, options.logsThumbnailTimes});
    prewarm_ = std::make_unique<SelectionPrewarm>(render_->sessions(), laterOn(prewarming_));
    const RecoveryReport recovered = EditingServices::recover(services_, folders_);
    library_ = std::make_unique<LibraryStore>(LibraryServices{.files = *services_.files,
                                                              .settings = *settings_,
                                                              .folders = folders_,
                                                              .clock = *services_.clock,
                                                              .main = main,
                                                              .random = *services_.random,
                                                              .properties = *services_.properties,
                                                              .texts = *services_.texts,
                                                              .calendar = *services_.calendar,
                                                              .trash = *trash_,
                                                              .watcher = watcher_.get(),
                                                              .drives = drives_.get(),
                                                              .metaCache = metaCache_.get(),
                                                              .sessions = prewarm_.get()});
    idleMemory_ = std::make_unique<IdleMemory>(
        IdleMemory::Parts{render_->sessions(), library_->openPhoto(), library_->view(),
                          library_->selection(), *services_.clock, main, laterOn(resting_),
                          returnFreeMemory},
        IdleMemory::Limits{render_->editingBytes(), render_->browsingBytes()});
    editing_ = std::make_unique<EditingServices>(services_, folders_, main, *library_, recovered);
    ExportParts parts = exportParts(services_, render_->engine(), &render_->analyses());
    parts.yields = true;
    exporter_ = std::make_unique<Exporter>(parts, main);
    profile_ = std::make_unique<ProfileServices>(
        ProfileServices::Parts{*library_, *exporter_, *settings_, *desktop_, *services_.clock,
                               *services_.calendar, *services_.texts, main, version});
}

WindowServices::~WindowServices() = default;

void reportCrashes(const UserFolders& folders, const std::string& version) {
    reportCrashesTo(folders.support / "crash-reports", "Kelvaro " + version);
}

} // namespace kelvaro
