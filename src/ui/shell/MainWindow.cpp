#include "ui/shell/MainWindow.h"

#include "app/SettingsKeys.h"
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
    applyAppearance();
    makePages();
    commands_->fill(menuBar());
    bindFileCommands();
    bindEditCommands();
    bindViewCommands();
    bindHelpCommands();
    observeStore();
    qApp->installEventFilter(this);
    restoreGeometryKept();
}

MainWindow::~MainWindow() {
    qApp->removeEventFilter(this);
    subscriptions_.clear();
}

void MainWindow::makePages() {
    library_ = new LibraryPage(parts_.appearance, parts_.library, parts_.thumbnails, pictures_,
                               *commands_, this);
    editor_ = new EditorPage(parts_.appearance,
                             {parts_.library, parts_.engine, parts_.sessions, parts_.thumbnails,
                              parts_.editing, parts_.settings, *commands_},
                             this);
    editor_->onCircumstances = [this] { showCommands(); };
    pages_->addWidget(library_);
    pages_->addWidget(editor_);
    const auto rows = [this](const PhotoInfo& info) {
        return infoRows(info, parts_.texts, parts_.calendar);
    };
    libraryInfo_ = new InfoPanel(parts_.appearance, parts_.library, rows, library_);
    editorInfo_ = new InfoPanel(parts_.appearance, parts_.library, rows, editor_);
    library_->setSidePanel(libraryInfo_);
    editor_->setSidePanel(editorInfo_);
    library_->onAddFolder = [this] { addFolder(); };
    library_->onAddGivenFolder = [this](const auto& folder) { addGivenFolder(folder); };
    library_->onShowFolder = [this](const auto& folder) { parts_.desktop.openFolder(folder); };
    library_->setShowsSidebar(parts_.settings.get<bool>(settingsKey::showsSidebar).value_or(true));
    settings_ = new SettingsSheet(parts_.appearance, parts_.library, parts_.settings,
                                  parts_.profile.usage(), this);
    makeProfile();
    exportSheet_ = new ExportSheet(parts_.appearance, *parts_.prompts, this);
    exportStatus_ = new ExportStatus(parts_.appearance, parts_.exporter, parts_.desktop, this,
                                     [this](QSize pill) { return statusPlace(pill); });
    exportSheet_->onChanged = [this](const ExportSettings& now) { now.save(parts_.settings); };
    exportSheet_->onExport = [this](const ExportSettings& now) { startExport(now); };
    exportSheet_->onClosed = [this] {
        previewTicket_ = {};
        parts_.library.endExportRequest();
    };
}

// --- State ---

void MainWindow::observeStore() {
    LibraryStore& lib = parts_.library;
    const auto watch = [this](const auto& subject, auto show) {
        subscriptions_.push_back(subject.observe(show));
        show();
    };
    watch(lib.rootState(), [this] { showRoot(); });
    watch(lib.commandState(), [this] { showCommands(); });
    watch(lib.editorTools(), [this] { showCommands(); });
    watch(lib.indexingFolders(), [this] { showIndexing(); });
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
    parts_.desktop.onPreferencesChanged([this] { applyAppearance(); });
}

void MainWindow::applyAppearance() {
    const DesktopPreferences system = parts_.desktop.preferences();
    const AppearanceMode mode = parts_.library.appearance().get();
    const bool dark =
        mode == AppearanceMode::system ? system.prefersDark : mode == AppearanceMode::dark;
    parts_.appearance.apply(dark, !system.reducesMotion);
}

void MainWindow::showRoot() {
    const RootState& state = parts_.library.rootState().state();
    setWindowTitle(state.windowTitle.empty() ? QString("Kelvaro")
                                             : fromUtf8(state.windowTitle) + " — Kelvaro");
    const bool dark =
        state.appearance == AppearanceMode::dark ||
        (state.appearance == AppearanceMode::system && parts_.desktop.preferences().prefersDark);
    if (dark != parts_.appearance.theme().dark) applyAppearance();
    showsProfile_ = showsProfile_ && !state.isEditing;
    if (showsProfile_) setWindowTitle(words("Your Profile") + " — Kelvaro");
    QWidget* page = state.isEditing ? static_cast<QWidget*>(editor_)
                    : showsProfile_ ? static_cast<QWidget*>(profile_)
                                    : library_;
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
    if (state.isEditing) now = (now & ~circumstance::editedPhoto) | editor_->circumstances();
    // The selection in the grid behind the profile is nothing to act on.
    commands_->setCircumstances(showsProfile_ ? 0 : now);
    const bool isFavorite = state.isEditing ? parts_.library.editorTools().state().isFavorite
                                            : state.selectionIsAllFavorite;
    commands_->setOn(CommandId::favorite, isFavorite);
    commands_->setOn(CommandId::togglePhotoBar, state.showsFilmstrip);
    commands_->setOn(CommandId::toggleSidebar, library_->showsSidebar());
}

void MainWindow::showIndexing() {
    const std::size_t folders = parts_.library.indexingFolders().get().size();
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
    pictures_.setScreenProfile(profile);
    editor_->setScreenProfile(profile);
}

void MainWindow::introduce() {
    showIntroduction(
        parts_.appearance, this, [this] { addFolder(); },
        [this] { parts_.settings.set(settingsKey::introductionSeen, true); });
}

void MainWindow::closeEvent(QCloseEvent* event) {
    // The open photo's edit goes to the disk first; a drive that is away does not hold it up.
    if (!settling_ && editor_->model().isOpen()) {
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
    auto alert = quits_ ? std::nullopt : parts_.library.quitCheck();
    if (!alert && !quits_) alert = parts_.editing.quitCheck();
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
                            parts_.editing.saver().discardUnsaved();
                            quits_ = true;
                            // A window cannot close from within its own closing.
                            QTimer::singleShot(0, this, &QWidget::close);
                        });
}

} // namespace kelvaro
