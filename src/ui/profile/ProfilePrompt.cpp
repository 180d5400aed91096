#include "ui/profile/ProfilePrompt.h"

#include "profile/Greeting.h"
#include "ui/Texts.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace kelvaro {
namespace {

constexpr int widthPx = 320;

QPushButton* button(const char* objectName, const QString& title, const QString& help) {
    return named(new QPushButton(title), objectName, title, help);
}

} // namespace

ProfilePrompt::ProfilePrompt(const Appearance& appearance, QWidget* window)
    : Overlay(appearance, Kind::sheet, window) {
    setObjectName("profilePrompt");
    name_ =
        named(new QLineEdit, "promptName", words("Your name"), words("Greets you on your profile"));
    name_->setPlaceholderText(words("Name"));
    name_->setMaxLength(60);
    icons_ = new ProfileIconPicker(appearance);
    auto* later = button("promptLater", words("Not Now"), words("Leave it as it is (Esc)"));
    auto* save = button("promptSave", words("Save"), words("Keep the name and the icon"));
    save->setProperty("kind", "primary");
    QObject::connect(later, &QPushButton::clicked, this, [this] { dismiss(); });
    QObject::connect(save, &QPushButton::clicked, this, [this] { answer(); });
    QObject::connect(name_, &QLineEdit::returnPressed, this, [this] { answer(); });

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(measure::unit);
    buttons->addStretch(1);
    buttons->addWidget(later);
    buttons->addWidget(save);
    auto* column = new QVBoxLayout(panel());
    column->setContentsMargins(24, 24, 24, 20);
    column->setSpacing(measure::margin);
    column->addWidget(wrappedLabel(words(kProfileNamePrompt), "heading", widthPx));
    column->addWidget(name_);
    column->addWidget(icons_, 0, Qt::AlignLeft);
    column->addSpacing(measure::unit);
    column->addLayout(buttons);
    setFirstFocus(name_);
}

void ProfilePrompt::begin(const QString& name, const std::string& icon) {
    name_->setText(name);
    icons_->setChosen(icon);
    open();
}

void ProfilePrompt::answer() {
    if (onAnswered) onAnswered(name_->text().trimmed(), icons_->chosen());
    dismiss();
}

} // namespace kelvaro
