// Everything that can be used says what it is, can be reached by Tab and is explained.
#include "app/PlatformWords.h"
#include "ui/WindowScene.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QComboBox>
#include <QScrollBar>
#include <QTableView>
#include <QTranslator>

namespace kelvaro {
namespace {

bool isInteractive(const QWidget* widget) {
    if (qobject_cast<const QScrollBar*>(widget)) return false;
    // Parts of Qt's own widgets.
    if (widget->objectName().startsWith("qt_")) return false;
    if (widget->metaObject()->className() == QString("QTableCornerButton")) return false;
    return qobject_cast<const QAbstractButton*>(widget) || qobject_cast<const QLineEdit*>(widget) ||
           qobject_cast<const QAbstractSlider*>(widget) || qobject_cast<const QComboBox*>(widget) ||
           qobject_cast<const QAbstractSpinBox*>(widget) || dynamic_cast<const GridView*>(widget) ||
           dynamic_cast<const Sidebar*>(widget);
}

QStringList faults(const QWidget* widget) {
    QStringList found;
    if (widget->objectName().isEmpty()) found << "no object name";
    if (widget->accessibleName().isEmpty()) found << "no accessible name";
    if (!(widget->focusPolicy() & Qt::TabFocus)) found << "no Tab";
    if (widget->toolTip().isEmpty() && widget->accessibleDescription().isEmpty())
        found << "no help";
    return found;
}

QStringList faultsBelow(const QWidget* root) {
    QStringList lines;
    for (const QWidget* widget : root->findChildren<QWidget*>()) {
        // What an outer control is made of is reached through that control.
        bool isPart = false;
        for (const QWidget* up = widget->parentWidget(); up && up != root; up = up->parentWidget())
            isPart = isPart || qobject_cast<const QAbstractSpinBox*>(up) ||
                     qobject_cast<const QComboBox*>(up) || qobject_cast<const QTableView*>(up);
        const bool isAbsent = widget->isHidden() && !widget->isEnabled();
        if (isPart || isAbsent || !isInteractive(widget)) continue;
        const QStringList found = faults(widget);
        if (!found.isEmpty())
            lines << QString("%1 '%2': %3")
                         .arg(widget->metaObject()->className(), widget->objectName(),
                              found.join(", "));
    }
    return lines;
}

class Access : public testing::Test, public WindowScene {
protected:
    // Everything that opens over the library, one after another; Esc closes each.
    template<class Look>
    void openEach(Look look) {
        const auto run = [this](CommandId id) { window->commands().action(id)->trigger(); };
        const std::function<void()> openers[] = {
            [&] { run(CommandId::about); },
            [&] { run(CommandId::introduction); },
            [&] { run(CommandId::settings); },
            [&] { run(CommandId::moveToTrash); },
            [&] { run(CommandId::revertToOriginal); },
            [&] { run(CommandId::checkForUpdates); },
            [&] { run(CommandId::exportPhotos); },
            [&] { window->libraryPage().toolbar().filterButton()->click(); },
            [&] { run(CommandId::profile); },
        };
        library->selectAll();
        Adjustments edit;
        edit.exposure = 1;
        library->setAdjustments(library->view().get()->photos.front()->url, edit);
        settle();
        for (const auto& open : openers) {
            open();
            settle();
            const Overlay* shown = nullptr;
            for (const QWidget* child : window->findChildren<QWidget*>()) {
                const auto* overlay = dynamic_cast<const Overlay*>(child);
                if (overlay && overlay->isVisible()) shown = overlay;
            }
            ASSERT_NE(shown, nullptr) << "nothing has opened";
            look(shown->objectName().toStdString());
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
            settle();
        }
    }
};

TEST_F(Access, EveryControlHasNameTabAndHelp) {
    settings.set("folders", std::vector<std::string>{photos("Trip", 4).string()});
    open(true);
    makeAll();
    until([&] { return shown() == 4; });
    library->requestInfo(library->view().get()->photos.front()->url);
    openEach([&](const std::string& over) {
        EXPECT_EQ(faultsBelow(window.get()).join("\n").toStdString(), "") << over;
    });
}

TEST_F(Access, EveryToolOfTheEditorHasNameTabAndHelp) {
    settings.set("folders", std::vector<std::string>{photos("Trip", 2).string()});
    open();
    library->openEditor(PhotoUrl(library->view().get()->photos.front()->url));
    settle();
    for (const CommandId id : {CommandId::crop, CommandId::masks}) {
        window->commands().action(id)->trigger();
        settle();
        EXPECT_EQ(faultsBelow(&window->editor()).join("\n").toStdString(), "");
    }
}

// Marks everything that was looked up.
class Marker final : public QTranslator {
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* text, const char*, int) const override {
        return std::string_view(context) == "kelvaro" ? "‹" + QString::fromUtf8(text) + "›"
                                                      : QString();
    }
};

bool isUnmarked(const QString& text) {
    static const QStringList own{"Kelvaro", "sRGB", "Display P3", "JPEG", "HEIC", "TIFF", "PNG"};
    const bool hasLetter = std::ranges::any_of(text, [](QChar c) { return c.isLetter(); });
    return hasLetter && !own.contains(text) && !text.contains("‹");
}

TEST_F(Access, EveryTextCanBeTranslated) {
    Marker marker;
    QApplication::installTranslator(&marker);
    settings.set("folders", std::vector<std::string>{photos("Trip", 4).string()});
    open(true);
    makeAll();
    until([&] { return shown() == 4; });
    QStringList found;
    const auto look = [&](const QObject* where, const QString& text) {
        if (isUnmarked(text)) found << where->objectName() + ": " + text;
    };
    openEach([&](const std::string&) {
        for (const QAction* action : window->actions()) {
            look(action, action->text());
            look(action, action->toolTip());
        }
        for (const QWidget* widget : window->findChildren<QWidget*>()) {
            if (dynamic_cast<const InfoPanel*>(widget->parentWidget())) continue;
            look(widget, widget->toolTip());
            look(widget, widget->accessibleName());
            if (const auto* button = qobject_cast<const QAbstractButton*>(widget))
                look(widget, button->text());
            if (const auto* text = qobject_cast<const QLabel*>(widget);
                text && text->objectName() != "scopeTitle")
                look(widget, text->text());
        }
    });
    found.removeDuplicates();
    QApplication::removeTranslator(&marker);
    EXPECT_EQ(found.join("\n").toStdString(), "");
}

// From the grid through everything that can be reached and back to it.
TEST_F(Access, TabGoesRound) {
    settings.set("folders", std::vector<std::string>{photos("Trip", 4).string()});
    open(true);
    until([&] { return shown() == 4; });
    window->libraryPage().grid().setFocus();
    QStringList reached;
    do {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        reached << QApplication::focusWidget()->objectName();
    } while (reached.last() != "grid" && reached.size() < 40);
    for (const char* name : {"searchField", "filterButton", "sortButton", "sizeSlider", "sidebar",
                             "profileButton", "grid"})
        EXPECT_TRUE(reached.contains(name)) << name;
    EXPECT_LT(reached.size(), 20);
}

TEST_F(Access, PhotosAreItemsOfAList) {
    settings.set("folders", std::vector<std::string>{photos("Trip", 4).string()});
    open(true);
    until([&] { return shown() == 4; });
    library->setSelection({library->view().get()->photos[1]->url});
    settle();
    QAccessibleInterface* grid =
        QAccessible::queryAccessibleInterface(&window->libraryPage().grid());
    ASSERT_NE(grid, nullptr);
    EXPECT_EQ(grid->role(), QAccessible::List);
    EXPECT_EQ(grid->text(QAccessible::Name), "Photos");
    ASSERT_EQ(grid->childCount(), 4);
    EXPECT_EQ(grid->child(1)->role(), QAccessible::ListItem);
    EXPECT_TRUE(grid->child(1)->text(QAccessible::Name).startsWith("IMG_"));
    EXPECT_TRUE(grid->child(1)->state().selected);
    EXPECT_FALSE(grid->child(0)->state().selected);
    EXPECT_EQ(grid->child(4), nullptr);
}

// Keys of the window must leave a text field its own.
TEST_F(Access, NoKeyTakesOneFromTextFields) {
    open();
    const std::initializer_list<QKeySequence::StandardKey> fieldKeys{
        QKeySequence::Copy,
        QKeySequence::Cut,
        QKeySequence::Paste,
        QKeySequence::MoveToNextChar,
        QKeySequence::MoveToPreviousChar,
        QKeySequence::MoveToNextWord,
        QKeySequence::MoveToStartOfLine,
        QKeySequence::MoveToEndOfLine,
        QKeySequence::DeleteEndOfWord,
        QKeySequence::DeleteStartOfWord,
        QKeySequence::SelectNextChar,
        QKeySequence::SelectEndOfLine};
    for (const QAction* action : window->actions()) {
        for (const auto standard : fieldKeys) {
            for (const QKeySequence& key : QKeySequence::keyBindings(standard))
                EXPECT_NE(action->shortcut(), key) << action->objectName().toStdString();
        }
    }
}

TEST_F(Access, TextHasContrast) {
    for (const Theme& theme : {Theme::forDark(), Theme::forLight()}) {
        for (const QColor& ground :
             {theme.window, theme.panel, theme.control, theme.canvas, theme.cell,
              blended(theme.selectedRow, theme.panel), blended(theme.hover, theme.control)}) {
            for (const QColor& ink : {theme.text, theme.secondary})
                EXPECT_GE(contrastRatio(ink, ground), 4.5)
                    << ink.name().toStdString() << " on " << ground.name().toStdString();
        }
        EXPECT_GE(contrastRatio(theme.onPrimary, theme.primary), 4.5);
        EXPECT_GE(contrastRatio(theme.warning, theme.panel), 4.5);
    }
}

} // namespace
} // namespace kelvaro
