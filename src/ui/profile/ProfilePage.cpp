#include "ui/profile/ProfilePage.h"

#include "profile/Greeting.h"
#include "profile/WallTime.h"
#include "ui/Texts.h"
#include "ui/controls/IconButton.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"
#include "ui/profile/ProfileIconPicker.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>
#include <array>

namespace kelvaro {
namespace {

constexpr int pictureWidthPx = 1184, pictureAirPx = 16;
constexpr double pictureScale = 2;
constexpr int longLookMs = 400;

} // namespace

ProfilePage::ProfilePage(const Appearance& appearance, ProfileModel& model, LibraryStore& lib,
                         const TextRules& texts, QWidget* parent)
    : QWidget(parent), appearance_(appearance), model_(model), lib_(lib), texts_(texts) {
    setObjectName("profilePage");
    makeTools();
    sheet_ = new ProfileSheet(appearance, dayWords());
    sheet_->charts().onBar = [this](const Chart& chart, std::size_t bar) {
        model_.showBar(chart, bar);
        onPhotosShown();
    };
    sheet_->calendar().onDay = [this](std::int64_t day) {
        model_.showDay(day);
        onPhotosShown();
    };
    sheet_->onEmptyButton = [this] {
        const auto& profile = *model_.profile();
        if (profile && !profile->years.empty())
            model_.setPeriod({});
        else
            onAddFolder();
    };
    scroll_ = new QScrollArea(this);
    scroll_->setObjectName("profileScroll");
    scroll_->setWidgetResizable(true);
    scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll_->setFocusPolicy(Qt::NoFocus);
    scroll_->viewport()->setAutoFillBackground(false);
    scroll_->setWidget(sheet_);
    sheet_->setAutoFillBackground(false);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(tools_);
    column->addWidget(scroll_, 1);
    const auto watch = [this](const auto& subject, auto show) {
        subscriptions_.push_back(subject.observe(show));
        show();
    };
    watch(model.profile(), [this] { showProfile(); });
    readingLong_.setSingleShot(true);
    readingLong_.setInterval(longLookMs);
    QObject::connect(&readingLong_, &QTimer::timeout, this,
                     [this] { reading_->setText(words("Still reading your photos…")); });
    watch(lib.isReading(), [this] { showReading(); });
}

void ProfilePage::makeTools() {
    tools_ = new QWidget(this);
    auto* back = named(new QPushButton(words("‹ Library")), "leaveProfile",
                       words("Back to Library"), words("Back to Library (Esc)"));
    back->setProperty("kind", "quiet");
    QObject::connect(back, &QPushButton::clicked, this, [this] { onBack(); });
    reading_ = label({}, "secondary", tools_);
    periods_ = named(new Choice(appearance_), "profilePeriod", words("Period"),
                     words("The time that the profile tells about"));
    periods_->setMinimumWidth(128);
    QObject::connect(periods_, &QComboBox::activated, this,
                     [this](int index) { choosePeriod(index); });
    tables_ = named(new QPushButton(words("Tables")), "profileTables", words("Tables"),
                    words("Show the charts as tables"));
    tables_->setCheckable(true);
    tables_->setProperty("kind", "quiet");
    QObject::connect(tables_, &QPushButton::toggled, this, [this](bool on) {
        tables_->setText(words(on ? "Charts" : "Tables"));
        tables_->setAccessibleName(tables_->text());
        tables_->setToolTip(words(on ? "Show the charts as bars" : "Show the charts as tables"));
        sheet_->setShowsTables(on);
    });
    auto* share = named(new IconButton(appearance_, IconName::exportArrow), "shareProfile",
                        words("Save as Picture"), words("Save this page as a picture to share"));
    QObject::connect(share, &QToolButton::clicked, this, [this] { onShare(); });
    auto* row = new QHBoxLayout(tools_);
    row->setContentsMargins(measure::unit, measure::unit, measure::margin, measure::unit);
    row->setSpacing(measure::unit);
    row->addWidget(back);
    row->addWidget(reading_, 1);
    row->addWidget(tables_);
    row->addWidget(periods_);
    row->addWidget(share);
}

YearCalendar::DayWords ProfilePage::dayWords() const {
    return [this](std::int64_t day) {
        return fromUtf8(texts_.dayHeading(civilFromSeconds(day * kSecondsPerDay)));
    };
}

void ProfilePage::greet(const std::string& name, const std::string& icon) {
    name_ = QString::fromStdString(name);
    greeting_ = words(greeting(model_.now(), name));
    icon_ = profileIcon(icon);
    sheet_->setGreeting(greeting_, timeWords(), icon_);
}

// "October 2024", "2024", "All time".
QString ProfilePage::timeWords() const {
    const auto first = daysOf(model_.period(), model_.now()).first;
    if (!first) return words(title(model_.period()));
    const CivilTime begin = civilFromSeconds(*first * kSecondsPerDay);
    const auto kind = model_.period().kind;
    const bool isMonth =
        kind == ProfilePeriod::Kind::thisMonth || kind == ProfilePeriod::Kind::lastMonth;
    return isMonth ? fromUtf8(texts_.monthHeading(begin)) : QString::number(begin.year);
}

// The years that there are photos from, between the periods that there always are.
void ProfilePage::makePeriods() {
    using Kind = ProfilePeriod::Kind;
    std::vector<ProfilePeriod> offered{{Kind::thisMonth}, {Kind::lastMonth}, {Kind::thisYear}};
    const int thisYear = model_.now().year;
    if (const auto& profile = *model_.profile()) {
        for (const int year : profile->years)
            if (year != thisYear) offered.push_back({Kind::year, year});
    }
    const ProfilePeriod& now = model_.period();
    if (now.kind == Kind::year && std::ranges::find(offered, now) == offered.end())
        offered.push_back(now);
    offered.push_back({Kind::allTime});
    if (offered != offered_) {
        offered_ = std::move(offered);
        periods_->clear();
        for (const ProfilePeriod& period : offered_)
            periods_->addItem(words(title(period)));
    }
    const auto chosen = std::ranges::find(offered_, now);
    periods_->setCurrentIndex(static_cast<int>(chosen - offered_.begin()));
}

void ProfilePage::choosePeriod(int index) {
    model_.setPeriod(offered_[static_cast<std::size_t>(index)]);
}

void ProfilePage::showProfile() {
    makePeriods();
    const auto& profile = *model_.profile();
    if (!profile) return;
    sheet_->setGreeting(greeting_, timeWords(), icon_);
    sheet_->show(*profile, model_.now());
}

// Not of a look that is over at once.
void ProfilePage::showReading() {
    if (!*lib_.isReading()) {
        readingLong_.stop();
        reading_->clear();
    } else if (reading_->text().isEmpty()) {
        readingLong_.start();
    }
}

QImage ProfilePage::picture() const {
    const auto& profile = *model_.profile();
    if (!profile) return {};
    ProfileSheet sheet(appearance_, dayWords());
    // Who looks at it is not the one who is greeted.
    const QString whose = name_.isEmpty() ? words("My photos") : words("%1's photos").arg(name_);
    sheet.setGreeting(whose, timeWords(), icon_);
    sheet.show(*profile, model_.now());
    sheet.resize(pictureWidthPx, 1);
    sheet.arrange(pictureWidthPx);
    const Theme& theme = appearance_.theme();
    const int air = pictureAirPx;
    QImage image(QSize(sheet.width(), sheet.height() + 2 * air) * pictureScale,
                 QImage::Format_RGB32);
    image.setDevicePixelRatio(pictureScale);
    image.fill(theme.window);
    sheet.render(&image, {0, air}, {}, QWidget::DrawChildren);
    QPainter painter(&image);
    painter.setFont(interfaceFont(TextRole::caption));
    painter.setPen(theme.secondary);
    painter.drawText(QRect(air * 2, sheet.height(), sheet.width() - 4 * air, air),
                     Qt::AlignRight | Qt::AlignVCenter, "Kelvaro");
    return image;
}

void ProfilePage::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    model_.follow();
    scroll_->verticalScrollBar()->setValue(0);
}

void ProfilePage::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    model_.rest();
}

void ProfilePage::keyPressEvent(QKeyEvent* event) {
    constexpr std::array<int, 6> scrolling{Qt::Key_Up,       Qt::Key_Down, Qt::Key_PageUp,
                                           Qt::Key_PageDown, Qt::Key_Home, Qt::Key_End};
    if (event->key() == Qt::Key_Escape) return onBack();
    if (std::ranges::find(scrolling, event->key()) != scrolling.end())
        QCoreApplication::sendEvent(scroll_->verticalScrollBar(), event);
    else
        QWidget::keyPressEvent(event);
}

} // namespace kelvaro
