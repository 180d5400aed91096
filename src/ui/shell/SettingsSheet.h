// The settings: one row each, stored at once. Main thread.
#pragma once

#include "app/UsageCounts.h"
#include "library/LibraryStore.h"
#include "platform/SettingsStore.h"
#include "ui/controls/Choice.h"
#include "ui/controls/Overlay.h"
#include "ui/controls/Switch.h"
#include "ui/profile/ProfileIconPicker.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace kelvaro {

class SettingsSheet final : public Overlay {
public:
    SettingsSheet(const Appearance& appearance, LibraryStore& lib, SettingsStore& settings,
                  UsageCounts& usageCounts, QWidget* window);

    void refresh(); // from what is stored

    std::function<void()> onProfileChanged;

private:
    void addRow(const QString& title, const QString& note, QWidget* control);
    void makeUsageMessage();
    void showUsageMessage();

    LibraryStore& lib_;
    SettingsStore& settings_;
    UsageCounts& usageCounts_;
    QGridLayout* rows_;
    Switch *photoBar_, *usage_;
    Choice* mode_;
    QLineEdit* name_;
    ProfileIconPicker* icons_;
    QPushButton* showsMessage_;
    QLabel* message_;
};

} // namespace kelvaro
