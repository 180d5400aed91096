#include "ui/editor/CanvasTool.h"

#include "ui/theme/Theme.h"

#include <QPainterPath>

#include <algorithm>

namespace kelvaro {

void drawLegible(QPainter& painter, const QPainterPath& path, double widthPx, Qt::PenStyle style) {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0, 0, 0, 130), widthPx + 2, Qt::SolidLine, Qt::RoundCap));
    painter.drawPath(path);
    painter.setPen(QPen(QColor(255, 255, 255, 235), widthPx, style, Qt::RoundCap));
    painter.drawPath(path);
}

void drawHandle(QPainter& painter, QPointF at, bool active, const QColor& accent) {
    painter.setPen(QPen(QColor(0, 0, 0, 140), 1));
    painter.setBrush(active ? accent : QColor(255, 255, 255));
    painter.drawEllipse(at, 5, 5);
}

void drawTag(QPainter& painter, QPointF at, const QString& text, const QRectF& inside) {
    painter.setFont(interfaceFont(TextRole::caption));
    const QFontMetrics metrics(painter.font());
    QRectF box(at, QSizeF(metrics.horizontalAdvance(text) + 16, 22));
    box.moveLeft(std::clamp(box.left(), inside.left() + 4,
                            std::max(inside.left() + 4, inside.right() - box.width() - 4)));
    box.moveTop(std::clamp(box.top(), inside.top() + 4,
                           std::max(inside.top() + 4, inside.bottom() - box.height() - 4)));
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(20, 20, 20, 205));
    painter.drawRoundedRect(box, 6, 6);
    painter.setPen(QColor(240, 240, 240));
    painter.drawText(box, Qt::AlignCenter, text);
}

} // namespace kelvaro
