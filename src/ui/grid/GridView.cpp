#include "ui/grid/GridView.h"

#include "ui/Texts.h"
#include "ui/grid/CellPainter.h"
#include "ui/grid/GridAccess.h"

#include <QApplication>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>

namespace kelvaro {

GridView::GridView(const Appearance& appearance, GridContent& content, QWidget* parent)
    : QAbstractScrollArea(parent), appearance_(appearance), content_(content) {
    GridAccess::install();
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    verticalScrollBar()->setSingleStep(40);
    verticalScrollBar()->setFocusPolicy(Qt::NoFocus);
}

void GridView::reload() {
    selection_ = GridSelection(content_.count());
    hovered_ = -1;
    gesture_ = Gesture::none;
    band_ = {};
    headings_ = content_.headings();
    layOut();
}

void GridView::layOut() {
    std::vector<int> starts;
    starts.reserve(headings_.size());
    for (const GridHeading& heading : headings_)
        starts.push_back(heading.start);
    layout_ = GridLayout(content_.count(), std::move(starts), viewport()->width(), wantedCell_);
    verticalScrollBar()->setPageStep(viewport()->height());
    const int reach = std::max(0, layout_.contentHeight() - viewport()->height());
    verticalScrollBar()->setRange(0, reach);
    verticalScrollBar()->setEnabled(reach > 0); // without a handle where nothing scrolls
    tellWhatIsWanted();
    viewport()->update();
}

int GridView::scrollTop() const {
    return verticalScrollBar()->value();
}

QRect GridView::cellOnScreen(int index) const {
    return layout_.cellRect(index).translated(0, -scrollTop());
}

CellRange GridView::cellsOnScreen() const {
    return layout_.cellsBetween(scrollTop(), scrollTop() + viewport()->height() - 1);
}

void GridView::tellWhatIsWanted() {
    const int top = scrollTop(), page = viewport()->height();
    content_.wants(cellsOnScreen(), layout_.cellsBetween(top - page, top + 2 * page),
                   layout_.cellSize());
}

void GridView::refreshCell(int index) {
    const int reach = GridLayout::gap;
    viewport()->update(cellOnScreen(index).adjusted(-reach, -reach, reach, reach));
}

// --- Painting ---

void GridView::paintEvent(QPaintEvent* event) {
    QPainter painter(viewport());
    painter.fillRect(event->rect(), appearance_.theme().window);
    if (layout_.count() == 0) return;
    paintCells(painter, event->rect());
    paintHeadings(painter);
    if (gesture_ != Gesture::band) return;
    QColor fill = appearance_.theme().accent;
    painter.setPen(fill);
    fill.setAlphaF(0.12f);
    painter.setBrush(fill);
    painter.drawRect(band_.translated(0, -scrollTop()).adjusted(0, 0, -1, -1));
}

void GridView::paintCells(QPainter& painter, const QRect& area) {
    const int top = scrollTop();
    const CellRange cells = layout_.cellsBetween(area.top() + top - GridLayout::gap,
                                                 area.bottom() + top + GridLayout::gap);
    const double ratio = devicePixelRatioF();
    for (int index = cells.first; index < cells.last; ++index) {
        const QRect rect = layout_.cellRect(index).translated(0, -top);
        const GridCell cell = content_.cell(index);
        const QSize size = (photoRect(rect, cell.shape, ratio).size() * ratio).toSize();
        const CellState state{.selected = selection_.contains(index),
                              .hovered = index == hovered_,
                              .current = index == selection_.current() && hasFocus()};
        paintCell(painter, rect, cell, content_.picture(index, size), state, appearance_.theme());
    }
}

void GridView::paintHeadings(QPainter& painter) {
    if (headings_.empty()) return;
    const int top = scrollTop(), bottom = top + viewport()->height();
    const int first = layout_.groupAt(top);
    for (int group = first + 1; group < layout_.groupCount(); ++group) {
        const QRect rect = layout_.headingRect(group);
        if (rect.top() >= bottom) break;
        paintHeading(painter, group, rect.top() - top, false);
    }
    // The topmost group's heading stays in view until the next one pushes it out.
    const int own = layout_.headingRect(first).top() - top;
    const int floor = layout_.groupBottom(first) - top - GridLayout::headingHeight;
    paintHeading(painter, first, std::min(std::max(own, 0), floor), own < 0);
}

void GridView::paintHeading(QPainter& painter, int group, int top, bool floating) {
    const Theme& theme = appearance_.theme();
    const QRect band(0, top, viewport()->width(), GridLayout::headingHeight);
    if (floating) {
        painter.fillRect(band.adjusted(0, 0, 0, -4), theme.window);
        QLinearGradient fade(band.bottomLeft() - QPoint(0, 3), band.bottomLeft() + QPoint(0, 4));
        QColor clear = theme.window;
        clear.setAlpha(0);
        fade.setColorAt(0, theme.window);
        fade.setColorAt(1, clear);
        painter.fillRect(QRect(0, band.bottom() - 3, band.width(), 8), fade);
    }
    const QRect text = band.adjusted(GridLayout::margin, 8, -GridLayout::margin, -4);
    const CellRange cells = layout_.groupCells(group);
    const QString count = number(cells.last - cells.first);
    painter.setFont(interfaceFont(TextRole::caption));
    painter.setPen(theme.secondary);
    painter.drawText(text, Qt::AlignRight | Qt::AlignVCenter, count);
    painter.setFont(interfaceFont(TextRole::strong));
    painter.setPen(theme.text);
    const int room = text.width() - painter.fontMetrics().horizontalAdvance(count) - 16;
    painter.drawText(text, Qt::AlignLeft | Qt::AlignVCenter,
                     painter.fontMetrics().elidedText(headings_[static_cast<size_t>(group)].title,
                                                      Qt::ElideRight, room));
}

// --- Size and place ---

void GridView::resizeEvent(QResizeEvent*) {
    const auto place = topPlace();
    layOut();
    if (place) restore(*place);
}

void GridView::scrollContentsBy(int, int) {
    tellWhatIsWanted();
    setHovered(-1);
    viewport()->update();
}

std::optional<GridView::Place> GridView::topPlace() const {
    const CellRange cells =
        layout_.cellsBetween(scrollTop(), scrollTop() + viewport()->height() - 1);
    if (cells.isEmpty() || scrollTop() == 0) return std::nullopt;
    return Place{cells.first, cellOnScreen(cells.first).top()};
}

void GridView::restore(Place place) {
    if (place.index < 0 || place.index >= layout_.count()) return;
    verticalScrollBar()->setValue(layout_.cellRect(place.index).top() - place.top);
}

std::optional<GridView::Place> GridView::placeToKeep() const {
    const QPoint pointer = viewport()->mapFromGlobal(QCursor::pos());
    if (viewport()->rect().contains(pointer)) {
        if (const auto under = layout_.cellAt(toContent(pointer)))
            return Place{*under, cellOnScreen(*under).top()};
    }
    const CellRange shown =
        layout_.cellsBetween(scrollTop(), scrollTop() + viewport()->height() - 1);
    for (int index = shown.first; index < shown.last; ++index) {
        if (selection_.contains(index)) return Place{index, cellOnScreen(index).top()};
    }
    return topPlace();
}

void GridView::setCellSize(int wanted) {
    if (wanted == wantedCell_) return;
    const auto kept = placeToKeep();
    const int before = layout_.cellSize();
    const bool wasAtTop = scrollTop() == 0;
    wantedCell_ = wanted;
    layOut();
    if (!kept) return;
    // The beginning stays the beginning while the photo is in view there.
    if (wasAtTop && layout_.cellRect(kept->index).bottom() < viewport()->height()) return;
    // The middle of the photo stays, not its upper edge.
    restore({kept->index, kept->top + (before - layout_.cellSize()) / 2});
}

void GridView::reveal(int index) {
    if (index < 0 || index >= layout_.count()) return;
    const QRect cell = layout_.cellRect(index);
    const int above = headings_.empty() ? GridLayout::gap : GridLayout::headingHeight;
    const int top = scrollTop(), page = viewport()->height();
    if (cell.top() - above < top) {
        verticalScrollBar()->setValue(cell.top() - above);
    } else if (cell.bottom() + GridLayout::groupGap > top + page) {
        verticalScrollBar()->setValue(cell.bottom() + GridLayout::groupGap - page);
    }
}

// --- Selection from outside ---

void GridView::showSelection(std::span<const int> indexes, int current) {
    selection_.setSelected(indexes);
    if (current >= 0) selection_.setCurrent(current);
    viewport()->update();
}

void GridView::selectAll() {
    selection_.selectAll();
    changed();
}

void GridView::selectNone() {
    selection_.clear();
    changed();
}

void GridView::changed() {
    viewport()->update();
    if (QAccessible::isActive() && selection_.current() >= 0) {
        QAccessibleEvent told(this, QAccessible::Focus);
        told.setChild(selection_.current());
        QAccessible::updateAccessibility(&told);
    }
    if (onSelectionChanged) onSelectionChanged();
}

void GridView::setHovered(int index) {
    if (hovered_ == index) return;
    if (hovered_ >= 0 && hovered_ < layout_.count()) refreshCell(hovered_);
    hovered_ = index;
    if (hovered_ >= 0) refreshCell(hovered_);
}

bool GridView::viewportEvent(QEvent* event) {
    if (event->type() == QEvent::Leave) setHovered(-1);
    return QAbstractScrollArea::viewportEvent(event);
}

void GridView::focusInEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusInEvent(event);
    viewport()->update();
}

void GridView::focusOutEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusOutEvent(event);
    viewport()->update();
}

} // namespace kelvaro
