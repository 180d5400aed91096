#include "ui/shell/MainWindow.h"

#include "app/SettingsKeys.h"
#include "recipe/RecipeTexts.h"
#include "ui/Texts.h"
#include "ui/shell/ProgramIcon.h"
#include "ui/shell/SheetPrompts.h"
#include "ui/shell/Sheets.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDateTime>
#include <QMenuBar>
#include <QScreen>
#include <QTimer>

#include <algorithm>

namespace kelvaro {
namespace {

constexpr QSize firstSize(1280, 800);
constexpr int noticeHeightPx = 36, noticeBottomPx = 24;
constexpr int viewerBarPx = 44;
constexpr int prepareEveryMs = 250;
constexpr int indexingSoonMs = 100;
constexpr int scrollBarPx = 12; // beside the grid's headings

unsigned circumstancesOf(const CommandState& state, const EditorTools& tools) {
    using namespace circumstance;
    unsigned now = state.isEditing ? editor : library;
    const auto add = [&now](bool holds, unsigned bit) { now |= holds ? bit : 0; };
    add(state.hasTarget(), photo);
    add(state.isEditing || state.selectedCount == 1, onePhoto);
    add(state.hasClipboard || tools.hasClipboard, copiedRecipe);
    add(state.selectionIsEdited, editedPhoto);
    add(state.hasVisiblePhotos, visiblePhotos);
    return now;
}

} // namespace

MainWindow::MainWindow(WindowParts parts)
    : parts_(std::move(parts)),
      pictures_(parts_.appearance, parts_.thumbnails),
      commands_(new CommandActions(this)),
      pages_(new QStackedWidget(this)),
      notice_(new Pill(parts_.appearance, "noticePill", this, noticeHeightPx,
                       [this](QSize pill) { return noticePlace(pill); })),
      indexing_(new Pill(parts_.appearance, "indexingPill", this, statusHeightPx,
                         [this](QSize pill) { return statusPlace(pill); })) {
    setObjectName("window");
    setWindowTitle("Kelvaro");
    setWindowIcon(programIcon());
    setMinimumSize(720, 480);
    if (!parts_.prompts) parts_.prompts = std::make_unique<SheetPrompts>(parts_.appearance, this);
    setCentralWidget(pages_);
    followDesktop();
    makeLibrary();
    bindProfile();
    commands_->fill(menuBar());
    bindFileCommands();
    bindEditCommands();
    bindViewCommands();
    bindHelpCommands();
    observeStore();
    qApp->installEventFilter(this);
    restoreGeometryKept();
    indexingSoon_.setSingleShot(true);
    QObject::connect(&indexingSoon_, &QTimer::timeout, this, [this] { showIndexing(); });
    QObject::connect(&preparing_, &QTimer::timeout, this, [this] { prepareRest(); });
}

MainWindow::~MainWindow() {
    qApp->removeEventFilter(this);
    subscriptions_.clear();
}

void MainWindow::makeLibrary() {
    library_ = new LibraryPage(parts_.appearance, parts_.library, parts_.thumbnails, pictures_,
                               *commands_, pages_);
    pages_->addWidget(library_);
    library_->setSidePanel(makeInfoPanel(library_));
    library_->onAddFolder = [this] { addFolder(); };
    library_->onAddGivenFolder = [this](const auto& folder) { addGivenFolder(folder); };
    library_->onShowFolder = [this](const auto& folder) { parts_.desktop.openFolder(folder); };
    library_->setShowsSidebar(parts_.settings.get<bool>(settingsKey::showsSidebar).value_or(true));
    exportStatus_ = new ExportStatus(parts_.appearance, parts_.exporter, parts_.desktop, this,
                                     [this](QSize pill) { return statusPlace(pill); });
}

InfoPanel* MainWindow::makeInfoPanel(QWidget* page) {
    return new InfoPanel(
        parts_.appearance, parts_.library,
        [this](const PhotoInfo& info) { return infoRows(info, parts_.texts, parts_.calendar); },
        page);
}

EditorPage& MainWindow::editor() {
    if (editor_) return *editor_;
    editor_ = new EditorPage(parts_.appearance,
                             {parts_.library, parts_.engine, parts_.sessions, parts_.thumbnails,
                              parts_.editing, parts_.settings, *commands_},
                             pages_);
    pages_->addWidget(editor_);
    editor_->setScreenProfile(screenProfile_);
    editor_->setSidePanel(makeInfoPanel(editor_));
    editor_->onCircumstances = [this] { showCommands(); };
    if (parts_.library.isEditing()) editor_->showOpenPhoto();
    return *editor_;
}

ExportSheet& MainWindow::exportSheet() {
    if (exportSheet_) return *exportSheet_;
    exportSheet_ = new ExportSheet(parts_.appearance, *parts_.prompts, this);
    exportSheet_->onChanged = [this](const ExportSettings& now) { now.save(parts_.settings); };
    exportSheet_->onExport = [this](const ExportSettings& now) { startExport(now); };
    exportSheet_->onClosed = [this] {
        previewTicket_ = {};
        parts_.library.endExportRequest();
    };
    return *exportSheet_;
}

SettingsSheet& MainWindow::settingsSheet() {
    if (settings_) return *settings_;
    settings_ = new SettingsSheet(parts_.appearance, parts_.library, parts_.settings,
                                  parts_.profile.usage(), this);
    settings_->onProfileChanged = [this] { showProfileName(); };
    return *settings_;
}

// What is likely to be opened soon, one part at a time, so that none holds up the hand for long.
void MainWindow::prepareRest() {
    if (!editor_)
        editor();
    else if (!exportSheet_)
        exportSheet();
    else if (!profile_)
        profilePage();
    else if (!settings_)
        settingsSheet();
    else
        preparing_.stop();
}

// --- State ---

void MainWindow::observeStore() {
    LibraryStore& lib = parts_.library;
    const auto watch = [this](const auto& subject, auto show) {
        subscriptions_.push_back(subject.observe(show));
        show();
    };
    // Before anything else hears of it, so that the page is there to show it.
    watch(lib.openPhoto(), [this] {
        if (parts_.library.isEditing()) editor();
    });
    watch(lib.rootState(), [this] { showRoot(); });
    watch(lib.commandState(), [this] { showCommands(); });
    watch(lib.editorTools(), [this] { showCommands(); });
    // A thousand folders end one by one, and a quick look is over before it is worth a word.
    watch(lib.indexingFolders(), [this] {
        if (parts_.library.indexingFolders().get().empty())
            showIndexing();
        else if (!indexingSoon_.isActive())
            indexingSoon_.start(indexingSoonMs);
    });
    watch(lib.notice(), [this] {
        if (const auto& notice = parts_.library.notice().get())
            notice_->showNotice(words(notice->text));
    });
    watch(lib.exportRequest(), [this] {
        if (parts_.library.exportRequest().get()) beginExport();
    });
    watch(parts_.exporter.notice(), [this] {
        const auto& notice = parts_.exporter.notice().get();
        if (notice.shown) notice_->showNotice(words(notice.text));
    });
    parts_.desktop.onPreferencesChanged([this] { followDesktop(); });
}

void MainWindow::followDesktop() {
    system_ = parts_.desktop.preferences();
    applyAppearance();
}

bool MainWindow::wantsDark() const {
    const AppearanceMode mode = parts_.library.appearance().get();
    return mode == AppearanceMode::system ? system_.prefersDark : mode == AppearanceMode::dark;
}

void MainWindow::applyAppearance() {
    parts_.appearance.apply(wantsDark(), !system_.reducesMotion);
}

void MainWindow::showRoot() {
    const RootState& state = parts_.library.rootState().state();
    setWindowTitle(state.windowTitle.empty() ? QString("Kelvaro")
                                             : fromUtf8(state.windowTitle) + " — Kelvaro");
    if (wantsDark() != parts_.appearance.theme().dark) applyAppearance();
    showsProfile_ = showsProfile_ && !state.isEditing;
    if (showsProfile_) setWindowTitle(words("Your Profile") + " — Kelvaro");
    QWidget* page = library_;
    if (state.isEditing)
        page = &editor();
    else if (showsProfile_)
        page = &profilePage();
    if (pages_->currentWidget() != page) {
        const QRect cell =
            state.isEditing ? library_->cellOnScreen(*parts_.library.openPhoto().get()) : QRect();
        pages_->setCurrentWidget(page);
        indexing_->place();
        exportStatus_->place();
        if (page == library_)
            library_->grid().setFocus();
        else if (page == editor_)
            editor_->canvas().setFocus();
        else
            page->setFocus();
        if (cell.isValid()) editor_->growFrom(cell);
    }
    if (!state.errorMessage || *state.errorMessage == shownError_) return;
    // One at a time: the store keeps the message until it has been read.
    shownError_ = *state.errorMessage;
    parts_.prompts->ask({"error", "", shownError_, {"OK"}}, [this](std::size_t) {
        shownError_.clear();
        parts_.library.clearError();
    });
}

void MainWindow::showCommands() {
    const CommandState& state = parts_.library.commandState().state();
    unsigned now = circumstancesOf(state, parts_.library.editorTools().state());
    if (state.isEditing) now = (now & ~circumstance::editedPhoto) | editor().circumstances();
    // The selection in the grid behind the profile is nothing to act on.
    commands_->setCircumstances(showsProfile_ ? 0 : now);
    const bool isFavorite = state.isEditing ? parts_.library.editorTools().state().isFavorite
                                            : state.selectionIsAllFavorite;
    commands_->setOn(CommandId::favorite, isFavorite);
    const bool pastesToMany = !state.isEditing && state.selectedCount > 1;
    commands_->action(CommandId::pasteAdjustments)
        ->setText(pastesToMany ? words(texts::pasteAdjustmentsTo) + " " +
                                     counted(static_cast<qint64>(state.selectedCount), "1 Photo",
                                             "%1 Photos")
                               : words(texts::pasteAdjustments));
    commands_->setOn(CommandId::togglePhotoBar, state.showsFilmstrip);
    commands_->setOn(CommandId::toggleSidebar, library_->showsSidebar());
}

void MainWindow::showIndexing() {
    const std::size_t folders = parts_.library.indexingFolders().get().size();
    if (folders == 0) preparing_.start(prepareEveryMs);
    mostIndexing_ = folders == 0 ? 0 : std::max(mostIndexing_, folders);
    // A quick look at one folder, or while something else is told, says nothing.
    const bool isQuiet = parts_.library.photoCount() > 0 && mostIndexing_ < 2;
    if (folders == 0 || isQuiet || exportStatus_->isShown()) return indexing_->leave();
    indexing_->showProgress(
        counted(static_cast<qint64>(folders), "Looking through 1 folder…",
                "Looking through %1 folders…"),
        mostIndexing_ > 1 ? std::optional(double(mostIndexing_ - folders) / double(mostIndexing_))
                          : std::nullopt);
}

QPoint MainWindow::noticePlace(QSize pill) const {
    QRect area = rect();
    if (pages_->currentWidget() == editor_) { // above the photo bar, beside the inspector
        const EditorCanvas& canvas = editor_->canvas();
        area = {canvas.mapTo(this, QPoint()), canvas.size()};
    }
    return {area.x() + std::max(0, (area.width() - pill.width()) / 2),
            area.y() + area.height() - noticeBottomPx - pill.height()};
}

// In the bars above the photos, so that it never covers one.
QPoint MainWindow::statusPlace(QSize pill) const {
    if (pages_->currentWidget() == library_) {
        const QRect row = library_->statusRow();
        const QPoint origin = library_->mapTo(this, row.topLeft());
        return {origin.x() + row.width() - pill.width() - scrollBarPx,
                origin.y() + (row.height() - pill.height()) / 2};
    }
    return {(width() - pill.width()) / 2, pages_->y() + (viewerBarPx - pill.height()) / 2};
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    // While a sheet or popover is open its window's commands rest.
    const bool layers = event->type() == QEvent::Show || event->type() == QEvent::Hide;
    if (layers && dynamic_cast<Overlay*>(watched)) {
        bool open = false;
        for (const QWidget* child : findChildren<QWidget*>(Qt::FindDirectChildrenOnly))
            open = open || (dynamic_cast<const Overlay*>(child) && child->isVisible() &&
                            (child != watched || event->type() == QEvent::Show));
        commands_->setSuspended(open);
    }
    return QMainWindow::eventFilter(watched, event);
}

// --- Window ---

void MainWindow::restoreGeometryKept() {
    resize(firstSize);
    if (const auto kept = parts_.settings.get<std::string>(settingsKey::windowGeometry))
        restoreGeometry(QByteArray::fromBase64(QByteArray::fromStdString(*kept)));
    const QSize room = screen() ? screen()->availableGeometry().size() : size();
    resize(size().boundedTo(room));
}

void MainWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (introduced_ || parts_.settings.get<bool>(settingsKey::introductionSeen).value_or(false))
        return;
    introduced_ = true;
    if (parts_.library.folders().get().empty())
        QMetaObject::invokeMethod(
            this, [this] { introduce(); }, Qt::QueuedConnection);
}

