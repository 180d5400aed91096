#include "ui/profile/ProfileIconPicker.h"

#include "ui/Texts.h"
#include "ui/controls/IconButton.h"
#include "ui/controls/Naming.h"

#include <QHBoxLayout>

#include <algorithm>
#include <array>

namespace kelvaro {
namespace {

struct ProfileIcon {
    const char* stored;
    IconName icon;
    const char* title;
};
constexpr std::array icons{
    ProfileIcon{"person", IconName::person, "Person"},
    ProfileIcon{"aperture", IconName::aperture, "Aperture"},
    ProfileIcon{"mountain", IconName::mountain, "Mountains"},
    ProfileIcon{"leaf", IconName::leaf, "Leaf"},
    ProfileIcon{"wave", IconName::wave, "Waves"},
    ProfileIcon{"moon", IconName::moon, "Moon"},
    ProfileIcon{"star", IconName::star, "Star"},
};

// The place of the name in the list; the first for any other.
std::size_t placeOf(const std::string& stored) {
    const auto found =
        std::ranges::find_if(icons, [&](const ProfileIcon& each) { return each.stored == stored; });
    return found == icons.end() ? 0 : static_cast<std::size_t>(found - icons.begin());
}

} // namespace

IconName profileIcon(const std::string& stored) {
    return icons[placeOf(stored)].icon;
}

ProfileIconPicker::ProfileIconPicker(const Appearance& appearance, QWidget* parent)
    : QWidget(parent), buttons_(new QButtonGroup(this)) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    for (std::size_t at = 0; at < icons.size(); ++at) {
        const QString title = words(icons[at].title);
        auto* button =
            named(new IconButton(appearance, icons[at].icon), "profileIcon", title, title);
        button->setCheckable(true);
        buttons_->addButton(button, static_cast<int>(at));
        row->addWidget(button);
    }
    setChosen({});
    QObject::connect(buttons_, &QButtonGroup::idClicked, this, [this](int at) {
        const std::string stored = icons[std::size_t(at)].stored;
        setChosen(stored);
        if (onChosen) onChosen(stored);
    });
}

void ProfileIconPicker::setChosen(const std::string& stored) {
    const int place = static_cast<int>(placeOf(stored));
    for (QAbstractButton* button : buttons_->buttons()) {
        const bool isIt = buttons_->id(button) == place;
        button->setChecked(isIt);
        static_cast<IconButton*>(button)->setHighlighted(isIt);
    }
}

std::string ProfileIconPicker::chosen() const {
    return icons[std::size_t(std::max(0, buttons_->checkedId()))].stored;
}

} // namespace kelvaro
