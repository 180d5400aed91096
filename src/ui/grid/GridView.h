// The grid of photos: paints only what is on the screen, keeps the heading of the topmost group in
// view, and turns clicks and keys into a selection and intentions. What it shows comes from its
// content; what is done with intentions is up to whoever listens. Main thread.
#pragma once

#include "ui/grid/GridContent.h"
#include "ui/grid/GridSelection.h"
#include "ui/theme/Appearance.h"

#include <QAbstractScrollArea>
#include <QElapsedTimer>

#include <functional>
#include <optional>
#include <span>

namespace kelvaro {

class GridView final : public QAbstractScrollArea {
public:
    // A cell and where its top stands on the screen, to find the place again after a change.
    struct Place {
        int index = -1;
        int top = 0;
    };

    GridView(const Appearance& appearance, GridContent& content, QWidget* parent = nullptr);

    // The content shows other photos: lays out anew and forgets the selection.
    void reload();
    // The same photos look different.
    void refresh() { viewport()->update(); }
    void refreshCell(int index);
    // About how large cells should be; the photo at `keep` stays where it is.
    void setCellSize(int wanted);
    int cellSize() const { return wantedCell_; }

    const GridSelection& selection() const { return selection_; }
    // Without telling `onSelectionChanged`: the selection comes from outside.
    void showSelection(std::span<const int> indexes, int current);
    void selectAll();
    void selectNone();

    void reveal(int index);
    // The topmost cell on the screen; none when there is nothing.
    std::optional<Place> topPlace() const;
    void restore(Place place);
    const GridContent& content() const { return content_; }
    const GridLayout& gridLayout() const { return layout_; }
    // The cell's rectangle on the viewport.
    QRect cellOnScreen(int index) const;
    // The cells that are on the screen now.
    CellRange cellsOnScreen() const;

    std::function<void()> onSelectionChanged;
    std::function<void(int index)> onOpen;
    std::function<void(QPoint globalPosition)> onContextMenu;
    std::function<void(int wanted)> onCellSizeWanted;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    enum class Gesture { none, click, band, drag };

    void layOut();
    int scrollTop() const;
    QPoint toContent(QPoint onViewport) const { return onViewport + QPoint(0, scrollTop()); }
    void tellWhatIsWanted();
    void paintCells(QPainter& painter, const QRect& area);
    void paintHeadings(QPainter& painter);
    void paintHeading(QPainter& painter, int group, int top, bool floating);
    // The place that a change of the cell size keeps: under the pointer, else of the selection.
    std::optional<Place> placeToKeep() const;
    void changed();
    void setHovered(int index);
    void moveBand(QPoint onViewport);
    void startDrag();
    bool stepWithKey(QKeyEvent* event);
    bool typeAhead(QKeyEvent* event);
    void pick(int index, Qt::KeyboardModifiers held);

    const Appearance& appearance_;
    GridContent& content_;
    GridLayout layout_;
    GridSelection selection_;
    std::vector<GridHeading> headings_;
    int wantedCell_ = 160;
    int hovered_ = -1;

    Gesture gesture_ = Gesture::none;
    QPoint pressedAt_; // content
    int pressedCell_ = -1;
    bool collapsesOnRelease_ = false;
    GridSelection beforeBand_;
    QRect band_; // content
    QString typed_;
    QElapsedTimer sinceTyped_;
};

} // namespace kelvaro
