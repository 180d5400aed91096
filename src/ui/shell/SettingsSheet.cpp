#include "ui/shell/SettingsSheet.h"

#include "app/SettingsKeys.h"
#include "ui/Texts.h"
#include "ui/controls/IconButton.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include <array>

namespace kelvaro {
namespace {

constexpr int textPx = 300;

struct ProfileIcon {
    const char* stored;
    IconName icon;
    const char* title;
};
constexpr std::array profileIcons{
    ProfileIcon{"person", IconName::person, "Person"},
    ProfileIcon{"aperture", IconName::aperture, "Aperture"},
    ProfileIcon{"mountain", IconName::mountain, "Mountains"},
    ProfileIcon{"leaf", IconName::leaf, "Leaf"},
    ProfileIcon{"wave", IconName::wave, "Waves"},
    ProfileIcon{"moon", IconName::moon, "Moon"},
    ProfileIcon{"star", IconName::star, "Star"},
};

} // namespace

IconName SettingsSheet::profileIcon(const std::string& stored) {
    const auto found = std::ranges::find_if(
        profileIcons, [&](const ProfileIcon& each) { return each.stored == stored; });
    return found == profileIcons.end() ? IconName::person : found->icon;
}

SettingsSheet::SettingsSheet(const Appearance& appearance, LibraryStore& lib,
                             SettingsStore& settings, QWidget* window)
    : Overlay(appearance, Kind::sheet, window), look_(appearance), lib_(lib), settings_(settings) {
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
    makeIcons();
    usage_ = named(new Switch(appearance), "shareUsageCounts",
                   words("Share anonymous usage counts"), words("Share anonymous usage counts"));
    addRow(words("Share anonymous usage counts"),
           words("Launches and how many photos you export, with the app and macOS versions.\n"
                 "Never photos, file names, places or settings."),
           usage_);
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
    QObject::connect(usage_, &Switch::clicked, this, [this](bool on) { onUsageShared(on); });
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

void SettingsSheet::makeIcons() {
    icons_ = new QButtonGroup(this);
    auto* holder = new QWidget;
    auto* row = new QHBoxLayout(holder);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    for (std::size_t at = 0; at < profileIcons.size(); ++at) {
        const QString title = words(profileIcons[at].title);
        auto* button =
            named(new IconButton(look_, profileIcons[at].icon), "profileIcon", title, title);
        button->setCheckable(true);
        icons_->addButton(button, static_cast<int>(at));
        row->addWidget(button);
    }
    addRow(words("Choose your icon"), {}, holder);
    QObject::connect(icons_, &QButtonGroup::idClicked, this, [this](int at) {
        settings_.set(settingsKey::profileIcon, std::string(profileIcons[size_t(at)].stored));
        refresh();
        if (onProfileChanged) onProfileChanged();
    });
}

void SettingsSheet::refresh() {
    mode_->setCurrentIndex(static_cast<int>(lib_.appearance().get()));
    photoBar_->setChecked(lib_.showsFilmstrip().get());
    usage_->setChecked(settings_.get<bool>(settingsKey::shareUsageCounts).value_or(false));
    const auto name = settings_.get<std::string>(settingsKey::profileName).value_or("");
    if (!name_->hasFocus()) name_->setText(QString::fromStdString(name));
    const auto icon = settings_.get<std::string>(settingsKey::profileIcon).value_or("person");
    for (QAbstractButton* button : icons_->buttons()) {
        const bool chosen = icon == profileIcons[size_t(icons_->id(button))].stored;
        button->setChecked(chosen);
        static_cast<IconButton*>(button)->setHighlighted(chosen);
    }
}

} // namespace kelvaro
