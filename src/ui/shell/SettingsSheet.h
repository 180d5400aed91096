// The settings: one row each, stored at once. Main thread.
#pragma once

#include "library/LibraryStore.h"
#include "platform/SettingsStore.h"
#include "ui/controls/Choice.h"
#include "ui/controls/Overlay.h"
#include "ui/controls/Switch.h"

#include <QButtonGroup>
#include <QGridLayout>
#include <QLineEdit>

namespace kelvaro {

class SettingsSheet final : public Overlay {
public:
    SettingsSheet(const Appearance& appearance, LibraryStore& lib, SettingsStore& settings,
                  QWidget* window);

    void refresh(); // from what is stored
    // The pictures that stand for the user, by the names they are stored under.
    static IconName profileIcon(const std::string& stored);

    std::function<void()> onProfileChanged;
    std::function<void(bool)> onUsageShared;

private:
    void addRow(const QString& title, const QString& note, QWidget* control);
    void makeIcons();

    const Appearance& look_;
    LibraryStore& lib_;
    SettingsStore& settings_;
    QGridLayout* rows_;
    Switch *photoBar_, *usage_;
    Choice* mode_;
    QLineEdit* name_;
    QButtonGroup* icons_;
};

} // namespace kelvaro
