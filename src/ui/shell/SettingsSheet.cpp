#include "ui/shell/SettingsSheet.h"

#include "app/SettingsKeys.h"
#include "ui/Texts.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"

#include <QPushButton>
#include <QVBoxLayout>

namespace kelvaro {
namespace {

constexpr int textPx = 300;

} // namespace

SettingsSheet::SettingsSheet(const Appearance& appearance, LibraryStore& lib,
                             SettingsStore& settings, UsageCounts& usageCounts, QWidget* window)
    : Overlay(appearance, Kind::sheet, window),
      lib_(lib),
      settings_(settings),
      usageCounts_(usageCounts) {
    setObjectName("settingsSheet");
    rows_ = new QGridLayout;
    rows_->setHorizontalSpacing(24);
    rows_->setVerticalSpacing(measure::margin);
    mode_ = named(new Choice(appearance), "appearance", words("Appearance"),
                  words("Dark, light, or as the system is"));
    mode_->addItems({words("System"), words("Light"), words("Dark")});
    mode_->setFixedWidth(112);
    addRow(words("Appearance"), {}, mode_);
    photoBar_ =
        named(new Switch(appearance), "showsPhotoBar", words("Show the photo bar in the editor"),
              words("Show the photo bar in the editor"));
    addRow(words("Show the photo bar in the editor"), {}, photoBar_);
    name_ = named(new QLineEdit, "profileName", words("Your name"),
                  words("Greets you on your profile"));
    name_->setPlaceholderText(words("Name"));
    name_->setMaxLength(60);
    name_->setFixedWidth(160);
    addRow(words("Your name"), {}, name_);
    icons_ = new ProfileIconPicker(appearance);
    addRow(words("Choose your icon"), {}, icons_);
    icons_->onChosen = [this](const std::string& icon) {
        settings_.set(settingsKey::profileIcon, icon);
        if (onProfileChanged) onProfileChanged();
    };
    usage_ = named(new Switch(appearance), "shareUsageCounts",
                   words("Share anonymous usage counts"), words("Share anonymous usage counts"));
    addRow(words("Share anonymous usage counts"),
           words("Launches and how many photos you export, with the app and macOS versions.\n"
                 "Never photos, file names, places or settings."),
           usage_);
    makeUsageMessage();
    addRow(words("Check for updates automatically"),
           words("New versions come with your system's software updates."), nullptr);

    auto* done = named(new QPushButton(words("Done")), "closeSettings", words("Done"),
                       words("Close the settings (Esc)"));
    done->setProperty("kind", "primary");
    QObject::connect(done, &QPushButton::clicked, this, [this] { dismiss(); });
    auto* column = new QVBoxLayout(panel());
    column->setContentsMargins(24, 24, 24, 20);
    column->setSpacing(measure::margin);
    column->addWidget(label(words("Settings"), "heading"));
    column->addLayout(rows_);
    column->addSpacing(measure::unit);
    column->addWidget(done, 0, Qt::AlignRight);

    QObject::connect(mode_, &QComboBox::activated, this,
                     [this](int mode) { lib_.setAppearance(static_cast<AppearanceMode>(mode)); });
    QObject::connect(photoBar_, &Switch::clicked, this,
                     [this](bool on) { lib_.setShowsFilmstrip(on); });
    QObject::connect(usage_, &Switch::clicked, this, [this](bool on) {
        usageCounts_.setShared(on);
        showUsageMessage();
    });
    QObject::connect(name_, &QLineEdit::textEdited, this, [this](const QString& name) {
        settings_.set(settingsKey::profileName, name.trimmed().toStdString());
        if (onProfileChanged) onProfileChanged();
    });
    refresh();
}

void SettingsSheet::addRow(const QString& title, const QString& note, QWidget* control) {
    auto* text = new QVBoxLayout;
    text->setSpacing(2);
    text->addWidget(wrappedLabel(title, "body", textPx));
    if (!note.isEmpty()) text->addWidget(wrappedLabel(note, "caption", textPx));
    const int line = rows_->rowCount();
    rows_->addLayout(text, line, 0);
    if (control) rows_->addWidget(control, line, 1, Qt::AlignRight | Qt::AlignVCenter);
}

// The whole of it, so that nobody has to take our word for it.
void SettingsSheet::makeUsageMessage() {
    showsMessage_ =
        named(new QPushButton(words("What would be sent")), "showUsageMessage",
              words("What would be sent"), words("Show the whole message, word for word"));
    showsMessage_->setProperty("kind", "link");
    showsMessage_->setCheckable(true);
    message_ = wrappedLabel({}, "caption", textPx);
    message_->setObjectName("usageMessage");
    message_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* column = new QVBoxLayout;
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(measure::unit / 2);
    column->addWidget(showsMessage_, 0, Qt::AlignLeft);
    column->addWidget(message_);
    rows_->addLayout(column, rows_->rowCount(), 0, 1, 2);
    QObject::connect(showsMessage_, &QPushButton::toggled, this, [this] { showUsageMessage(); });
}

void SettingsSheet::showUsageMessage() {
    message_->setVisible(showsMessage_->isChecked());
    const QString never = words("Nothing is counted and nothing is sent until you say yes. "
                                "This version has no address to send to.");
    message_->setText(fromUtf8(usageCounts_.message()) +
                      (usageCounts_.isShared() ? "" : "\n" + never));
    panel()->adjustSize();
}

void SettingsSheet::refresh() {
    mode_->setCurrentIndex(static_cast<int>(lib_.appearance().get()));
    photoBar_->setChecked(lib_.showsFilmstrip().get());
    usage_->setChecked(usageCounts_.isShared());
    showUsageMessage();
    const auto name = settings_.get<std::string>(settingsKey::profileName).value_or("");
    if (!name_->hasFocus()) name_->setText(QString::fromStdString(name));
    icons_->setChosen(settings_.get<std::string>(settingsKey::profileIcon).value_or(""));
}

} // namespace kelvaro
