// What the commands of the menu bar do; the other half of MainWindow.
#include "app/Mails.h"
#include "app/PlatformWords.h"
#include "app/SettingsKeys.h"
#include "export/CaptureDate.h"
#include "ui/Texts.h"
#include "ui/shell/MainWindow.h"
#include "ui/shell/Sheets.h"

#include <algorithm>

namespace kelvaro {
namespace {

constexpr int previewPx = 1280;

} // namespace

// --- File ---

void MainWindow::bindFileCommands() {
    LibraryStore& lib = parts_.library;
    commands_->on(CommandId::addFolder, [this] { addFolder(); });
    commands_->on(CommandId::exportPhotos, [&lib] { lib.requestExport(); });
    commands_->on(CommandId::showFolder, [this, &lib] {
        const auto targets = lib.targets();
        parts_.desktop.showFiles({targets.begin(), targets.end()});
    });
    commands_->on(CommandId::rescan, [&lib] { lib.rescanAll(); });
    commands_->on(CommandId::moveToTrash, [this] { moveToTrash(); });
    commands_->on(CommandId::settings, [this] {
        settingsSheet().refresh();
        settingsSheet().open();
    });
    commands_->on(CommandId::quit, [this] { close(); });
}

void MainWindow::addFolder() {
    parts_.prompts->chooseFolder(std::string(texts::chooseFolder), parts_.folders.pictures,
                                 [this](std::optional<std::filesystem::path> folder) {
                                     if (folder) addGivenFolder(*folder);
                                 });
}

void MainWindow::addGivenFolder(const std::filesystem::path& folder) {
    const auto result = parts_.library.addFolder(folder);
    const QString name = fromUtf8(texts::folderName(folder.string()));
    switch (result) {
    case AddFolderResult::added: {
        const auto& folders = parts_.library.folders().get();
        parts_.library.setScope({Scope::Kind::folder, folders.back()});
        break;
    }
    case AddFolderResult::alreadyListed:
        notice_->showNotice(words("“%1” is in the library already").arg(name));
        break;
    case AddFolderResult::notAFolder:
        notice_->showNotice(words("“%1” can't be opened as a folder").arg(name));
        break;
    }
}

void MainWindow::moveToTrash() {
    const auto photos = parts_.library.targets();
    if (photos.empty()) return;
    const texts::Alert alert = texts::trashQuestion(photos);
    parts_.prompts->ask({"trash", alert.title, alert.text, {alert.confirm, alert.cancel}},
                        [this, photos](std::size_t answer) {
                            if (answer != 0) return;
                            parts_.library.moveToTrash(photos, [this](const RemovalResult& result) {
                                if (!result.refused.empty()) offerDeletion(result.refused);
                            });
                        });
}

void MainWindow::offerDeletion(const std::vector<PhotoUrl>& refused) {
    const texts::Alert alert = texts::deleteQuestion(refused);
    parts_.prompts->ask({"delete", alert.title, alert.text, {alert.confirm, alert.cancel}},
                        [this, refused](std::size_t answer) {
                            if (answer == 0)
                                parts_.library.deleteImmediately(refused,
                                                                 [](const RemovalResult&) {});
                        });
}

// --- Export ---

double MainWindow::largestMegapixels(const std::vector<PhotoUrl>& photos) const {
    double largest = 0;
    for (const PhotoUrl& photo : photos) {
        if (const auto meta = parts_.library.meta(photo))
            largest = std::max(largest, double(meta->width) * double(meta->height) / 1e6);
    }
    return largest > 0 ? largest : 24;
}

void MainWindow::beginExport() {
    exporting_ = parts_.library.exportRequest().get()->photos;
    if (exporting_.empty()) return;
    const PhotoUrl first = exporting_.front();
    const Photo* photo = parts_.library.photo(first);
    ExportSheet& sheet = exportSheet();
    sheet.preview().setPhoto({});
    if (photo) {
        const auto meta = parts_.library.meta(first);
        const std::int64_t seconds = meta && meta->takenOnWall
                                         ? *meta->takenOnWall
                                         : photo->created.nanoseconds / 1'000'000'000;
        sheet.preview().setDay(std::chrono::floor<std::chrono::days>(
            std::chrono::sys_seconds(std::chrono::seconds(seconds))));
    }
    const auto arrived = [this](const ThumbnailResult& result) {
        ExportPreview& preview = exportSheet_->preview();
        if (result)
            preview.setPhoto(imageOf(*result).copy());
        else
            preview.setFailure(fromUtf8(result.error().message));
    };
    previewTicket_ = parts_.thumbnails.request({first, editOf(first), previewPx},
                                               ThumbnailPriority::visible, arrived);
    sheet.begin(ExportSettings::load(parts_.settings, parts_.folders),
                static_cast<int>(exporting_.size()), largestMegapixels(exporting_));
}

ProtectedPaths MainWindow::protectedPaths() const {
    ProtectedPaths paths;
    for (const FolderUrl& folder : parts_.library.folders().get()) {
        const FolderPhotos photos = parts_.library.photos(folder);
        if (!photos) continue;
        for (const Photo& photo : photos->photos())
            paths.insert(photo.url);
    }
    return paths;
}

Adjustments MainWindow::editOf(const PhotoUrl& photo) const {
    if (editor_ && editor_->model().isOpen() && editor_->model().photo().location == photo)
        return editor_->model().edit();
    const Adjustments* edit = parts_.library.edit(photo);
    return edit ? *edit : Adjustments{};
}

void MainWindow::startExport(const ExportSettings& settings) {
    if (parts_.exporter.state().get().running) {
        notice_->showNotice(words("An export is running already"));
        return;
    }
    std::vector<ExportJob> jobs;
    jobs.reserve(exporting_.size());
    for (const PhotoUrl& photo : exporting_)
        jobs.push_back({photo, editOf(photo)});
    exportStatus_->begin();
    Exporter::Options options;
    options.onPhoto = [this](const Exporter::PhotoOutcome& outcome) {
        if (!outcome.file) return;
        exportStatus_->noteFile(outcome.file->url);
    };
    parts_.exporter.start(std::move(jobs), settings, protectedPaths(), std::move(options));
}

// --- Edit ---

void MainWindow::bindEditCommands() {
    LibraryStore& lib = parts_.library;
    commands_->on(CommandId::copyAdjustments, [this, &lib] {
        if (lib.isEditing()) return editor().copy();
        const auto targets = lib.targets();
        if (!targets.empty()) lib.copyAdjustments(targets.front());
    });
    commands_->on(CommandId::pasteAdjustments, [this, &lib] {
        lib.isEditing() ? editor().paste() : lib.pasteAdjustments(lib.targets());
    });
    commands_->on(CommandId::revertToOriginal, [this] { revert(); });
    commands_->on(CommandId::selectAll, [this] { library_->grid().selectAll(); });
    commands_->on(CommandId::selectNone, [this] { library_->grid().selectNone(); });
    commands_->on(CommandId::find, [this] { library_->focusSearch(); });
    commands_->on(CommandId::favorite, [&lib] { lib.toggleFavorite(lib.targets()); });
    commands_->on(CommandId::photoInfo, [this] { toggleInfo(); });
    commands_->on(CommandId::openPhoto, [&lib] {
        const auto targets = lib.targets();
        if (!targets.empty()) lib.openEditor(targets.front());
    });
    commands_->on(CommandId::previousPhoto, [&lib] { lib.openNeighbour(-1); });
    commands_->on(CommandId::nextPhoto, [&lib] { lib.openNeighbour(1); });
    commands_->on(CommandId::backToLibrary, [this] { editor().escape(); });
}

// In the grid there is nothing to undo it with, so it asks first.
void MainWindow::revert() {
    if (parts_.library.isEditing()) return void(editor().model().revertToOriginal());
    const auto photos = parts_.library.targets();
    const std::string title =
        photos.size() == 1 ? "Revert “" + texts::displayName(photos.front()) + "” to the original?"
                           : "Revert " + std::to_string(photos.size()) + " photos to the original?";
    parts_.prompts->ask({"revert",
                         title,
                         "Every adjustment is cleared, the crop included; masks stay.",
                         {"Revert", "Cancel"}},
                        [this, photos](std::size_t answer) {
                            if (answer == 0) parts_.library.revertToOriginal(photos);
                        });
}

void MainWindow::toggleInfo() {
    const auto targets = parts_.library.targets();
    const auto& request = parts_.library.infoRequest().get();
    if (targets.empty() || (request && request->url == targets.front())) {
        parts_.library.requestInfo(std::nullopt);
    } else {
        parts_.library.requestInfo(targets.front());
    }
}

// --- View and Help ---

void MainWindow::bindViewCommands() {
    commands_->on(CommandId::toggleSidebar, [this] {
        library_->setShowsSidebar(!library_->showsSidebar());
        parts_.settings.set(settingsKey::showsSidebar, library_->showsSidebar());
        commands_->setOn(CommandId::toggleSidebar, library_->showsSidebar());
    });
    commands_->on(CommandId::togglePhotoBar, [this] {
        parts_.library.setShowsFilmstrip(!parts_.library.showsFilmstrip().get());
    });
    commands_->on(CommandId::largerCells, [this] { library_->changeCellSize(1); });
    commands_->on(CommandId::smallerCells, [this] { library_->changeCellSize(-1); });
}

void MainWindow::bindHelpCommands() {
    commands_->on(CommandId::about,
                  [this] { showAbout(parts_.appearance, this, fromUtf8(parts_.version)); });
    commands_->on(CommandId::introduction, [this] { introduce(); });
    commands_->on(CommandId::crashReports, [this] {
        const auto folder = parts_.folders.support / "crash-reports";
        std::error_code ignored; // an empty folder says that there are no reports
        std::filesystem::create_directories(folder, ignored);
        parts_.desktop.openFolder(folder);
    });
    const auto compose = [this](const MailDraft& draft) {
        parts_.desktop.composeMail(draft.to, draft.subject, shownText(draft.body));
    };
    commands_->on(CommandId::reportProblem, [this, compose] {
        compose(problemReport(
            {parts_.version, parts_.desktop.systemName(), parts_.desktop.processorName()}));
    });
    commands_->on(CommandId::sendFeedback, [compose] { compose(feedback()); });
    commands_->on(CommandId::website,
                  [this] { parts_.desktop.openWeb(std::string(websiteAddress)); });
    commands_->on(CommandId::checkForUpdates, [this] {
        parts_.prompts->ask({"updates",
                             "Kelvaro " + parts_.version,
                             "New versions come with your system's software updates.",
                             {"OK"}},
                            [](std::size_t) {});
    });
}

} // namespace kelvaro