void MainWindow::setScreenProfile(const QColorSpace& profile) {
    screenProfile_ = profile;
    pictures_.setScreenProfile(profile);
    if (editor_) editor_->setScreenProfile(profile);
}

void MainWindow::introduce() {
    showIntroduction(
        parts_.appearance, this, [this] { addFolder(); },
        [this] { parts_.settings.set(settingsKey::introductionSeen, true); });
}

void MainWindow::closeEvent(QCloseEvent* event) {
    // The open photo's edit goes to the disk first; a drive that is away does not hold it up.
    if (!settling_ && editor_ && editor_->model().isOpen()) {
        settling_ = true;
        event->ignore();
        return editor_->settle([this] {
            QMetaObject::invokeMethod(
                this,
                [this] {
                    parts_.library.closeEditor();
                    close();
                },
                Qt::QueuedConnection);
        });
    }
    settling_ = false;
    parts_.settings.set(settingsKey::windowGeometry, saveGeometry().toBase64().toStdString());
    parts_.library.closeEditor();
    const auto alert = quits_ ? std::nullopt : parts_.library.quitCheck();
    if (!alert) {
        event->accept();
        QApplication::quit();
        return;
    }
    event->ignore();
    // The harmless answer stands last.
    parts_.prompts->ask({"quit", alert->title, alert->text, {alert->confirm, alert->cancel}},
                        [this](std::size_t answer) {
                            if (answer != 0) return;
                            parts_.library.discardUnsaved();
                            quits_ = true;
                            // A window cannot close from within its own closing.
                            QTimer::singleShot(0, this, &QWidget::close);
                        });
}

} // namespace kelvaro
