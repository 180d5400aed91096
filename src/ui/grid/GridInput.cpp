// What clicks, drags and keys do in the grid; the other half of GridView.
#include "ui/Texts.h"
#include "ui/grid/CellPainter.h"
#include "ui/grid/GridView.h"

#include <QApplication>
#include <QDrag>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QUrl>

#include <algorithm>
#include <array>

namespace kelvaro {
namespace {

constexpr qint64 typingPauseMs = 1000;
constexpr int cellSizeStep = 16;

struct StepKey {
    int key;
    GridLayout::Step step;
};
constexpr std::array stepKeys{
    StepKey{Qt::Key_Left, GridLayout::Step::left},
    StepKey{Qt::Key_Right, GridLayout::Step::right},
    StepKey{Qt::Key_Up, GridLayout::Step::up},
    StepKey{Qt::Key_Down, GridLayout::Step::down},
    StepKey{Qt::Key_PageUp, GridLayout::Step::pageUp},
    StepKey{Qt::Key_PageDown, GridLayout::Step::pageDown},
    StepKey{Qt::Key_Home, GridLayout::Step::home},
    StepKey{Qt::Key_End, GridLayout::Step::end},
};

GridSelection::Mode modeFor(Qt::KeyboardModifiers held) {
    if (held & Qt::ShiftModifier) return GridSelection::Mode::extend;
    if (held & Qt::ControlModifier) return GridSelection::Mode::toggle;
    return GridSelection::Mode::replace;
}

} // namespace

void GridView::pick(int index, Qt::KeyboardModifiers held) {
    selection_.choose(index, modeFor(held));
    changed();
}

void GridView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    pressedAt_ = toContent(event->pos());
    const auto cell = layout_.cellAt(pressedAt_);
    pressedCell_ = cell.value_or(-1);
    gesture_ = Gesture::click;
    collapsesOnRelease_ = false;
    if (!cell) {
        beforeBand_ = selection_;
        if (!(event->modifiers() & (Qt::ControlModifier | Qt::ShiftModifier)) &&
            selection_.selectedCount() > 0)
            selectNone();
        return;
    }
    // A press on a selected photo may begin to drag them all: what a click means waits.
    if (selection_.contains(*cell) && event->modifiers() == Qt::NoModifier) {
        collapsesOnRelease_ = true;
        return;
    }
    pick(*cell, event->modifiers());
}

void GridView::mouseMoveEvent(QMouseEvent* event) {
    if (gesture_ == Gesture::none || !(event->buttons() & Qt::LeftButton)) {
        setHovered(layout_.cellAt(toContent(event->pos())).value_or(-1));
        return;
    }
    const bool far = (toContent(event->pos()) - pressedAt_).manhattanLength() >=
                     QApplication::startDragDistance();
    if (gesture_ == Gesture::click && far) {
        gesture_ = pressedCell_ < 0 ? Gesture::band : Gesture::drag;
        if (gesture_ == Gesture::drag) startDrag();
    }
    if (gesture_ == Gesture::band) moveBand(event->pos());
}

void GridView::moveBand(QPoint onViewport) {
    // Dragging past an edge scrolls there.
    const int above = std::min(0, onViewport.y());
    const int below = std::max(0, onViewport.y() - viewport()->height());
    verticalScrollBar()->setValue(scrollTop() + (above + below) / 2);
    band_ = QRect(pressedAt_, toContent(onViewport)).normalized();
    const bool toggles = QApplication::keyboardModifiers() & Qt::ControlModifier;
    GridSelection before = beforeBand_;
    if (!toggles && !(QApplication::keyboardModifiers() & Qt::ShiftModifier)) before.clear();
    const auto cells = layout_.cellsIn(band_);
    if (QApplication::keyboardModifiers() & Qt::ShiftModifier) {
        std::vector<int> both = before.indexes();
        for (const CellRange& row : cells) {
            for (int index = row.first; index < row.last; ++index)
                both.push_back(index);
        }
        selection_.setSelected(both);
    } else {
        selection_.applyBand(before, cells, toggles);
    }
    changed();
}

void GridView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    if (gesture_ == Gesture::click && collapsesOnRelease_) pick(pressedCell_, Qt::NoModifier);
    gesture_ = Gesture::none;
    band_ = {};
    viewport()->update();
}

void GridView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || event->modifiers() != Qt::NoModifier) return;
    gesture_ = Gesture::none;
    if (const auto cell = layout_.cellAt(toContent(event->pos())); cell && onOpen) onOpen(*cell);
}

