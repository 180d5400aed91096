#include "ui/grid/CellPainter.h"

#include "ui/theme/Icons.h"

#include <QPixmapCache>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelvaro {
namespace {

// Half of the gap between cells is what a selection may use: 2 px of air, then a line of 2 px that
// reaches to the middle of the gap.
constexpr int photoInset = 1;
constexpr int badgePx = 14, badgeMargin = 6;
constexpr int shadowReachPx = 3; // around a badge
constexpr int smallestCellWithBadges = 56, smallestCellWithFullBadges = 110;

const QColor badgeInk("#ffffff");

// The icon's soft shadow, made of many faint copies, so that a badge reads on any photo.
QPixmap badgeShadow(IconName name, double ratio) {
    const QString key = QString("kelvaro-badge-%1-%2").arg(static_cast<int>(name)).arg(ratio);
    QPixmap shadow;
    if (QPixmapCache::find(key, &shadow)) return shadow;
    constexpr int side = badgePx + 2 * shadowReachPx;
    shadow = QPixmap(QSizeF(side * ratio, side * ratio).toSize());
    shadow.setDevicePixelRatio(ratio);
    shadow.fill(Qt::transparent);
    QPainter painter(&shadow);
    const QPixmap ink = iconPixmap(name, badgePx, QColor(0, 0, 0), ratio);
    for (const double radius : {0.8, 1.6, 2.4}) {
        painter.setOpacity(0.10 / radius);
        for (int step = 0; step < 12; ++step) {
            const double angle = step * std::numbers::pi / 6;
            painter.drawPixmap(QPointF(shadowReachPx + radius * std::cos(angle),
                                       shadowReachPx + 0.4 + radius * std::sin(angle)),
                               ink);
        }
    }
    painter.end();
    QPixmapCache::insert(key, shadow);
    return shadow;
}

void paintBadge(QPainter& painter, QPointF at, IconName name, const QColor& colour) {
    const double ratio = painter.device()->devicePixelRatioF();
    painter.drawPixmap(at - QPointF(shadowReachPx, shadowReachPx), badgeShadow(name, ratio));
    painter.drawPixmap(at, iconPixmap(name, badgePx, colour, ratio));
}

void paintRawBadge(QPainter& painter, QPointF rightTop, bool isSmall) {
    QFont font = interfaceFont(TextRole::caption);
    font.setPixelSize(isSmall ? 7 : 9);
    font.setWeight(QFont::Bold);
    const QFontMetricsF metrics(font);
    const QString text = "RAW";
    const double width = metrics.horizontalAdvance(text) + (isSmall ? 6 : 8);
    const QRectF plate(rightTop.x() - width, rightTop.y(), width, isSmall ? 10 : badgePx);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 115));
    painter.drawRoundedRect(plate, 3, 3);
    painter.setFont(font);
    painter.setPen(badgeInk);
    painter.drawText(plate, Qt::AlignCenter, text);
}

void paintBadges(QPainter& painter, const QRectF& photo, const QRect& cell, const GridCell& what,
                 const Theme& theme) {
    if (cell.width() < smallestCellWithBadges) return;
    painter.setRenderHint(QPainter::Antialiasing);
    // On narrow photos the badges stand in the cell's corner instead of on top of each other.
    const QRectF corners = photo.width() < 52 ? QRectF(cell) : photo;
    const double bottom = corners.bottom() - badgeMargin - badgePx;
    double left = corners.left() + badgeMargin;
    if (what.isFavorite) {
        paintBadge(painter, {left, bottom}, IconName::favoriteFilled, theme.heart);
        left += badgePx + 4;
    }
    if (what.isEdited) paintBadge(painter, {left, bottom}, IconName::edited, badgeInk);
    if (what.isMissing) {
        paintBadge(painter, {corners.left() + badgeMargin, corners.top() + badgeMargin},
                   IconName::driveMissing, badgeInk);
    }
    if (what.isRaw) {
        const bool isSmall = cell.width() < smallestCellWithFullBadges;
        const double margin = isSmall ? badgeMargin / 2.0 : badgeMargin;
        paintRawBadge(painter, {corners.right() - margin, corners.top() + margin}, isSmall);
    }
    painter.setRenderHint(QPainter::Antialiasing, false);
}

