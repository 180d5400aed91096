// The profile in the window: opening, asking once, clicking through to photos, widths, sharing.
#include "ui/profile/ProfileScene.h"

#include "app/SettingsKeys.h"
#include "profile/Greeting.h"
#include "profile/WallTime.h"

#include <QAccessible>
#include <QScrollBar>

namespace kelvaro {
namespace {

class ProfilePageTest : public testing::Test, public ProfileScene {
protected:
    static constexpr int photoCount = 60;

    // In the window, with its numbers.
    ProfilePage& openProfile(int count = photoCount) {
        settings.set("profileAsked", true);
        settings.set("folders", std::vector<std::string>{
                                    life("Life", count, dayNumber({2024, 3, 10})).string()});
        open();
        window->commands().action(CommandId::profile)->trigger();
        until([&] {
            const auto& made = *profile->model().profile();
            // All of them, with all that their files tell.
            return made && made->charts.front().recorded() == count && library->isIdle();
        });
        QApplication::processEvents();
        return window->profilePage();
    }
    BarChart& bars(ChartKind kind) {
        return window->profilePage()
            .sheet()
            .charts()
            .cards()[static_cast<std::size_t>(kind)]
            ->bars();
    }
    // A bar with some but not all photos.
    int telling(const BarChart& chart) {
        for (int mark = 0; mark < static_cast<int>(chart.marks().size()); ++mark) {
            const qint64 count = chart.marks()[static_cast<std::size_t>(mark)].count;
            if (count > 0 && count < photoCount) return mark;
        }
        ADD_FAILURE() << "every photo is the same";
        return 0;
    }
};

TEST_F(ProfilePageTest, AsksForNameAndIconOnceAndGreetsWithThem) {
    open(true);
    const QAction* action = window->commands().action(CommandId::profile);
    EXPECT_EQ(action->toolTip(), "Your profile (Ctrl+Shift+P)");
    window->commands().action(CommandId::profile)->trigger();
    auto* prompt = find<Overlay>("profilePrompt");
    EXPECT_TRUE(prompt->isVisible());
    find<QLineEdit>("promptName")->setText("  Ada ");
    find<QPushButton>("promptSave")->click();
    EXPECT_FALSE(prompt->isVisible());
    EXPECT_EQ(settings.get<std::string>(settingsKey::profileName), "Ada");
    EXPECT_EQ(action->toolTip(), "Ada's profile (Ctrl+Shift+P)");
    EXPECT_EQ(find<QLabel>("profileGreeting")->text().toStdString(),
              greeting(profile->model().now(), "Ada"));
    for (int again = 0; again < 2; ++again) {
        window->commands().action(CommandId::profile)->trigger();
        EXPECT_EQ(window->profilePage().isVisible(), again == 1);
    }
    EXPECT_FALSE(prompt->isVisible());
    QTest::keyClick(&window->profilePage(), Qt::Key_Escape);
    EXPECT_TRUE(window->libraryPage().isVisible());
}

TEST_F(ProfilePageTest, ABarShowsItsPhotosUntilTheyAreLeft) {
    openProfile();
    BarChart& chart = bars(ChartKind::iso);
    const int mark = telling(chart);
    const auto count = static_cast<std::size_t>(chart.marks()[std::size_t(mark)].count);
    QTest::mouseClick(&chart, Qt::LeftButton, {}, chart.place(mark).center().toPoint());
    EXPECT_TRUE(window->libraryPage().isVisible());
    until([&] { return library->isIdle() && shown() == count; });
    EXPECT_TRUE(find<QPushButton>("showAllPhotos")->isVisible());
    find<QPushButton>("showAllPhotos")->click();
    until([&] { return shown() == std::size_t(photoCount); });
    EXPECT_FALSE(find<QPushButton>("showAllPhotos")->isVisible());

    // The same with the keyboard, and back to the profile.
    window->commands().action(CommandId::profile)->trigger();
    for (int step = 0; step <= mark; ++step)
        QTest::keyClick(&chart, Qt::Key_Right);
    QTest::keyClick(&chart, Qt::Key_Return);
    until([&] { return library->isIdle() && shown() == count; });
    find<QPushButton>("backToProfile")->click();
    EXPECT_TRUE(window->profilePage().isVisible());
    EXPECT_FALSE(*library->restriction());
}

TEST_F(ProfilePageTest, ADayAndATableRowShowTheirPhotosToo) {
    ProfilePage& page = openProfile();
    const YearCalendar& year = page.sheet().calendar().calendar();
    const auto& [day, count] = *(*profile->model().profile())->photosByDay.begin();
    int mark = 0;
    while (year.dayOfMark(mark) != day)
        ++mark;
    year.onChosen(mark);
    const auto wanted = static_cast<std::size_t>(count);
    until([&] { return library->isIdle() && shown() == wanted; });

    window->commands().action(CommandId::profile)->trigger();
    find<QPushButton>("profileTables")->click();
    QTableWidget& table =
        *page.sheet().charts().cards()[static_cast<std::size_t>(ChartKind::camera)]->table();
    EXPECT_TRUE(table.isVisible());
    const auto photos = static_cast<std::size_t>(table.item(0, 1)->text().toInt());
    table.itemActivated(table.item(0, 0));
    until([&] { return library->isIdle() && shown() == photos; });
}

TEST_F(ProfilePageTest, HidesTheSelectionFromCommands) {
    openProfile();
    window->commands().action(CommandId::profile)->trigger();
    library->selectAll();
    settle();
    EXPECT_TRUE(window->commands().action(CommandId::favorite)->isEnabled());
    window->commands().action(CommandId::profile)->trigger();
    EXPECT_FALSE(window->commands().action(CommandId::favorite)->isEnabled());
}

// What a section holds stays inside it and apart from its neighbours.
void expectOrder(const QWidget& parent, int width) {
    const auto children = parent.findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
    for (int at = 0; at < children.size(); ++at) {
        const QWidget* one = children[at];
        if (!one->isVisible()) continue;
        EXPECT_TRUE(parent.rect().contains(one->geometry()))
            << width << ": " << one->objectName().toStdString() << one->metaObject()->className();
        for (int other = at + 1; other < children.size(); ++other) {
            EXPECT_FALSE(children[other]->isVisible() &&
                         one->geometry().intersects(children[other]->geometry()))
                << width << ": " << one->objectName().toStdString();
        }
        if (dynamic_cast<const Section*>(one)) expectOrder(*one, width);
    }
}

TEST_F(ProfilePageTest, FitsEveryWidth) {
    ProfilePage& page = openProfile();
    for (const int width : {720, 800, 1024, 1280, 1920, 3840}) {
        window->resize(width, 900);
        QApplication::processEvents();
        EXPECT_EQ(page.scroll().horizontalScrollBar()->maximum(), 0);
        expectOrder(page.sheet(), width);
    }
}

// A name of any length keeps to its room: whatever a label shows fits into it.
TEST_F(ProfilePageTest, VeryLongNamesAreNotCutOff) {
    ProfilePage& page = openProfile();
    Profile long_ = **profile->model().profile();
    const std::string name(80, 'W');
    long_.tags = {{"One-lens wonder", "90% of your photos with your " + name, 1}};
    long_.lensSentence = "One lens for everything: your " + name;
    long_.cameraSentence = "Every photo from your " + name;
    for (const int width : {720, 1280}) {
        window->resize(width, 900);
        QApplication::processEvents();
        page.sheet().show(long_, profile->model().now());
        page.greet(name, "");
        QApplication::processEvents();
        expectOrder(page.sheet(), width);
        for (const QLabel* label : page.sheet().findChildren<QLabel*>()) {
            if (!label->isVisible() || label->text().isEmpty()) continue;
            const QRect needed = label->fontMetrics().boundingRect(
                QRect(0, 0, label->width(), 100'000),
                label->wordWrap() ? Qt::TextWordWrap : Qt::TextSingleLine, label->text());
            EXPECT_LE(needed.width(), label->width() + 1) << label->text().toStdString();
            EXPECT_LE(needed.height(), label->height() + 1) << label->text().toStdString();
        }
    }
}

TEST_F(ProfilePageTest, EveryMarkAndTagIsHeard) {
    ProfilePage& page = openProfile();
    int badges = 0;
    for (const QWidget* widget : page.findChildren<QWidget*>()) {
        const bool isBadge = dynamic_cast<const TagBadge*>(widget);
        if (!isBadge && !dynamic_cast<const MarkView*>(widget)) continue;
        badges += isBadge;
        EXPECT_FALSE(widget->accessibleName().isEmpty());
        EXPECT_FALSE(widget->accessibleDescription().isEmpty());
        EXPECT_TRUE(widget->focusPolicy() & Qt::TabFocus);
    }
    EXPECT_GT(badges, 0);
    EXPECT_LE(badges, 8);
    EXPECT_EQ(bars(ChartKind::hour).textOf(3), "3:00: no photos");

    // Each bar by itself, with what can be done with it.
    BarChart& chart = bars(ChartKind::iso);
    QAccessibleInterface* whole = QAccessible::queryAccessibleInterface(&chart);
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->role(), QAccessible::Chart);
    ASSERT_EQ(whole->childCount(), static_cast<int>(chart.marks().size()));
    const int mark = telling(chart);
    QAccessibleInterface* bar = whole->child(mark);
    EXPECT_EQ(bar->text(QAccessible::Name), chart.textOf(mark));
    EXPECT_EQ(bar->parent(), whole);
    EXPECT_EQ(whole->childAt(bar->rect().center().x(), bar->rect().center().y()), bar);
    chart.setFocus();
    QTest::keyClick(&chart, Qt::Key_Home);
    EXPECT_EQ(whole->focusChild(), whole->child(0));
    ASSERT_TRUE(bar->actionInterface());
    bar->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(*library->restriction());
    for (int at = 0; at < whole->childCount(); ++at) {
        const bool hasPhotos = chart.marks()[static_cast<std::size_t>(at)].count > 0;
        EXPECT_EQ(whole->child(at)->actionInterface()->actionNames().isEmpty(), !hasPhotos);
    }
}

TEST_F(ProfilePageTest, SavesAPictureBesideOthers) {
    openProfile();
    script.folder = root.path();
    for (int again = 0; again < 2; ++again) {
        find<QToolButton>("shareProfile")->click();
        ASSERT_EQ(desktop.shown.size(), 1u);
        const QImage picture(QString::fromStdString(desktop.shown[0].string()));
        EXPECT_EQ(picture.width(), 2368);
        EXPECT_GT(picture.height(), 2000);
    }
    EXPECT_TRUE(desktop.shown[0].filename().string().ends_with(" 2.png"));
    script.folder = "/nowhere";
    find<QToolButton>("shareProfile")->click();
    until([&] { return !script.asked.empty(); });
    EXPECT_EQ(script.asked.back().text, "The picture couldn't be written.");
}

TEST_F(ProfilePageTest, AnEmptyPeriodLeadsToAllTime) {
    ProfilePage& page = openProfile();
    page.periods().setCurrentIndex(0);
    page.periods().activated(0); // this month: years after the last photo
    until([&] { return (*profile->model().profile())->counts.photos == 0; });
    auto* button = find<QPushButton>("profileEmptyButton");
    EXPECT_TRUE(button->isVisible());
    button->click();
    until([&] { return (*profile->model().profile())->counts.photos == photoCount; });
    EXPECT_FALSE(button->isVisible());
    EXPECT_EQ(page.periods().currentText(), "All time");
}

TEST_F(ProfilePageTest, CountsExportsAndSharesCountsOnlyAfterAYes) {
    settings.set("folders", std::vector<std::string>{photos("Trip", 2).string()});
    open();
    UsageCounts& usage = profile->usage();
    EXPECT_FALSE(usage.isShared());
    EXPECT_EQ(usage.launches(), 0);
    const auto exportAll = [this] {
        std::vector<ExportJob> jobs;
        for (const Photo* photo : library->view().get()->photos)
            jobs.push_back({photo->url, Adjustments{}});
        ExportSettings wanted = ExportSettings::load(settings, folders);
        wanted.destination = (root / "exported").string();
        exporter->start(jobs, wanted, {}, {});
        until([&] { return !exporter->state().get().running; });
    };
    exportAll();
    const std::int64_t today = dayNumber(profile->model().now());
    EXPECT_EQ(profile->exports().byDay(), (std::map<std::int64_t, std::int64_t>{{today, 2}}));
    EXPECT_EQ(usage.exportedPhotos(), 0);

    window->commands().action(CommandId::settings)->trigger();
    find<QAbstractButton>("shareUsageCounts")->click();
    EXPECT_TRUE(usage.isShared());
    exportAll();
    EXPECT_EQ(usage.exportedPhotos(), 2);
    find<QPushButton>("showUsageMessage")->click();
    window->settingsSheet().refresh();
    EXPECT_EQ(find<QLabel>("usageMessage")->text().toStdString(), usage.message());
    EXPECT_NE(usage.message().find("Kelvaro.exported: 2\n"), std::string::npos);
}

} // namespace
} // namespace kelvaro
