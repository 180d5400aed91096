#include "ui/library/LibraryPage.h"

#include "ui/Texts.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"
#include "ui/library/DroppedFolders.h"
#include "ui/shell/CommandActions.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QHBoxLayout>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>
#include <array>

namespace kelvaro {
namespace {

constexpr int lastSeenPx = 320; // of the thumbnails of a drive that is away

constexpr std::array menuCommands{
    CommandId::openPhoto,       CommandId::favorite,         CommandId::photoInfo,
    CommandId::copyAdjustments, CommandId::pasteAdjustments, CommandId::revertToOriginal,
    CommandId::exportPhotos,    CommandId::showFolder,       CommandId::moveToTrash};

IconName iconFor(const EmptyState& state, const Scope& scope, bool isMissing) {
    if (!state.button.empty() && state.text.find("“") != std::string::npos) return IconName::search;
    if (isMissing) return IconName::driveMissing;
    switch (scope.kind) {
    case Scope::Kind::favorites:
        return IconName::favorite;
    case Scope::Kind::edited:
        return IconName::edited;
    case Scope::Kind::folder:
    case Scope::Kind::all:
        break;
    }
    return IconName::photos;
}

} // namespace

LibraryPage::LibraryPage(const Appearance& appearance, LibraryStore& lib,
                         ThumbnailLoader& thumbnails, CellPictures& pictures,
                         CommandActions& commands, QWidget* parent)
    : QWidget(parent),
      lib_(lib),
      pictures_(pictures),
      content_(lib, pictures),
      lastSeen_(lib, thumbnails),
      finder_(content_) {
    sidebar_ = new Sidebar(appearance, this);
    toolbar_ = new Toolbar(appearance, commands.action(CommandId::exportPhotos),
                           commands.action(CommandId::profile), this);
    grid_ = named(new GridView(appearance, content_, this), "grid", words("Photos"),
                  words("Arrow keys choose a photo, Return opens it"));
    grid_->setToolTip({});
    empty_ = new EmptyView(appearance, this);
    filter_ = new FilterPopover(appearance, parent->window(), toolbar_->filterButton());
    menu_ = new QMenu(this);
    menu_->setObjectName("photoMenu");
    for (const CommandId id : menuCommands) {
        menu_->addAction(commands.action(id));
        if (id == CommandId::photoInfo || id == CommandId::revertToOriginal) menu_->addSeparator();
    }
    setAcceptDrops(true);
    makeLayout();
    bindTools();
    bindSidebar();
    bindGrid();
    observeStore();
}

void LibraryPage::makeLayout() {
    title_ = label({}, "heading", this);
    title_->setObjectName("scopeTitle");
    subtitle_ = label({}, "secondary", this);
    subtitle_->setObjectName("subtitle");
    middle_ = new QStackedWidget(this);
    middle_->addWidget(grid_);
    middle_->addWidget(empty_);

    auto* heading = new QHBoxLayout;
    heading->setContentsMargins(measure::margin, measure::unit, measure::margin, 0);
    heading->setSpacing(measure::unit);
    makeRestrictionButtons();
    heading->addWidget(toProfile_);
    heading->addWidget(title_);
    heading->addWidget(subtitle_, 1);
    heading->addWidget(showAll_);

    right_ = new QWidget(this);
    auto* content = new QVBoxLayout;
    content->setContentsMargins(0, 0, 0, 0);
    content->setSpacing(measure::unit / 2);
    content->addWidget(toolbar_);
    content->addLayout(heading);
    content->addWidget(middle_, 1);
    auto* withPanel = new QHBoxLayout(right_);
    withPanel->setContentsMargins(0, 0, 0, 0);
    withPanel->setSpacing(0);
    withPanel->addLayout(content, 1);

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    sidebar_->setFixedWidth(measure::sidebarWidth);
    row->addWidget(sidebar_);
    row->addWidget(right_, 1);
}

// The two ways out of photos that the profile picked out.
void LibraryPage::makeRestrictionButtons() {
    toProfile_ = named(new QPushButton(words("‹ Profile"), this), "backToProfile",
                       words("Back to your profile"), words("Back to your profile"));
    showAll_ = named(new QPushButton(words("Show All Photos"), this), "showAllPhotos",
                     words("Show All Photos"), words("Show every photo of the library again"));
    for (QPushButton* button : {toProfile_, showAll_})
        button->setProperty("kind", "quiet");
    QObject::connect(toProfile_, &QPushButton::clicked, this, [this] { onBackToProfile(); });
    QObject::connect(showAll_, &QPushButton::clicked, this, [this] {
        lib_.leaveRestriction();
        grid_->setFocus();
    });
}

void LibraryPage::setSidePanel(QWidget* panel) {
    right_->layout()->addWidget(panel);
}

QRect LibraryPage::statusRow() const {
    const QRect row = subtitle_->geometry();
    return row.translated(right_->pos());
}

void LibraryPage::bindTools() {
    toolbar_->onSearch = [this](const QString& text) { lib_.setSearchText(text.toStdString()); };
    toolbar_->onFilter = [this] { openFilter(); };
    toolbar_->onSort = [this](SortOrder order) { lib_.setSortOrder(order); };
    toolbar_->onCellSize = [this](int size) { setCellSize(size); };
    toolbar_->onLeaveSearch = [this] { grid_->setFocus(); };
    filter_->onFilter = [this](const PhotoFilter& filter) { lib_.setFilter(filter); };
    lastSeen_.onChanged = [this](std::vector<QImage> pictures) {
        empty_->setPictures(std::move(pictures));
    };
    empty_->onButton = [this] { pressEmptyButton(); };
}

void LibraryPage::bindSidebar() {
    sidebar_->onScopeChosen = [this](const Scope& scope) { lib_.setScope(scope); };
    sidebar_->onAddFolder = [this] { onAddFolder(); };
    sidebar_->onFolderDropped = [this](const auto& folder) { onAddGivenFolder(folder); };
    sidebar_->onRemoveFolder = [this](const SidebarFolder& folder) {
        lib_.removeFolder(folder.folder);
    };
    sidebar_->onRescanFolder = [this](const SidebarFolder& folder) {
        lib_.rescanFolder(folder.folder);
    };
    sidebar_->onShowFolder = [this](const SidebarFolder& folder) { onShowFolder(folder.folder); };
}

void LibraryPage::bindGrid() {
    grid_->onSelectionChanged = [this] { tellSelection(); };
    grid_->onOpen = [this](int index) { lib_.openEditor(PhotoUrl(content_.photo(index).url)); };
    grid_->onContextMenu = [this](QPoint at) {
        if (grid_->selection().selectedCount() > 0) menu_->popup(at);
    };
    grid_->onCellSizeWanted = [this](int size) { setCellSize(size); };
    pictures_.onChanged = [this] { grid_->refresh(); };
    finder_.onFound = [this](std::span<const int> found) {
        const bool isOne = lib_.selection().get().size() == 1 && found.size() == 1;
        grid_->showSelection(found, isOne ? found.front() : keptCurrent_);
    };
    grid_->installEventFilter(this);
    grid_->viewport()->installEventFilter(this);
}

// A hand on the grid works with the whole selection.
bool LibraryPage::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    if (type == QEvent::MouseButtonPress || type == QEvent::KeyPress || type == QEvent::ContextMenu)
        finder_.finish();
    return QWidget::eventFilter(watched, event);
}