void GridView::contextMenuEvent(QContextMenuEvent* event) {
    QPoint at = event->globalPos();
    if (event->reason() == QContextMenuEvent::Keyboard) {
        if (selection_.current() < 0) return;
        reveal(selection_.current());
        at = viewport()->mapToGlobal(cellOnScreen(selection_.current()).center());
    } else if (const auto cell = layout_.cellAt(toContent(event->pos()))) {
        if (!selection_.contains(*cell)) pick(*cell, Qt::NoModifier);
    } else {
        selectNone();
    }
    if (onContextMenu) onContextMenu(at);
}

void GridView::startDrag() {
    QList<QUrl> urls;
    for (const int index : selection_.indexes()) {
        // Bytes, not text: a name need not be valid UTF-8.
        const auto path = QByteArray::fromStdString(content_.file(index).string());
        urls << QUrl::fromEncoded("file://" + path.toPercentEncoding("/"));
    }
    if (urls.isEmpty()) return;
    auto* carried = new QMimeData;
    carried->setUrls(urls);
    auto* drag = new QDrag(this);
    drag->setMimeData(carried);
    const QImage picture = content_.picture(pressedCell_, {128, 128}).image;
    if (!picture.isNull()) {
        QPixmap shown = QPixmap::fromImage(picture.scaled(
            QSize(128, 128) * devicePixelRatioF(), Qt::KeepAspectRatio, Qt::SmoothTransformation));
        shown.setDevicePixelRatio(devicePixelRatioF());
        drag->setPixmap(shown);
    }
    drag->exec(Qt::CopyAction);
    gesture_ = Gesture::none;
}

void GridView::keyPressEvent(QKeyEvent* event) {
    const bool types = sinceTyped_.isValid() && sinceTyped_.elapsed() < typingPauseMs;
    const bool opens = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter ||
                       (event->key() == Qt::Key_Space && !types);
    if (opens && event->modifiers() == Qt::NoModifier) {
        if (selection_.current() >= 0 && selection_.current() < layout_.count() && onOpen)
            onOpen(selection_.current());
        return;
    }
    if (event->key() == Qt::Key_Space && event->modifiers() == Qt::ControlModifier) {
        pick(selection_.current(), Qt::ControlModifier);
        return;
    }
    if (event->key() == Qt::Key_Escape) sinceTyped_.invalidate();
    if (event->key() == Qt::Key_Escape && selection_.selectedCount() > 0) {
        selectNone();
        return;
    }
    if (stepWithKey(event) || typeAhead(event)) return;
    event->ignore();
}

bool GridView::stepWithKey(QKeyEvent* event) {
    const auto found = std::ranges::find(stepKeys, event->key(), &StepKey::key);
    if (found == stepKeys.end() || layout_.count() == 0) return false;
    if (event->modifiers() & (Qt::AltModifier | Qt::MetaModifier)) return false;
    sinceTyped_.invalidate();
    const int from = selection_.current();
    // The first key chooses what is on the screen, not the far end of the library.
    const int next = from < 0 ? topPlace().value_or(Place{0, 0}).index
                              : layout_.stepped(from, found->step, viewport()->height());
    if (event->modifiers() == Qt::ControlModifier) {
        selection_.setCurrent(next); // moves without selecting; Ctrl+Space selects
        viewport()->update();
    } else {
        pick(next, event->modifiers());
    }
    reveal(next);
    return true;
}

bool GridView::typeAhead(QKeyEvent* event) {
    const QString text = event->text();
    if (text.isEmpty() || !text.at(0).isPrint() ||
        (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)))
        return false;
    const bool goesOn = sinceTyped_.isValid() && sinceTyped_.elapsed() < typingPauseMs;
    typed_ = goesOn ? typed_ + text : text;
    sinceTyped_.start();
    // The first letter looks behind the current photo, further ones stay while it matches.
    const int from = std::max(0, selection_.current() + (typed_.size() == 1 ? 1 : 0));
    const int found = content_.find(typed_, from);
    if (found >= 0) {
        pick(found, Qt::NoModifier);
        reveal(found);
    }
    return true;
}

void GridView::wheelEvent(QWheelEvent* event) {
    if (!(event->modifiers() & Qt::ControlModifier)) {
        QAbstractScrollArea::wheelEvent(event);
        return;
    }
    const int direction = event->angleDelta().y() > 0 ? 1 : -1;
    if (onCellSizeWanted) onCellSizeWanted(wantedCell_ + direction * cellSizeStep);
    event->accept();
}

} // namespace kelvaro
