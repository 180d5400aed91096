// Asks once for the name that the profile greets with, and for an icon. Both may be left as they
// are; the settings have them too.
#pragma once

#include "ui/controls/Overlay.h"
#include "ui/profile/ProfileIconPicker.h"

#include <QLineEdit>

namespace kelvaro {

class ProfilePrompt final : public Overlay {
public:
    ProfilePrompt(const Appearance& appearance, QWidget* window);

    // Begins with what is known already.
    void begin(const QString& name, const std::string& icon);

    std::function<void(const QString& name, const std::string& icon)> onAnswered;

private:
    void answer();

    QLineEdit* name_;
    ProfileIconPicker* icons_;
};

} // namespace kelvaro
