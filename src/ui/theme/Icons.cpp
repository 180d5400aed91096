#include "ui/theme/Icons.h"

#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

namespace kelvaro {
namespace {

constexpr const char* outlined = "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 20 20'>"
                                 "<path d='%1' fill='%2' stroke='%3' stroke-width='1.5' "
                                 "stroke-linecap='round' stroke-linejoin='round'/></svg>";

QByteArray document(IconName name, const QColor& colour) {
    const QString ink = colour.name();
    const bool filled = name == IconName::favoriteFilled || name == IconName::stop;
    return QString(outlined).arg(iconPath(name), filled ? ink : "none", ink).toUtf8();
}

// Draws the icon anew for every size, so that it is never scaled.
class DrawnIcon final : public QIconEngine {
public:
    DrawnIcon(IconName name, QColor colour, QColor disabled)
        : name_(name), colour_(colour), disabled_(disabled) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        const int side = std::min(rect.width(), rect.height());
        const double ratio = painter->device()->devicePixelRatioF();
        const QPixmap drawing = iconPixmap(name_, side, tone(mode), ratio);
        painter->drawPixmap(rect.x() + (rect.width() - side) / 2,
                            rect.y() + (rect.height() - side) / 2, drawing);
    }
    // The size is in device pixels here.
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override {
        return iconPixmap(name_, std::min(size.width(), size.height()), tone(mode), 1);
    }
    QIconEngine* clone() const override { return new DrawnIcon(*this); }

private:
    QColor tone(QIcon::Mode mode) const { return mode == QIcon::Disabled ? disabled_ : colour_; }

    IconName name_;
    QColor colour_, disabled_;
};

} // namespace

QPixmap iconPixmap(IconName name, int sizePx, const QColor& colour, double pixelRatio) {
    const QString key = QString("kelvaro-icon-%1-%2-%3-%4")
                            .arg(static_cast<int>(name))
                            .arg(sizePx)
                            .arg(colour.rgba(), 8, 16)
                            .arg(pixelRatio);
    QPixmap drawing;
    if (QPixmapCache::find(key, &drawing)) return drawing;
    drawing = QPixmap(QSizeF(sizePx * pixelRatio, sizePx * pixelRatio).toSize());
    drawing.setDevicePixelRatio(pixelRatio);
    drawing.fill(Qt::transparent);
    QPainter painter(&drawing);
    painter.setOpacity(colour.alphaF());
    QSvgRenderer renderer(document(name, colour));
    renderer.render(&painter, QRectF(0, 0, sizePx, sizePx));
    painter.end();
    QPixmapCache::insert(key, drawing);
    return drawing;
}

QIcon icon(IconName name, const QColor& colour, const QColor& disabled) {
    return QIcon(new DrawnIcon(name, colour, disabled));
}

