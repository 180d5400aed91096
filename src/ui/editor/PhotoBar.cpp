#include "ui/editor/PhotoBar.h"

#include "ui/Texts.h"
#include "ui/controls/Naming.h"

#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QToolTip>

#include <algorithm>

namespace kelvaro {
namespace {

constexpr int cellPx = 60, gapPx = 6, sidePx = 12, topPx = 10, outlinePx = 2;
constexpr int stepPx = cellPx + gapPx;
constexpr int nearbyCells = 12;
constexpr std::size_t mostDrawn = 500;
constexpr int markPx = 12;

} // namespace

PhotoBar::PhotoBar(const Appearance& appearance, LibraryStore& lib, ThumbnailLoader& loader,
                   QWidget* parent)
    : QAbstractScrollArea(parent),
      appearance_(appearance),
      pictures_(appearance, loader),
      content_(lib, pictures_) {
    named(this, "photoBar", words("Photo bar"), words("A click opens a photo"));
    setToolTip({});
    setFixedHeight(barHeight);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setMouseTracking(true);
    pictures_.onChanged = [this] { viewport()->update(); };
    const auto watch = [this](const auto& subject, auto show) {
        subscriptions_.push_back(subject.observe(show));
    };
    watch(lib.view(), [this] { layOut(); });
    watch(lib.version(), [this] {
        tellWhatIsWanted();
        viewport()->update();
    });
    watch(lib.favoriteRevision(), [this] { viewport()->update(); });
}

void PhotoBar::setOpen(const PhotoUrl& photo) {
    open_ = photo;
    content_.setPixelRatio(devicePixelRatioF());
    layOut();
}

void PhotoBar::layOut() {
    content_.update();
    if (drawn_.size() > mostDrawn) drawn_.clear();
    openIndex_ = content_.indexOf(open_);
    const int length = 2 * sidePx + content_.count() * stepPx - gapPx;
    horizontalScrollBar()->setRange(0, std::max(0, length - viewport()->width()));
    horizontalScrollBar()->setPageStep(viewport()->width());
    reveal();
    tellWhatIsWanted();
    viewport()->update();
}

void PhotoBar::reveal() {
    if (openIndex_ < 0) return;
    const int middle = sidePx + openIndex_ * stepPx + cellPx / 2;
    horizontalScrollBar()->setValue(middle - viewport()->width() / 2);
}

void PhotoBar::tellWhatIsWanted() {
    if (!isVisible()) return;
    const int first = std::max(0, (horizontalScrollBar()->value() - sidePx) / stepPx);
    const int last = std::min(content_.count(), first + viewport()->width() / stepPx + 2);
    content_.wants(
        {first, last},
        {std::max(0, first - nearbyCells), std::min(content_.count(), last + nearbyCells)}, cellPx);
}

QRect PhotoBar::cellAt(int index) const {
    return {sidePx + index * stepPx - horizontalScrollBar()->value(), topPx, cellPx, cellPx};
}

QRect PhotoBar::cellOf(const PhotoUrl& photo) const {
    const int index = content_.indexOf(photo);
    return index < 0 ? QRect() : cellAt(index);
}

int PhotoBar::indexAt(QPoint at) const {
    const int along = at.x() + horizontalScrollBar()->value() - sidePx;
    const int index = along / stepPx;
    const bool hits = along >= 0 && index < content_.count() && along % stepPx < cellPx;
    return hits ? index : -1;
}

void PhotoBar::paintEvent(QPaintEvent*) {
    const Theme& theme = appearance_.theme();
    QPainter painter(viewport());
    painter.fillRect(viewport()->rect(), theme.window);
    painter.setRenderHint(QPainter::Antialiasing);
    const int first = std::max(0, (horizontalScrollBar()->value() - sidePx) / stepPx);
    for (int index = first; index < content_.count(); ++index) {
        const QRect cell = cellAt(index);
        if (cell.left() > viewport()->width()) break;
        const GridCell shown = content_.cell(index);
        const QSize shape = shown.shape.isEmpty() ? QSize(3, 2) : shown.shape;
        const QSize size = shape.scaled(cell.size(), Qt::KeepAspectRatio);
        const QRect place(cell.center() - QPoint(size.width() / 2 - 1, size.height() / 2 - 1),
                          size);
        const double ratio = devicePixelRatioF();
        CellPicture picture = content_.picture(index, (QSizeF(size) * ratio).toSize());
        QImage& drawn = drawn_[content_.photo(index).url];
        if (picture.image.isNull())
            picture.image = drawn;
        else
            drawn = picture.image;
        painter.setOpacity(index == openIndex_ || index == hovered_ ? 1 : 0.78);
        if (picture.image.isNull()) {
            painter.fillRect(place,
                             picture.average.isValid() ? picture.average : theme.placeholder);
        } else {
            painter.setRenderHint(QPainter::SmoothPixmapTransform);
            painter.drawImage(place, picture.image);
        }
        painter.setOpacity(1);
        if (shown.isFavorite)
            painter.drawPixmap(
                cell.right() - markPx, cell.bottom() - markPx,
                appearance_.pixmap(IconName::favoriteFilled, markPx, theme.heart, ratio));
        if (index != openIndex_) continue;
        painter.setPen(QPen(theme.accent, outlinePx));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRectF(place).adjusted(-3, -3, 3, 3));
    }
}

void PhotoBar::resizeEvent(QResizeEvent*) {
    layOut();
}

void PhotoBar::scrollContentsBy(int, int) {
    tellWhatIsWanted();
    viewport()->update();
}

void PhotoBar::mousePressEvent(QMouseEvent* event) {
    const int index = indexAt(event->position().toPoint());
    if (event->button() == Qt::LeftButton && index >= 0 && onOpen)
        onOpen(PhotoUrl(content_.photo(index).url));
}

void PhotoBar::mouseMoveEvent(QMouseEvent* event) {
    const int index = indexAt(event->position().toPoint());
    if (std::exchange(hovered_, index) != index) viewport()->update();
}

void PhotoBar::wheelEvent(QWheelEvent* event) {
    const QPoint turned = event->angleDelta();
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() - turned.x() - turned.y());
    event->accept();
}

void PhotoBar::contextMenuEvent(QContextMenuEvent* event) {
    const int index = indexAt(event->pos());
    if (index < 0) return;
    if (onOpen) onOpen(PhotoUrl(content_.photo(index).url));
    if (onContextMenu) onContextMenu(event->globalPos());
}

bool PhotoBar::viewportEvent(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        const int index = indexAt(help->pos());
        if (index >= 0) QToolTip::showText(help->globalPos(), content_.cell(index).name, this);
        return true;
    }
    if (event->type() == QEvent::Leave && std::exchange(hovered_, -1) >= 0) viewport()->update();
    return QAbstractScrollArea::viewportEvent(event);
}

} // namespace kelvaro
