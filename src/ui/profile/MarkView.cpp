#include "ui/profile/MarkView.h"

#include "profile/Shares.h"
#include "ui/Texts.h"
#include "ui/profile/MarkAccess.h"

#include <QAccessible>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QToolTip>

namespace kelvaro {

MarkView::MarkView(const Appearance& appearance, QWidget* parent)
    : QWidget(parent), appearance_(appearance) {
    MarkAccess::install();
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
}

void MarkView::setMarks(std::vector<Mark> marks, qint64 total, const QString& description) {
    marks_ = std::move(marks);
    total_ = total;
    if (lit_ >= static_cast<int>(marks_.size())) lit_ = -1;
    setAccessibleDescription(description);
    updateGeometry();
    update();
}

QString MarkView::textOf(int mark) const {
    const Mark& one = marks_[static_cast<std::size_t>(mark)];
    const QString photos = counted(one.count, "1 photo", "%1 photos");
    if (one.count == 0) return words("%1: no photos").arg(one.label);
    return QString("%1: %2, %3")
        .arg(one.label, photos, fromUtf8(Share{one.count, total_}.percentText()));
}

int MarkView::markAt(QPointF position) const {
    for (int mark = 0; mark < static_cast<int>(marks_.size()); ++mark)
        if (place(mark).contains(position)) return mark;
    return -1;
}

void MarkView::light(int mark) {
    if (mark == lit_) return;
    lit_ = mark;
    const bool hasPhotos = mark >= 0 && marks_[static_cast<std::size_t>(mark)].count > 0;
    setCursor(hasPhotos ? Qt::PointingHandCursor : Qt::ArrowCursor);
    update();
}

void MarkView::choose(int mark) {
    if (mark < 0 || marks_[static_cast<std::size_t>(mark)].count == 0) return;
    QToolTip::hideText();
    if (onChosen) onChosen(mark);
}

bool MarkView::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip) return QWidget::event(event);
    auto* help = static_cast<QHelpEvent*>(event);
    const int mark = markAt(help->pos());
    if (mark < 0)
        QToolTip::hideText();
    else
        QToolTip::showText(help->globalPos(), textOf(mark), this, place(mark).toAlignedRect());
    return true;
}

void MarkView::mouseMoveEvent(QMouseEvent* event) {
    light(markAt(event->position()));
}

void MarkView::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) pressed_ = markAt(event->position());
}

void MarkView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    const int pressed = std::exchange(pressed_, -1);
    if (pressed == markAt(event->position())) choose(pressed);
}

void MarkView::leaveEvent(QEvent* event) {
    QWidget::leaveEvent(event);
    if (!hasFocus()) light(-1);
}

int MarkView::next(int mark, int key) const {
    const int last = static_cast<int>(marks_.size()) - 1;
    switch (key) {
    case Qt::Key_Left:
    case Qt::Key_Up:
        return std::max(mark - 1, 0);
    case Qt::Key_Right:
    case Qt::Key_Down:
        return std::min(mark + 1, last);
    case Qt::Key_Home:
        return 0;
    case Qt::Key_End:
        return last;
    default:
        return mark;
    }
}

void MarkView::keyPressEvent(QKeyEvent* event) {
    const int key = event->key();
    const bool chooses = key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space;
    if (chooses && lit_ >= 0) return choose(lit_);
    const int wanted = marks_.empty() ? -1 : next(lit_, key);
    if (wanted == lit_) return QWidget::keyPressEvent(event);
    light(wanted);
    QToolTip::showText(mapToGlobal(place(wanted).bottomLeft().toPoint()), textOf(wanted), this);
    QAccessibleEvent reached(this, QAccessible::Focus);
    reached.setChild(wanted);
    QAccessible::updateAccessibility(&reached);
}

void MarkView::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    light(-1);
}

QColor faded(QColor colour, double alpha) {
    colour.setAlphaF(static_cast<float>(alpha));
    return colour;
}

} // namespace kelvaro
