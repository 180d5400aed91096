#include "ui/profile/ChartSections.h"

#include "ui/controls/Labels.h"
#include "ui/theme/Theme.h"

#include <algorithm>

namespace kelvaro {
namespace {

constexpr int headPx = 28, columnGapPx = 40, rowGapPx = 36, narrowestCardPx = 280;
constexpr int mostColumns = 3;

bool tellsMonths(const ProfilePeriod& period) {
    return period.kind != ProfilePeriod::Kind::thisMonth &&
           period.kind != ProfilePeriod::Kind::lastMonth;
}

} // namespace

CalendarSection::CalendarSection(const Appearance& appearance, YearCalendar::DayWords dayWords,
                                 QWidget* parent)
    : Section(parent) {
    title_ = label({}, "heading", this);
    calendar_ = new YearCalendar(appearance, std::move(dayWords), this);
    calendar_->setObjectName("yearCalendar");
    calendar_->onChosen = [this](int mark) {
        if (onDay) onDay(calendar_->dayOfMark(mark));
    };
}

void CalendarSection::show(const Profile& profile, const CivilTime& today) {
    title_->setText(QString::number(profile.calendarYear));
    calendar_->show(profile.calendarYear, profile.photosByDay, daysOf(profile.period, today));
}

int CalendarSection::arrange(int widthPx) {
    const int tall = calendar_->heightFor(widthPx);
    title_->setGeometry(0, 0, widthPx, 20);
    calendar_->setGeometry(0, headPx, widthPx, tall);
    return headPx + tall;
}

ChartsSection::ChartsSection(const Appearance& appearance, QWidget* parent) : Section(parent) {
    for (std::size_t at = 0; at < kChartKinds.size(); ++at) {
        auto* card = new ChartCard(appearance, this);
        card->onBar = [this](const Chart& chart, std::size_t bar) {
            if (onBar) onBar(chart, bar);
        };
        cards_.push_back(card);
    }
}

void ChartsSection::show(const Profile& profile) {
    for (std::size_t at = 0; at < cards_.size(); ++at) {
        const Chart& chart = profile.charts[at];
        cards_[at]->show(chart);
        // One month by months tells nothing.
        cards_[at]->setVisible(chart.kind() != ChartKind::month || tellsMonths(profile.period));
    }
}

void ChartsSection::setShowsTables(bool shows) {
    for (ChartCard* card : cards_)
        card->setShowsTable(shows);
}

int ChartsSection::arrange(int widthPx) {
    const int columns =
        std::clamp((widthPx + columnGapPx) / (narrowestCardPx + columnGapPx), 1, mostColumns);
    const int wide = (widthPx - (columns - 1) * columnGapPx) / columns;
    int top = 0, tallest = 0, column = 0;
    for (ChartCard* card : cards_) {
        if (card->isHidden()) continue;
        if (column == columns) {
            top += std::exchange(tallest, 0) + rowGapPx;
            column = 0;
        }
        const int tall = card->arrange(wide);
        card->setGeometry(column++ * (wide + columnGapPx), top, wide, tall);
        tallest = std::max(tallest, tall);
    }
    return top + tallest;
}

} // namespace kelvaro
