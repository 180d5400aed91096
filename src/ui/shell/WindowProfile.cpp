// The profile in the window: its page, the question for the name, sharing. Part of MainWindow.
#include "app/SettingsKeys.h"
#include "profile/Greeting.h"
#include "ui/Texts.h"
#include "ui/profile/ProfilePicture.h"
#include "ui/shell/MainWindow.h"

#include <fmt/format.h>

namespace kelvaro {

ProfilePage& MainWindow::profilePage() {
    if (profile_) return *profile_;
    profile_ = new ProfilePage(parts_.appearance, parts_.profile.model(), parts_.library,
                               parts_.texts, pages_);
    pages_->addWidget(profile_);
    profile_->onBack = [this] { showProfile(false); };
    profile_->onPhotosShown = [this] { showProfile(false); };
    profile_->onAddFolder = [this] { addFolder(); };
    profile_->onShare = [this] { shareProfile(); };
    showProfileName();
    return *profile_;
}

void MainWindow::bindProfile() {
    library_->onBackToProfile = [this] {
        parts_.library.leaveRestriction();
        showProfile(true);
    };
    profilePrompt_ = new ProfilePrompt(parts_.appearance, this);
    profilePrompt_->onAnswered = [this](const QString& name, const std::string& icon) {
        parts_.settings.set(settingsKey::profileName, name.toStdString());
        parts_.settings.set(settingsKey::profileIcon, icon);
        showProfileName();
    };
    commands_->on(CommandId::profile, [this] { showProfile(!showsProfile_); });
    showProfileName();
}

void MainWindow::showProfile(bool shows) {
    if (shows && parts_.library.isEditing()) parts_.library.closeEditor();
    showsProfile_ = shows;
    if (shows) showProfileName(); // the hour may have changed
    showRoot();
    showCommands();
    if (!shows || parts_.settings.get<bool>(settingsKey::profileAsked).value_or(false)) return;
    parts_.settings.set(settingsKey::profileAsked, true);
    profilePrompt_->begin(
        QString::fromStdString(
            parts_.settings.get<std::string>(settingsKey::profileName).value_or("")),
        parts_.settings.get<std::string>(settingsKey::profileIcon).value_or(""));
}

void MainWindow::showProfileName() {
    const auto name = parts_.settings.get<std::string>(settingsKey::profileName).value_or("");
    const auto icon = parts_.settings.get<std::string>(settingsKey::profileIcon).value_or("");
    if (profile_) profile_->greet(name, icon);
    library_->toolbar().setProfileIcon(profileIcon(icon));
    const std::string help = name.empty() ? std::string(command(CommandId::profile).help)
                                          : name + std::string(profileHelpAfterName);
    commands_->setHelp(CommandId::profile, help);
}

void MainWindow::shareProfile() {
    const QImage picture = profilePage().picture();
    if (picture.isNull()) return;
    parts_.prompts->chooseFolder(
        "Choose where to save the picture of your profile", parts_.folders.pictures,
        [this, picture](std::optional<std::filesystem::path> folder) {
            if (!folder) return;
            const CivilTime now = parts_.profile.model().now();
            const auto saved = saveProfilePicture(
                picture, *folder, fmt::format("{:04}-{:02}-{:02}", now.year, now.month, now.day));
            if (!saved) return parts_.library.showError(saved.error().message);
            notice_->showNotice(words("Saved “%1”").arg(fromUtf8(saved->filename().string())));
            parts_.desktop.showFiles({*saved});
        });
}

} // namespace kelvaro
