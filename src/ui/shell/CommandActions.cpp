#include "ui/shell/CommandActions.h"

#include "app/PlatformWords.h"
#include "ui/Texts.h"

#include <QMenu>
#include <QShortcut>

#include <array>

namespace kelvaro {
namespace {

struct MenuTitle {
    Menu menu;
    const char* title;
};
constexpr std::array menuTitles{MenuTitle{Menu::file, "File"}, MenuTitle{Menu::edit, "Edit"},
                                MenuTitle{Menu::view, "View"}, MenuTitle{Menu::photo, "Photo"},
                                MenuTitle{Menu::help, "Help"}};

} // namespace

CommandActions::CommandActions(QWidget* window) : QObject(window) {
    for (const Command& row : commands()) {
        auto* action = new QAction(window);
        action->setObjectName(fromUtf8(row.name));
        // "Crop & Straighten" names no access key.
        action->setText(words(row.title).replace("&", "&&"));
        action->setToolTip(words(row.help));
        if (!row.key.empty() && !row.held)
            action->setShortcut(QKeySequence(QString::fromStdString(shownKey(row.key))));
        action->setShortcutContext(Qt::WindowShortcut);
        window->addAction(action);
        actions_.emplace(row.id, action);
    }
    refresh();
}

void CommandActions::on(CommandId id, std::function<void()> call) {
    QObject::connect(action(id), &QAction::triggered, this, [call = std::move(call)] { call(); });
}

void CommandActions::setCircumstances(unsigned now) {
    if (circumstances_ == now) return;
    circumstances_ = now;
    refresh();
}

void CommandActions::setSuspended(bool suspended) {
    suspended_ = suspended;
    refresh();
}

void CommandActions::refresh() {
    for (const Command& row : commands())
        action(row.id)->setEnabled(!suspended_ && isEnabled(row, circumstances_));
}

void CommandActions::setOn(CommandId id, bool on) {
    const Command& row = command(id);
    action(id)->setText(
        words(on && !row.titleWhenOn.empty() ? row.titleWhenOn : row.title).replace("&", "&&"));
    action(id)->setToolTip(words(on && !row.helpWhenOn.empty() ? row.helpWhenOn : row.help));
}

void CommandActions::setHelp(CommandId id, std::string_view help) {
    action(id)->setToolTip(words(help));
}

void CommandActions::fill(QMenuBar* bar) const {
    // As on most desktops, F10 leads into the menus, and Alt with a menu's first letter opens it.
    auto* toMenus = new QShortcut(QKeySequence(Qt::Key_F10), bar->window());
    QObject::connect(toMenus, &QShortcut::activated, bar,
                     [bar] { bar->setActiveAction(bar->actions().value(0)); });
    for (const MenuTitle& title : menuTitles) {
        QMenu* menu = bar->addMenu("&" + words(title.title));
        menu->setObjectName(QString(title.title).toLower() + "Menu");
        for (const Command& row : commands()) {
            if (row.menu != title.menu) continue;
            menu->addAction(action(row.id));
            if (row.endsSection) menu->addSeparator();
        }
    }
}

} // namespace kelvaro
