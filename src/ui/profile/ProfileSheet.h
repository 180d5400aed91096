// What the profile page tells, from the greeting to the charts, in one column that is comfortable
// at every width. Shows a value and reports what is chosen.
#pragma once

#include "ui/profile/ChartSections.h"
#include "ui/profile/HeadSections.h"

#include <QPushButton>

namespace kelvaro {

class ProfileSheet final : public QWidget {
public:
    ProfileSheet(const Appearance& appearance, YearCalendar::DayWords dayWords,
                 QWidget* parent = nullptr);

    void setGreeting(const QString& greeting, const QString& time, IconName icon);
    // `today` names the period before.
    void show(const Profile& profile, const CivilTime& today);
    void setShowsTables(bool shows);
    // Lays everything out for that width and takes the height that it needs.
    void arrange(int widthPx);
    ChartsSection& charts() const { return *charts_; }
    CalendarSection& calendar() const { return *calendar_; }

    std::function<void()> onEmptyButton; // "Show all time", or "Add a folder of photos"

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void showEmpty(const Profile& profile);

    GreetingSection* greeting_;
    CountsSection* counts_;
    TagsSection* tags_;
    WordsSection* words_;
    CalendarSection* calendar_;
    ChartsSection* charts_;
    QLabel* emptyText_;
    QPushButton* emptyButton_;
    bool isKnown_ = false, isEmpty_ = false; // the profile; and it has no photos
    int arrangedPx_ = -1;
};

} // namespace kelvaro
