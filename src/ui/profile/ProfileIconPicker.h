// The pictures that may stand for the user, and a row of buttons to choose one.
#pragma once

#include "ui/theme/Appearance.h"

#include <QButtonGroup>
#include <QWidget>

#include <functional>
#include <string>

namespace kelvaro {

// By the name that it is stored under; a person for any other name.
IconName profileIcon(const std::string& stored);

class ProfileIconPicker final : public QWidget {
public:
    explicit ProfileIconPicker(const Appearance& appearance, QWidget* parent = nullptr);

    void setChosen(const std::string& stored);
    std::string chosen() const;

    std::function<void(const std::string& stored)> onChosen;

private:
    QButtonGroup* buttons_;
};

} // namespace kelvaro
