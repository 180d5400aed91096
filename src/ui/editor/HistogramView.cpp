#include "ui/editor/HistogramView.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace kelvaro {
namespace {

constexpr double leastClippedShare = 0.0001; // that is worth a mark
constexpr int marginPx = 16, markPx = 7;

// One bin's peak, such as a white border's, must not flatten the rest.
double heightOf(const Histogram& histogram) {
    std::vector<std::uint32_t> counts;
    for (const auto* bins : {&histogram.red, &histogram.green, &histogram.blue})
        counts.insert(counts.end(), bins->begin() + 1, bins->end() - 1);
    const auto at = counts.begin() + static_cast<std::ptrdiff_t>(counts.size() * 98 / 100);
    std::nth_element(counts.begin(), at, counts.end());
    return std::max(1.0, *at * 1.8);
}

} // namespace

HistogramView::HistogramView(const Appearance& appearance, QWidget* parent)
    : QAbstractButton(parent), appearance_(appearance) {
    setCursor(Qt::PointingHandCursor);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFocusPolicy(Qt::StrongFocus);
}

void HistogramView::show(const Histogram& histogram) {
    histogram_ = histogram;
    update();
}

void HistogramView::clear() {
    show(Histogram{});
}

QPolygonF HistogramView::curve(const Histogram::Bins& bins, const QRectF& area, double most) const {
    QPolygonF points;
    points << area.bottomLeft();
    for (std::size_t bin = 0; bin < bins.size(); ++bin) {
        // The square root shows small counts as well.
        const double share = std::sqrt(std::min(1.0, bins[bin] / most));
        points << QPointF(area.left() + (double(bin) + 0.5) / 256 * area.width(),
                          area.bottom() - share * area.height());
    }
    points << area.bottomRight();
    return points;
}

void HistogramView::paintEvent(QPaintEvent*) {
    const Theme& theme = appearance_.theme();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF ground = QRectF(rect()).adjusted(marginPx, 12, -marginPx, -8);
    painter.setPen(hasFocus() ? QPen(theme.accent, 1) : QPen(Qt::NoPen));
    painter.setBrush(theme.dark ? QColor(0x16, 0x16, 0x16) : QColor(0x2a, 0x2a, 0x2a));
    painter.drawRoundedRect(ground, measure::controlRadius, measure::controlRadius);
    if (histogram_.pixels == 0) return;
    const QRectF area = ground.adjusted(6, 12, -6, -4);
    const double most = heightOf(histogram_);
    painter.setPen(Qt::NoPen);
    // Light adds up: where all three lie the curve is grey.
    painter.setCompositionMode(QPainter::CompositionMode_Plus);
    const std::pair<const Histogram::Bins*, QColor> layers[] = {
        {&histogram_.red, QColor(118, 20, 20)},
        {&histogram_.green, QColor(16, 106, 24)},
        {&histogram_.blue, QColor(18, 30, 116)}};
    for (const auto& [bins, colour] : layers) {
        painter.setBrush(colour);
        painter.drawPolygon(curve(*bins, area, most));
    }
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    const auto mark = [&](double x, bool isClipped, const QColor& colour) {
        QPainterPath triangle(QPointF(x, ground.top() + 4));
        triangle.lineTo(x + markPx, ground.top() + 4 + markPx);
        triangle.lineTo(x - markPx, ground.top() + 4 + markPx);
        triangle.closeSubpath();
        painter.setBrush(isClipped ? colour : QColor(255, 255, 255, 40));
        painter.drawPath(triangle);
    };
    mark(ground.left() + markPx + 5, histogram_.clippedShadows > leastClippedShare,
         QColor(92, 140, 255));
    mark(ground.right() - markPx - 5, histogram_.clippedHighlights > leastClippedShare,
         QColor(255, 90, 79));
}

} // namespace kelvaro
