// The lower part of the profile page: the year as a calendar, and the charts.
#pragma once

#include "profile/Profile.h"
#include "ui/profile/ChartCard.h"
#include "ui/profile/YearCalendar.h"

namespace kelvaro {

class CalendarSection final : public Section {
public:
    CalendarSection(const Appearance& appearance, YearCalendar::DayWords dayWords, QWidget* parent);
    void show(const Profile& profile, const CivilTime& today);
    int arrange(int widthPx) override;
    YearCalendar& calendar() const { return *calendar_; }

    std::function<void(std::int64_t day)> onDay;

private:
    QLabel* title_;
    YearCalendar* calendar_;
};

// As many charts side by side as fit well.
class ChartsSection final : public Section {
public:
    ChartsSection(const Appearance& appearance, QWidget* parent);
    void show(const Profile& profile);
    void setShowsTables(bool shows);
    int arrange(int widthPx) override;
    const std::vector<ChartCard*>& cards() const { return cards_; }

    std::function<void(const Chart& chart, std::size_t bar)> onBar;

private:
    std::vector<ChartCard*> cards_; // by chart kind
};

} // namespace kelvaro