const char* iconPath(IconName name) {
    switch (name) {
    case IconName::add:
        return "M10 4v12M4 10h12";
    case IconName::back:
        return "M12 4.5 6.5 10l5.5 5.5";
    case IconName::check:
        return "M4.5 10.5 8.5 14.5 15.5 6";
    case IconName::chevronDown:
        return "M5.5 8 10 12.5 14.5 8";
    case IconName::chevronRight:
        return "M8 5.5 12.5 10 8 14.5";
    case IconName::close:
        return "M5.5 5.5l9 9M14.5 5.5l-9 9";
    case IconName::drive:
        return "M3 12.5 5 5h10l2 7.5v3H3zM3 12.5h14M13.5 14h.5";
    case IconName::driveMissing:
        return "M3 12.5 5 5h10l2 7.5v3H3zM3 12.5h14M8.2 7.2l3.6 3.6M11.8 7.2 8.2 10.8";
    case IconName::edited:
        return "M3.5 6.5h6.2M14.3 6.5h2.2M12 4.2a2.3 2.3 0 1 0 0 4.6 2.3 2.3 0 0 0 0-4.6zM3.5 "
               "13.5h2.2M10.3 13.5h6.2M8 11.2a2.3 2.3 0 1 0 0 4.6 2.3 2.3 0 0 0 0-4.6z";
    case IconName::exportArrow:
        return "M10 12.5V3.5M6.5 6.5 10 3l3.5 3.5M6 9.5H4.5v7h11v-7H14";
    case IconName::favorite:
    case IconName::favoriteFilled:
        return "M10 16.2C5.2 13 3 10.6 3 7.7 3 5.6 4.6 4 6.6 4c1.4 0 2.7.8 3.4 2 .7-1.2 2-2 3.4-2 "
               "2 0 3.6 1.6 3.6 3.7 0 2.9-2.2 5.3-7 8.5z";
    case IconName::filter:
        return "M3.5 5.5h13M6 10h8M8.5 14.5h3";
    case IconName::folder:
        return "M3 15.5v-11h5l1.5 2H17v9z";
    case IconName::gear:
        return "M10 7.3a2.7 2.7 0 1 0 0 5.4 2.7 2.7 0 0 0 0-5.4zM10 3v2M10 15v2M3 10h2M15 "
               "10h2M5.05 "
               "5.05 6.5 6.5M13.5 13.5l1.45 1.45M5.05 14.95 6.5 13.5M13.5 6.5l1.45-1.45";
    case IconName::info:
        return "M10 3a7 7 0 1 0 0 14 7 7 0 0 0 0-14zM10 9.2v4.3M10 6.4v.2";
    case IconName::photos:
        return "M3 4.5h14v11H3zM3 13l4-4 3.5 3.5L13 10l4 3.8M13 7.4h.2";
    case IconName::photoUnreadable:
        return "M5.5 4.5H17v11h-.5M3.2 5.5V15.5h10.6M3 13l4-4 2.2 2.2M13 7.4h.2M3 3l14 14";
    case IconName::person:
        return "M10 3.2a3.3 3.3 0 1 0 0 6.6 3.3 3.3 0 0 0 0-6.6zM3.8 16.8c.6-3 3-4.6 6.2-4.6s5.6 "
               "1.6 "
               "6.2 4.6";
    case IconName::search:
        return "M8.8 3.5a5.3 5.3 0 1 0 0 10.6 5.3 5.3 0 0 0 0-10.6zM12.7 12.7l4 4";
    case IconName::sidebar:
        return "M3 4.5h14v11H3zM7.8 4.5v11";
    case IconName::sort:
        return "M6.5 4v12M3.8 13.3 6.5 16l2.7-2.7M13.5 16V4M10.8 6.7 13.5 4l2.7 2.7";
    case IconName::sortAscending:
        return "M10 16V4M6 8l4-4 4 4";
    case IconName::sortDescending:
        return "M10 4v12M6 12l4 4 4-4";
    case IconName::squareSmall:
        return "M7 7h6v6H7z";
    case IconName::squareLarge:
        return "M4 4h12v12H4z";
    case IconName::stop:
        return "M6.5 6.5h7v7h-7z";
    case IconName::trash:
        return "M4 5.8h12M8 5.5v-2h4v2M5.5 6l.8 10.5h7.4L14.5 6M8.5 9v4.5M11.5 9v4.5";
    case IconName::aperture:
        return "M10 3a7 7 0 1 0 0 14 7 7 0 0 0 0-14zM7.8 8.7 12 3.4M12.4 8.2 5.3 7M14.6 12.7 9.2 "
               "17M7.4 11.8l7.3 1.3M3.4 12.5 8 16.5M12.2 11.5l4.6-2.7";
    case IconName::mountain:
        return "M2.5 15.5 8 6.5l3.2 5.2 2-3 4.3 6.8z";
    case IconName::leaf:
        return "M4 16C4 8 8 4 16.5 4 16.5 12 12 15 6 14.5M4 16.5C5.5 13 8 10.5 11.5 8.5";
    case IconName::star:
        return "M10 3.2l2.1 4.4 4.8.6-3.5 3.3.9 4.8L10 14l-4.3 2.3.9-4.8L3.1 8.2l4.8-.6z";
    case IconName::moon:
        return "M15.8 12.2A6.4 6.4 0 0 1 7.8 4.2 6.6 6.6 0 1 0 15.8 12.2z";
    case IconName::wave:
        return "M2.8 8c2.4-2.4 4.8-2.4 7.2 0s4.8 2.4 7.2 0M2.8 13c2.4-2.4 4.8-2.4 7.2 0s4.8 2.4 "
               "7.2 0";
    case IconName::undo:
        return "M7.5 4.5 4 8l3.5 3.5M4 8h7.5a4 4 0 0 1 0 8H8";
    case IconName::redo:
        return "M12.5 4.5 16 8l-3.5 3.5M16 8H8.5a4 4 0 0 0 0 8H12";
    case IconName::split:
        return "M3 4.5h14v11H3zM10 3v14M13 8.5l1.5 1.5-1.5 1.5M7 8.5 5.5 10 7 11.5";
    case IconName::crop:
        return "M6 2.8v11.2h11.2M2.8 6H14v11.2";
    case IconName::mask:
        return "M3 4.5h14v11H3zM10 7a3 3 0 1 0 0 6 3 3 0 0 0 0-6z";
    case IconName::eyedropper:
        return "M11.5 6.5l2 2M10 5l5 5M12.2 4.8l1.3-1.3a1.6 1.6 0 0 1 2.3 0l.7.7a1.6 1.6 0 0 1 0 "
               "2.3l-1.3 1.3M11.2 6.2 4.8 12.6 4 16l3.4-.8 6.4-6.4";
    case IconName::assessment:
        return "M3 4h14v12H3zM6.5 7h7v6h-7z";
    case IconName::presets:
        return "M10 3.2 3 6.8l7 3.6 7-3.6zM3.2 10.2 10 13.7l6.8-3.5M3.2 13.5 10 17l6.8-3.5";
    case IconName::copy:
        return "M7.5 7h8v9.5h-8zM12.5 7V3.5h-8V13h3";
    case IconName::paste:
        return "M6.5 4.8H4.5v11.7h11V4.8h-2M7.5 3.2h5v3h-5z";
    case IconName::reset:
        return "M4.5 10a5.5 5.5 0 1 0 1.8-4.1M4.3 3.5v3.3h3.3";
    case IconName::revert:
        return "M4.5 10a5.5 5.5 0 1 0 1.8-4.1M4.3 3.5v3.3h3.3M10 7v3.2l2 1.3";
    case IconName::brush:
        return "M16.5 3.5c-3 1-6 4-7.8 7l1.8 1.8c3-1.8 6-4.8 7-7.8zM8 11.5c-1.8 0-2.8 1.2-2.9 3-.1 "
               "1-.8 1.7-1.8 2 2.6.8 6.3.2 6.5-3.2";
    case IconName::linearGradient:
        return "M3 4h14v12H3zM3 8h14M3 12h14M6 16v-.5M10 16v-.5M14 16v-.5";
    case IconName::radialGradient:
        return "M10 4.5c4 0 7 2.5 7 5.5s-3 5.5-7 5.5-7-2.5-7-5.5 3-5.5 7-5.5zM10 7.8c1.7 0 3 1 3 "
               "2.2s-1.3 2.2-3 2.2-3-1-3-2.2 1.3-2.2 3-2.2z";
    case IconName::eye:
        return "M2.5 10C4.3 6.8 7 5.2 10 5.2s5.7 1.6 7.5 4.8c-1.8 3.2-4.5 4.8-7.5 4.8S4.3 13.2 2.5 "
               "10zM10 7.8a2.2 2.2 0 1 0 0 4.4 2.2 2.2 0 0 0 0-4.4z";
    case IconName::eyeOff:
        return "M2.5 10C4.3 6.8 7 5.2 10 5.2s5.7 1.6 7.5 4.8c-1.8 3.2-4.5 4.8-7.5 4.8S4.3 13.2 2.5 "
               "10zM4 16 16 4";
    case IconName::invert:
        return "M10 3.5a6.5 6.5 0 1 0 0 13zM10 3.5a6.5 6.5 0 0 1 0 13M7.5 5v10M5.3 6.5v7";
    case IconName::duplicate:
        return "M7 7h9.5v9.5H7zM13 7V3.5H3.5V13H7M11.8 9.5v4.5M9.5 11.8H14";
    case IconName::horizon:
        return "M3 12.5l14-5M5 16h10M10 10v-6M7.8 6 10 3.8 12.2 6";
    case IconName::landscape:
        return "M3 6h14v8H3z";
    case IconName::portrait:
        return "M6 3h8v14H6z";
    case IconName::more:
        return "M5 10h.1M10 10h.1M15 10h.1";
    case IconName::plus:
        return "M10 6v8M6 10h8";
    case IconName::minus:
        return "M6 10h8";
    case IconName::intersect:
        return "M8 5.5a4.5 4.5 0 1 0 0 9 4.5 4.5 0 0 0 0-9zM12 5.5a4.5 4.5 0 1 0 0 9 4.5 4.5 0 0 0 "
               "0-9z";
    case IconName::before:
        return "M3 4.5h14v11H3zM10 4.5v11M5.2 8h2.6M5.2 10.2h2.6M5.2 12.4h2.6";
    case IconName::eraser:
        return "M8.5 16h8M4.2 12.2l7-7a1.4 1.4 0 0 1 2 0l2.6 2.6a1.4 1.4 0 0 1 0 2L9.6 "
               "16H7l-2.8-1.8a1.4 1.4 0 0 1 0-2zM8.2 8.2l4.6 4.6";
    }
    return "";
}

} // namespace kelvaro