void LibraryPage::observeStore() {
    const auto watch = [this](const auto& subject, auto show) {
        subscriptions_.push_back(subject.observe(show));
        show();
    };
    watch(lib_.thumbSize(),
          [this] { grid_->setCellSize(static_cast<int>(lib_.thumbSize().get())); });
    watch(lib_.view(), [this] { showVisible(); });
    watch(lib_.restriction(), [this] {
        toProfile_->setVisible(bool(*lib_.restriction()));
        showAll_->setVisible(bool(*lib_.restriction()));
    });
    watch(lib_.selection(), [this] { showSelection(); });
    watch(lib_.favoriteRevision(), [this] { grid_->refresh(); });
    watch(lib_.version(), [this] { grid_->refresh(); });
    watch(lib_.metaRevision(), [this] { grid_->refresh(); });
    watch(lib_.sidebarState(), [this] {
        sidebar_->show(lib_.sidebarState().state());
        showEmptyState();
    });
    watch(lib_.gridToolsState(), [this] { toolbar_->showTools(lib_.gridToolsState().state()); });
    watch(lib_.filterState(), [this] { filter_->show(lib_.filterState().state()); });
    watch(lib_.gridSubtitle(), [this] { showSubtitle(); });
    watch(lib_.rootState(), [this] { showSubtitle(); });
    watch(lib_.searchState(), [this] {
        toolbar_->showSearch(lib_.searchState().state());
        if (!lib_.searchState().state().wantsFocus) return;
        lib_.setSearchFocus(false);
        toolbar_->searchField()->setFocus(Qt::ShortcutFocusReason);
        toolbar_->searchField()->selectAll();
    });
    watch(lib_.scrollTarget(), [this] {
        if (const auto target = lib_.scrollTarget().get()) grid_->reveal(content_.indexOf(*target));
    });
}

std::optional<LibraryPage::PhotoPlace> LibraryPage::topPhoto() const {
    const auto place = grid_->topPlace();
    if (!place || place->index >= content_.count()) return std::nullopt;
    return PhotoPlace{content_.photo(place->index).url, place->top};
}

void LibraryPage::restore(const PhotoPlace& place) {
    if (const int index = content_.indexOf(place.photo); index >= 0)
        grid_->restore({index, place.top});
}

