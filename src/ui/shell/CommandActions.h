// One action per row of the command table, for menu, button and key alike. What belongs to a
// command is set by whoever does it; the circumstances decide which are enabled.
#pragma once

#include "app/CommandTable.h"

#include <QAction>
#include <QMenuBar>
#include <QObject>

#include <functional>
#include <map>

namespace kelvaro {

class CommandActions final : public QObject {
public:
    // The actions belong to `window`, so that their keys work in all of it.
    explicit CommandActions(QWidget* window);

    QAction* action(CommandId id) const { return actions_.at(id); }
    void on(CommandId id, std::function<void()> call);
    void setCircumstances(unsigned now);
    unsigned circumstances() const { return circumstances_; }
    // While a sheet asks something, nothing else can be called.
    void setSuspended(bool suspended);
    // Chooses between a command's two titles and help texts.
    void setOn(CommandId id, bool on);
    // Another help text than the table's, as stored.
    void setHelp(CommandId id, std::string_view help);
    void fill(QMenuBar* bar) const;

private:
    void refresh();

    std::map<CommandId, QAction*> actions_;
    unsigned circumstances_ = 0;
    bool suspended_ = false;
};

} // namespace kelvaro
