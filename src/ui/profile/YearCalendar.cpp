#include "ui/profile/YearCalendar.h"

#include "platform/LocalCalendar.h"
#include "profile/WallTime.h"
#include "ui/Texts.h"

#include <QKeyEvent>
#include <QLocale>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace kelvaro {
namespace {

constexpr int namesPx = 32, monthsPx = 20;
constexpr double largestCellPx = 24;
constexpr int levels = 4; // of fullness, beside none

} // namespace

YearCalendar::YearCalendar(const Appearance& appearance, DayWords dayWords, QWidget* parent)
    : MarkView(appearance, parent), dayWords_(std::move(dayWords)) {}

void YearCalendar::show(int year, const std::map<std::int64_t, std::int64_t>& photosByDay,
                        const DayRange& inQuestion) {
    year_ = year;
    inQuestion_ = inQuestion;
    firstDay_ = dayNumber({.year = year, .month = 1, .day = 1});
    firstWeekday_ = static_cast<int>(weekdayOf(firstDay_));
    const std::int64_t end = dayNumber({.year = year + 1, .month = 1, .day = 1});
    std::vector<Mark> marks;
    qint64 total = 0;
    most_ = 0;
    for (std::int64_t day = firstDay_; day < end; ++day) {
        const auto found = photosByDay.find(day);
        const qint64 count = found == photosByDay.end() ? 0 : found->second;
        marks.push_back({dayWords_(day), count});
        total += count;
        most_ = std::max(most_, count);
    }
    setAccessibleName(words("Calendar of %1").arg(year));
    setMarks(std::move(marks), total,
             counted(total, "1 photo", "%1 photos") + ", " +
                 counted(static_cast<qint64>(photosByDay.size()), "on 1 day", "on %1 days"));
}

double YearCalendar::cellPx(int widthPx) const {
    const int weeks = (firstWeekday_ + std::max(365, static_cast<int>(marks().size())) + 6) / 7;
    return std::min(largestCellPx, double(widthPx - namesPx) / weeks);
}

int YearCalendar::heightFor(int widthPx) const {
    return monthsPx + static_cast<int>(std::ceil(7 * cellPx(widthPx)));
}

QRectF YearCalendar::place(int mark) const {
    const double cell = cellPx(width());
    const int slot = mark + firstWeekday_;
    return {namesPx + cell * (slot / 7), monthsPx + cell * (slot % 7), cell, cell};
}

int YearCalendar::next(int mark, int key) const {
    const int last = static_cast<int>(marks().size()) - 1;
    if (mark < 0) return MarkView::next(mark, key);
    if (key == Qt::Key_Left) return std::max(mark - 7, 0);
    if (key == Qt::Key_Right) return std::min(mark + 7, last);
    return MarkView::next(mark, key);
}

// By the square root, so that one great day does not wash out the others.
QColor YearCalendar::colourOf(int mark) const {
    const qint64 count = marks()[std::size_t(mark)].count;
    if (count == 0) return faded(theme().text, 0.06);
    const double level = std::ceil(levels * std::sqrt(double(count) / double(most_)));
    const double cover = inQuestion_.contains(dayOfMark(mark)) ? 1 : 0.4;
    return faded(theme().accent, cover * (0.10 + 0.90 * level / levels));
}

void YearCalendar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double cell = cellPx(width());
    const double air = cell > 10 ? 1.5 : 0.75, radius = cell > 10 ? 3 : 1.5;
    for (int mark = 0; mark < static_cast<int>(marks().size()); ++mark) {
        const QRectF day = place(mark).adjusted(air, air, -air, -air);
        painter.setPen(Qt::NoPen);
        if (mark == lit()) painter.setPen(QPen(theme().text, 1.5));
        painter.setBrush(colourOf(mark));
        painter.drawRoundedRect(day, radius, radius);
    }
    paintNames(painter);
}

void YearCalendar::paintNames(QPainter& painter) const {
    const QLocale locale;
    const double cell = cellPx(width());
    painter.setFont(interfaceFont(TextRole::caption));
    painter.setPen(theme().secondary);
    for (int month = 1; month <= 12; ++month) {
        const auto first = dayNumber({.year = year_, .month = month, .day = 1}) - firstDay_;
        painter.drawText(
            QRectF(place(static_cast<int>(first)).left() + 1, 0, 4 * cell, monthsPx - 4),
            Qt::AlignLeft | Qt::AlignBottom,
            locale.standaloneMonthName(month, QLocale::ShortFormat));
    }
    for (const int row : {0, 2, 4}) {
        painter.drawText(QRectF(0, monthsPx + cell * row, namesPx - 4, cell),
                         Qt::AlignLeft | Qt::AlignVCenter | Qt::TextDontClip,
                         locale.standaloneDayName(row + 1, QLocale::ShortFormat));
    }
}

} // namespace kelvaro
