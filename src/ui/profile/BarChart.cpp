#include "ui/profile/BarChart.h"

#include "ui/Texts.h"

#include <QPainter>

#include <algorithm>
#include <array>

namespace kelvaro {
namespace {

constexpr int uprightPx = 148, countPx = 18, axisPx = 20; // the whole, above and below the bars
constexpr int rowPx = 36, linePx = 6;
constexpr int widestGapPx = 8, widestBarPx = 28;

} // namespace

BarChart::BarChart(const Appearance& appearance, QWidget* parent) : MarkView(appearance, parent) {}

void BarChart::show(const Chart& chart) {
    isAcross_ = chart.kind() == ChartKind::camera || chart.kind() == ChartKind::lens;
    std::vector<Mark> marks;
    ticks_.clear();
    most_ = 0;
    for (const ChartBar& bar : chart.bars()) {
        marks.push_back({fromUtf8(bar.label), bar.count});
        ticks_.push_back(fromUtf8(bar.tick));
        most_ = std::max<qint64>(most_, bar.count);
    }
    setAccessibleName(words(chart.title()));
    setMarks(std::move(marks), chart.recorded(), words(chart.description()));
}

int BarChart::heightPx() const {
    if (most_ == 0) return 56;
    return isAcross_ ? rowPx * static_cast<int>(marks().size()) : uprightPx;
}

QRectF BarChart::place(int mark) const {
    if (most_ == 0) return {};
    if (isAcross_) return {0, double(rowPx) * mark, double(width()), double(rowPx)};
    const double slot = double(width()) / double(marks().size());
    return {slot * mark, 0, slot, double(height())};
}

QRectF BarChart::barRect(int mark) const {
    const QRectF room = place(mark);
    const double share = double(marks()[std::size_t(mark)].count) / double(most_);
    if (isAcross_) {
        const double length = std::max(share * room.width(), share > 0 ? double(linePx) : 0.0);
        return {0, room.bottom() - 8 - linePx, length, linePx};
    }
    const double gap = std::min<double>(widestGapPx, room.width() / 4);
    const double wide = std::min<double>(widestBarPx, room.width() - gap);
    const double space = height() - countPx - axisPx;
    const double tall = share > 0 ? std::max(2.0, share * space) : 0;
    return {room.center().x() - wide / 2, countPx + space - tall, wide, tall};
}

QColor BarChart::colourOf(int mark) const {
    const bool isMost = marks()[std::size_t(mark)].count == most_;
    if (mark == lit())
        return isMost ? theme().accent.lighter(theme().dark ? 115 : 110)
                      : faded(theme().text, 0.60);
    return isMost ? theme().accent : faded(theme().text, 0.28);
}

void BarChart::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(interfaceFont(TextRole::caption));
    if (most_ == 0) {
        painter.setFont(interfaceFont());
        painter.setPen(theme().secondary);
        painter.drawText(rect(), Qt::AlignLeft | Qt::AlignTop, words(kNotRecorded));
        return;
    }
    isAcross_ ? paintAcross(painter) : paintUpright(painter);
    if (!hasFocus() || lit() < 0) return;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(theme().accent, 1.5));
    painter.drawRoundedRect(place(lit()).adjusted(1, 1, -1, -1), 4, 4);
}

void BarChart::paintUpright(QPainter& painter) const {
    painter.fillRect(QRectF(0, height() - axisPx, width(), 1), theme().hairline);
    const int count = static_cast<int>(marks().size());
    int told = lit();
    for (int mark = 0; mark < count; ++mark) {
        if (told < 0 && marks()[std::size_t(mark)].count == most_) told = mark;
        const QRectF bar = barRect(mark);
        const double radius = std::min({3.0, bar.width() / 3, bar.height() / 2});
        painter.setPen(Qt::NoPen);
        painter.setBrush(colourOf(mark));
        painter.drawRoundedRect(bar, radius, radius);
    }
    // One number at a time: of the bar in question, else of the tallest.
    const Mark& one = marks()[std::size_t(told)];
    const QString text = number(one.count);
    const double wide = painter.fontMetrics().horizontalAdvance(text) + 2;
    const QRectF bar = barRect(told);
    const double left = std::clamp(bar.center().x() - wide / 2, 0.0, double(width()) - wide);
    painter.setPen(theme().text);
    painter.drawText(QRectF(left, bar.top() - countPx, wide, countPx - 2),
                     Qt::AlignHCenter | Qt::AlignBottom, text);
    paintTicks(painter);
}

// As many as fit side by side, evenly spread.
void BarChart::paintTicks(QPainter& painter) const {
    double widest = 0;
    for (const QString& tick : ticks_)
        widest = std::max<double>(widest, painter.fontMetrics().horizontalAdvance(tick));
    const double slot = double(width()) / double(ticks_.size());
    constexpr std::array steps{1, 2, 3, 4, 6, 12};
    const auto step = std::find_if(steps.begin(), steps.end() - 1,
                                   [&](int each) { return each * slot >= widest + 4; });
    painter.setPen(theme().secondary);
    for (int mark = 0; mark < static_cast<int>(ticks_.size()); mark += *step) {
        const double middle = place(mark).center().x();
        const double left = std::clamp(middle - widest / 2 - 1, 0.0, width() - widest - 2);
        painter.drawText(QRectF(left, height() - axisPx + 2, widest + 2, axisPx - 2),
                         Qt::AlignHCenter | Qt::AlignVCenter, ticks_[std::size_t(mark)]);
    }
}

void BarChart::paintAcross(QPainter& painter) const {
    for (int mark = 0; mark < static_cast<int>(marks().size()); ++mark) {
        const Mark& one = marks()[std::size_t(mark)];
        const QRectF room = place(mark), bar = barRect(mark);
        const QString count = number(one.count);
        const double countWide = painter.fontMetrics().horizontalAdvance(count) + 2;
        const QRectF line(0, room.top(), room.width(), bar.top() - room.top() - 3);
        painter.setPen(mark == lit() ? theme().text : theme().secondary);
        painter.drawText(line, Qt::AlignRight | Qt::AlignBottom, count);
        painter.setPen(theme().text);
        const QRectF name = line.adjusted(0, 0, -countWide - 12, 0);
        painter.drawText(
            name, Qt::AlignLeft | Qt::AlignBottom,
            painter.fontMetrics().elidedText(one.label, Qt::ElideMiddle, int(name.width())));
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme().hairline);
        painter.drawRoundedRect(QRectF(0, bar.top(), room.width(), linePx), linePx / 2.0,
                                linePx / 2.0);
        painter.setBrush(colourOf(mark));
        painter.drawRoundedRect(bar, linePx / 2.0, linePx / 2.0);
    }
}

} // namespace kelvaro
