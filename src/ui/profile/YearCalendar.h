// A year as a sheet of days, a column for each week, the fuller the more photos. Marks are the days
// of the year in their order.
#pragma once

#include "profile/ProfilePeriod.h"
#include "ui/profile/MarkView.h"

#include <cstdint>
#include <map>

namespace kelvaro {

class YearCalendar final : public MarkView {
public:
    // The day's words, from days since 1970-01-01.
    using DayWords = std::function<QString(std::int64_t day)>;

    YearCalendar(const Appearance& appearance, DayWords dayWords, QWidget* parent = nullptr);

    // Days since 1970-01-01; those that are not in question are paler.
    void show(int year, const std::map<std::int64_t, std::int64_t>& photosByDay,
              const DayRange& inQuestion);
    int heightFor(int widthPx) const;
    std::int64_t dayOfMark(int mark) const { return firstDay_ + mark; }
    QRectF place(int mark) const override;

protected:
    int next(int mark, int key) const override;
    void paintEvent(QPaintEvent* event) override;

private:
    double cellPx(int widthPx) const;
    QColor colourOf(int mark) const;
    void paintNames(QPainter& painter) const;

    DayWords dayWords_;
    DayRange inQuestion_;
    std::int64_t firstDay_ = 0; // the first of January
    int firstWeekday_ = 0;      // its row; Monday is 0
    int year_ = 1970;
    qint64 most_ = 0;
};

} // namespace kelvaro
