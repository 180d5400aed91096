#include "ui/library/Sidebar.h"

#include "library/LibraryTexts.h"
#include "ui/Texts.h"
#include "ui/controls/Naming.h"
#include "ui/library/DroppedFolders.h"
#include "ui/library/SidebarDelegate.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QPainter>

namespace kelvaro {
Sidebar::Sidebar(const Appearance& appearance, QWidget* parent)
    : QListView(parent), appearance_(appearance), model_(new SidebarModel(this)) {
    named(this, "sidebar", words("Library and folders"), {});
    setAccessibleDescription(words("Choose which photos are shown; drop a folder here to add it"));
    setModel(model_);
    setItemDelegate(new SidebarDelegate(appearance, this));
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setFrameShape(QFrame::NoFrame);
    setMouseTracking(true);
    setAcceptDrops(true);
    viewport()->setAutoFillBackground(false);
    setViewportMargins(0, 8, 0, 8);
    QObject::connect(selectionModel(), &QItemSelectionModel::currentChanged, this,
                     [this](const QModelIndex& now) {
                         if (!showing_ && model_->scopeOf(now)) choose(now);
                     });
    QObject::connect(this, &QListView::clicked, this, [this](const QModelIndex& index) {
        if (!model_->scopeOf(index)) choose(index);
    });
}

QSize Sidebar::sizeHint() const {
    return {measure::sidebarWidth, 400};
}

void Sidebar::show(const SidebarState& state) {
    showing_ = true;
    model_->show(state);
    const QModelIndex scope = model_->indexOf(state.scope);
    selectionModel()->setCurrentIndex(scope, QItemSelectionModel::ClearAndSelect);
    showing_ = false;
}

void Sidebar::choose(const QModelIndex& index) {
    if (const auto scope = model_->scopeOf(index)) {
        if (onScopeChosen) onScopeChosen(*scope);
        return;
    }
    // The row that adds a folder is no scope: the one before stays chosen.
    show(SidebarState(model_->state()));
    if (onAddFolder) onAddFolder();
}

void Sidebar::keyPressEvent(QKeyEvent* event) {
    const bool enters = event->key() == Qt::Key_Return || event->key() == Qt::Key_Space;
    if (enters && currentIndex().isValid() && !model_->scopeOf(currentIndex())) {
        choose(currentIndex());
        return;
    }
    QListView::keyPressEvent(event);
}

void Sidebar::contextMenuEvent(QContextMenuEvent* event) {
    const SidebarFolder* found = model_->folderOf(
        event->reason() == QContextMenuEvent::Keyboard ? currentIndex() : indexAt(event->pos()));
    QMenu menu(this);
    if (found) {
        const SidebarFolder folder = *found;
        menu.addAction(words("Show in Finder"), [this, folder] { onShowFolder(folder); });
        menu.addAction(words("Look for Changes"), [this, folder] { onRescanFolder(folder); });
        menu.addSeparator();
        menu.addAction(words(texts::removeFolder), [this, folder] { onRemoveFolder(folder); });
    } else {
        menu.addAction(words("Add Folder…"), [this] { onAddFolder(); });
    }
    menu.exec(event->globalPos());
}

void Sidebar::showDropping(bool dropping) {
    dropping_ = dropping;
    viewport()->update();
}

void Sidebar::dragEnterEvent(QDragEnterEvent* event) {
    if (droppedFolders(event->mimeData()).empty()) return;
    showDropping(true);
    event->acceptProposedAction();
}

void Sidebar::dragMoveEvent(QDragMoveEvent* event) {
    if (dropping_) event->acceptProposedAction();
}

void Sidebar::dragLeaveEvent(QDragLeaveEvent*) {
    showDropping(false);
}

void Sidebar::dropEvent(QDropEvent* event) {
    showDropping(false);
    for (const auto& folder : droppedFolders(event->mimeData())) {
        if (onFolderDropped) onFolderDropped(folder);
    }
    event->acceptProposedAction();
}

void Sidebar::paintEvent(QPaintEvent* event) {
    QPainter painter(viewport());
    painter.fillRect(viewport()->rect(), appearance_.theme().panel);
    if (dropping_) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(appearance_.theme().accent, 2));
        painter.drawRoundedRect(viewport()->rect().adjusted(6, 2, -6, -6), 8, 8);
    }
    painter.end();
    QListView::paintEvent(event);
}

} // namespace kelvaro