// Other photos are shown: keeps the place where the same photo can be found again, and comes back
// to where one was in a scope.
void LibraryPage::showVisible() {
    const Scope& scope = lib_.scope().get();
    const bool isWhole = lib_.searchText().get().empty() && !lib_.filter().get().isActive();
    const auto top = topPhoto();
    const auto keyOf = [](const Scope& of) {
        return std::to_string(static_cast<int>(of.kind)) + of.folder;
    };
    if (shownWhole_ && content_.count() > 0) {
        places_.erase(keyOf(shownScope_));
        if (top) places_[keyOf(shownScope_)] = *top;
    }
    const bool isSame = scope == shownScope_ && isWhole == shownWhole_;
    shownScope_ = scope;
    shownWhole_ = isWhole;
    const int currentIndex = grid_->selection().current();
    const bool hasCurrent = currentIndex >= 0 && currentIndex < content_.count();
    const PhotoUrl current = hasCurrent ? content_.photo(currentIndex).url : PhotoUrl();
    content_.update();
    grid_->reload();
    const auto known = places_.find(keyOf(scope));
    if (isSame && top) {
        restore(*top);
    } else if (!isSame && isWhole && known != places_.end()) {
        restore(known->second);
    } else if (!isSame) {
        grid_->verticalScrollBar()->setValue(0);
    }
    keptCurrent_ = current.empty() ? -1 : content_.indexOf(current);
    finder_.begin(lib_.selection().get(), grid_->cellsOnScreen());
    showEmptyState();
}

void LibraryPage::showSelection() {
    if (telling_) return;
    keptCurrent_ = grid_->selection().current();
    finder_.begin(lib_.selection().get(), grid_->cellsOnScreen());
}

void LibraryPage::tellSelection() {
    PhotoSet::Urls chosen;
    const std::vector<int> selected = grid_->selection().indexes();
    chosen.reserve(selected.size());
    for (const int index : selected)
        chosen.insert(content_.photo(index).url);
    finder_.cancel();
    telling_ = true;
    lib_.setSelection(PhotoSet(std::move(chosen)));
    telling_ = false;
}

void LibraryPage::showSubtitle() {
    title_->setText(fromUtf8(lib_.rootState().state().windowTitle));
    subtitle_->setText(words(lib_.gridSubtitle().state()));
}

void LibraryPage::showEmptyState() {
    const auto state = lib_.emptyState();
    const bool appears = !state && middle_->currentWidget() != grid_;
    const bool hadKeyboard = grid_->hasFocus();
    middle_->setCurrentWidget(state ? static_cast<QWidget*>(empty_) : grid_);
    // A hidden grid would hand the keyboard to whatever comes next.
    if (state && hadKeyboard) empty_->setFocus();
    // Whoever searches or chooses in the sidebar keeps the keyboard there.
    const QWidget* focused = QApplication::focusWidget();
    const bool isFree = !focused || focused == empty_ || empty_->isAncestorOf(focused);
    if (appears && isFree) grid_->setFocus();
    if (!state) return lastSeen_.clear();
    const Scope& scope = lib_.scope().get();
    const bool isMissing = lib_.missingFolders().get().contains(scope.folder);
    empty_->show(*state, iconFor(*state, scope, isMissing));
    isMissing ? lastSeen_.show(scope.folder, lastSeenPx) : lastSeen_.clear();
}

void LibraryPage::pressEmptyButton() {
    if (!lib_.searchText().get().empty()) {
        lib_.setSearchText({});
        grid_->setFocus();
    } else if (lib_.filter().get().isActive()) {
        lib_.setFilter({});
    } else {
        onAddFolder();
    }
}

void LibraryPage::setCellSize(int wanted) {
    lib_.setThumbSize(std::clamp(wanted, Toolbar::smallestCell, Toolbar::largestCell));
}

void LibraryPage::changeCellSize(int steps) {
    const double factor = steps > 0 ? 1.25 : 0.8;
    setCellSize(static_cast<int>(std::lround(lib_.thumbSize().get() * factor)));
}

void LibraryPage::openFilter() {
    filter_->show(lib_.filterState().state());
    filter_->open();
}

void LibraryPage::setShowsSidebar(bool shows) {
    sidebar_->setVisible(shows);
}

QRect LibraryPage::cellOnScreen(const PhotoUrl& photo) const {
    const int index = content_.indexOf(photo);
    if (index < 0 || !grid_->isVisible()) return {};
    const QRect cell = grid_->cellOnScreen(index);
    if (!grid_->viewport()->rect().intersects(cell)) return {};
    return {grid_->viewport()->mapToGlobal(cell.topLeft()), cell.size()};
}

void LibraryPage::focusSearch() {
    lib_.setSearchFocus(true);
}

void LibraryPage::dragEnterEvent(QDragEnterEvent* event) {
    if (droppedFolders(event->mimeData()).empty()) return;
    sidebar_->showDropping(true);
    event->acceptProposedAction();
}

void LibraryPage::dragLeaveEvent(QDragLeaveEvent*) {
    sidebar_->showDropping(false);
}

void LibraryPage::dropEvent(QDropEvent* event) {
    sidebar_->showDropping(false);
    for (const auto& folder : droppedFolders(event->mimeData()))
        onAddGivenFolder(folder);
    event->acceptProposedAction();
}

void LibraryPage::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    content_.setPixelRatio(devicePixelRatioF());
    middle_->currentWidget()->setFocus();
}

} // namespace kelvaro
