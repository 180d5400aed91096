// The profile's place in the window: the way back, the period, tables or charts, sharing, and the
// sheet that scrolls below. Follows the model while it is shown. Main thread.
#pragma once

#include "profile/ProfileModel.h"
#include "ui/controls/Choice.h"
#include "ui/profile/ProfileSheet.h"

#include <QScrollArea>
#include <QTimer>

namespace kelvaro {

class ProfilePage final : public QWidget {
public:
    ProfilePage(const Appearance& appearance, ProfileModel& model, LibraryStore& lib,
                const TextRules& texts, QWidget* parent = nullptr);

    // Who is greeted; greets anew, as for the hour that it is.
    void greet(const std::string& name, const std::string& icon);
    ProfileSheet& sheet() const { return *sheet_; }
    Choice& periods() const { return *periods_; }
    QScrollArea& scroll() const { return *scroll_; }
    // The whole profile as one picture, twice as sharp as a plain screen's; null before there is a
    // profile.
    QImage picture() const;

    std::function<void()> onBack, onShare, onAddFolder;
    std::function<void()> onPhotosShown; // in the grid, by a bar or a day

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void makeTools();
    void makePeriods();
    void showProfile();
    void showReading();
    void choosePeriod(int index);
    QString timeWords() const;
    YearCalendar::DayWords dayWords() const;

    const Appearance& appearance_;
    ProfileModel& model_;
    LibraryStore& lib_;
    const TextRules& texts_;
    QWidget* tools_;
    QLabel* reading_;
    QTimer readingLong_;
    Choice* periods_;
    QPushButton* tables_;
    QScrollArea* scroll_;
    ProfileSheet* sheet_;
    std::vector<ProfilePeriod> offered_; // as the choice lists them
    QString greeting_, name_;
    IconName icon_ = IconName::person;
    std::vector<Subscription> subscriptions_;
};

} // namespace kelvaro
