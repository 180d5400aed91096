#include "ui/profile/ProfileSheet.h"

#include "ui/Texts.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"

#include <QResizeEvent>

namespace kelvaro {
namespace {

constexpr int widestPx = 1120, sidePx = 32, topPx = 16, bottomPx = 48;

} // namespace

ProfileSheet::ProfileSheet(const Appearance& appearance, YearCalendar::DayWords dayWords,
                           QWidget* parent)
    : QWidget(parent),
      greeting_(new GreetingSection(appearance, this)),
      counts_(new CountsSection(this)),
      tags_(new TagsSection(appearance, this)),
      words_(new WordsSection(this)),
      calendar_(new CalendarSection(appearance, std::move(dayWords), this)),
      charts_(new ChartsSection(appearance, this)) {
    setObjectName("profileSheet");
    emptyText_ = label({}, "secondary", this);
    emptyButton_ = named(new QPushButton(this), "profileEmptyButton", words("Show All Time"),
                         words("Show All Time"));
    QObject::connect(emptyButton_, &QPushButton::clicked, this, [this] {
        if (onEmptyButton) onEmptyButton();
    });
}

void ProfileSheet::setGreeting(const QString& greeting, const QString& time, IconName icon) {
    greeting_->show(greeting, time, icon);
    arrange(width());
}

void ProfileSheet::show(const Profile& profile, const CivilTime& today) {
    isKnown_ = true;
    isEmpty_ = profile.counts.photos == 0;
    counts_->show(profile.counts, profile.before, titleBefore(profile.period, today));
    tags_->show(profile);
    words_->show(profile);
    calendar_->show(profile, today);
    charts_->show(profile);
    showEmpty(profile);
    arrange(width());
}

void ProfileSheet::showEmpty(const Profile& profile) {
    const bool hasOthers = !profile.years.empty();
    emptyText_->setText(
        words(hasOthers ? "No photos from this time" : "Your photos will tell their story here"));
    const QString button = words(hasOthers ? "Show All Time" : "Add a folder of photos");
    emptyButton_->setText(button);
    emptyButton_->setAccessibleName(button);
    emptyButton_->setToolTip(button);
}

void ProfileSheet::setShowsTables(bool shows) {
    charts_->setShowsTables(shows);
    arrange(width());
}

void ProfileSheet::arrange(int widthPx) {
    const int room = std::min(widthPx - 2 * sidePx, widestPx), left = (widthPx - room) / 2;
    arrangedPx_ = widthPx;
    int top = topPx;
    const auto place = [&](Section* section, int airPx, bool isShown) {
        section->setVisible(isShown);
        const int tall = isShown ? section->arrange(room) : 0;
        if (tall == 0) return;
        section->setGeometry(left, top, room, tall);
        top += tall + airPx;
    };
    const bool hasPhotos = isKnown_ && !isEmpty_;
    place(greeting_, 32, true);
    place(counts_, 32, hasPhotos);
    place(tags_, 16, hasPhotos);
    place(words_, 40, hasPhotos);
    place(calendar_, 40, hasPhotos);
    place(charts_, 0, hasPhotos);
    emptyText_->setVisible(isKnown_ && isEmpty_);
    emptyButton_->setVisible(isKnown_ && isEmpty_);
    if (isKnown_ && isEmpty_) {
        const QSize text = emptyText_->sizeHint(), button = emptyButton_->sizeHint();
        emptyText_->setGeometry((widthPx - text.width()) / 2, top + 64, text.width(),
                                text.height());
        emptyButton_->setGeometry((widthPx - button.width()) / 2, top + 64 + text.height() + 16,
                                  button.width(), button.height());
        top = emptyButton_->geometry().bottom();
    }
    setFixedHeight(top + bottomPx);
}

void ProfileSheet::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    if (event->size().width() != arrangedPx_) arrange(event->size().width());
}

} // namespace kelvaro