void paintPhoto(QPainter& painter, const QRectF& photo, const CellPicture& picture,
                const Theme& theme) {
    const bool covered = !picture.image.isNull() && picture.opacity >= 1;
    if (!covered)
        painter.fillRect(photo, picture.average.isValid() ? picture.average : theme.placeholder);
    if (picture.image.isNull()) return;
    painter.setOpacity(picture.opacity);
    const double ratio = painter.device()->devicePixelRatioF();
    const bool exact = picture.image.size() == (photo.size() * ratio).toSize();
    painter.setRenderHint(QPainter::SmoothPixmapTransform, !exact);
    painter.drawImage(photo, picture.image);
    painter.setOpacity(1);
}

// Quietly, so that nobody waits for a picture.
void paintUnreadable(QPainter& painter, const QRectF& photo, const Theme& theme) {
    const int px = static_cast<int>(std::min({32.0, photo.width() / 2, photo.height() / 2}));
    if (px < 8) return;
    const double ratio = painter.device()->devicePixelRatioF();
    const auto snapped = [ratio](double at) { return std::round(at * ratio) / ratio; };
    const QPointF at(snapped(photo.center().x() - px / 2.0),
                     snapped(photo.center().y() - px / 2.0));
    painter.drawPixmap(at, iconPixmap(IconName::photoUnreadable, px, theme.secondary, ratio));
}

void paintFrame(QPainter& painter, const QRectF& photo, const QColor& colour, double width) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(colour, width));
    const double out = 2 + width / 2;
    painter.drawRoundedRect(photo.adjusted(-out, -out, out, out), 3, 3);
    painter.setRenderHint(QPainter::Antialiasing, false);
}

// Behind a selected photo: as wide as the selection's line, so that neighbours keep apart.
void paintGround(QPainter& painter, const QRect& cell, const QColor& colour) {
    const double reach = GridLayout::gap / 2.0 - 0.5;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawRoundedRect(QRectF(cell).adjusted(-reach, -reach, reach, reach), 5, 5);
    painter.setRenderHint(QPainter::Antialiasing, false);
}

} // namespace

QRectF photoRect(const QRect& cell, QSize shape, double pixelRatio) {
    const QRectF room = QRectF(cell).adjusted(photoInset, photoInset, -photoInset, -photoInset);
    QSizeF size = shape.isEmpty() ? QSizeF(3, 2) : QSizeF(shape);
    size.scale(room.size(), Qt::KeepAspectRatio);
    const auto whole = [pixelRatio](double length) {
        return std::max(2.0, std::round(length * pixelRatio)) / pixelRatio;
    };
    const QSizeF fitted(whole(size.width()), whole(size.height()));
    const auto snapped = [pixelRatio](double at) {
        return std::floor(at * pixelRatio) / pixelRatio;
    };
    return {QPointF(snapped(room.left() + (room.width() - fitted.width()) / 2),
                    snapped(room.top() + (room.height() - fitted.height()) / 2)),
            fitted};
}

void paintCell(QPainter& painter, const QRect& rect, const GridCell& cell,
               const CellPicture& picture, CellState state, const Theme& theme) {
    const QRectF photo = photoRect(rect, cell.shape, painter.device()->devicePixelRatioF());
    if (state.selected) paintGround(painter, rect, theme.cell);
    paintPhoto(painter, photo, picture, theme);
    if (cell.isMissing) {
        QColor veil = theme.window;
        veil.setAlphaF(0.45f);
        painter.fillRect(photo, veil);
    }
    if (cell.isUnreadable && picture.image.isNull()) paintUnreadable(painter, photo, theme);
    if (state.hovered && !state.selected) painter.fillRect(photo, QColor(255, 255, 255, 15));
    paintBadges(painter, photo, rect, cell, theme);
    if (state.selected) {
        paintFrame(painter, photo, theme.accent, 2);
    } else if (state.current) {
        paintFrame(painter, photo, theme.secondary, 1);
    }
}

} // namespace kelvaro
