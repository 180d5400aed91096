// How the standard controls look, as one style sheet whose colours come from the theme. Controls
// that are drawn by hand are not mentioned here.
#include "ui/theme/Theme.h"

#include <utility>

namespace kelvaro {
namespace {

constexpr const char* rules = R"(
* { outline: none; }
QMainWindow, QDialog { background: @window; }
QToolTip { background: @control; color: @text; border: 1px solid @line; padding: 4px 6px; }
QLabel { background: transparent; color: @text; }
QLabel[role="secondary"], QLabel[role="caption"] { color: @secondary; }
QLabel[role="caption"] { font-size: 11px; }
QLabel[role="heading"] { font-size: 15px; font-weight: 600; }
QLabel[role="greeting"] { font-size: 24px; font-weight: 600; }
QLabel:disabled { color: @disabled; }
QLabel[role="warning"] { color: @warning; }

QMenuBar { background: @window; color: @secondary; padding: 2px 8px; spacing: 0px; }
QMenuBar::item { background: transparent; padding: 4px 8px; border-radius: 4px; }
QMenuBar::item:selected, QMenuBar::item:pressed { background: @hover; color: @text; }
QMenu { background: @control; color: @text; border: 1px solid @line; border-radius: 6px; padding: 4px; }
QMenu::item { padding: 5px 24px 5px 12px; border-radius: 4px; }
QMenu::item:selected { background: @primary; color: @onPrimary; }
QMenu::item:disabled { color: @disabled; background: transparent; }
QMenu::separator { height: 1px; background: @line; margin: 4px 8px; }
QMenu::icon { padding-left: 6px; }
QMenu::indicator { width: 14px; height: 14px; padding-left: 6px; }

QPushButton { background: @control; color: @text; border: 1px solid @line; border-radius: 6px;
    min-height: 26px; padding: 0 14px; }
QPushButton:hover { background: @controlHover; }
QPushButton:pressed { background: @controlPressed; }
QPushButton:disabled { color: @disabled; }
QPushButton:focus { border: 1px solid @accent; }
QPushButton[kind="primary"] { background: @primary; color: @onPrimary; border-color: transparent;
    font-weight: 600; }
QPushButton[kind="primary"]:hover { background: @primaryHover; }
QPushButton[kind="primary"]:disabled { background: @control; color: @disabled; }
QPushButton[kind="primary"]:focus { border: 2px solid @text; padding: 0 13px; min-height: 24px; }
QPushButton[kind="quiet"] { background: transparent; border-color: transparent; color: @secondary;
    padding: 0 8px; }
QPushButton[kind="quiet"]:hover { background: @hover; color: @text; }
QPushButton[kind="quiet"]:focus { border-color: @accent; }
QPushButton[kind="link"] { background: transparent; border: none; color: @secondary; padding: 0; }
QPushButton[kind="link"]:hover { color: @text; }
QPushButton[kind="link"]:focus { color: @accent; text-decoration: underline; }
QPushButton[kind="danger"] { color: @warning; }

QToolButton { background: transparent; border: 1px solid transparent; border-radius: 6px; padding: 3px; }
QToolButton:hover { background: @hover; }
QToolButton:pressed, QToolButton:open { background: @pressed; }
QToolButton:focus { border-color: @accent; }
QToolButton::menu-indicator { image: none; }

QLineEdit, QSpinBox, QDoubleSpinBox { background: @control; color: @text; border: 1px solid @line;
    border-radius: 6px; min-height: 26px; padding: 0 8px; selection-background-color: @primary;
    selection-color: @onPrimary; }
QLineEdit:focus, QSpinBox:focus, QDoubleSpinBox:focus { border: 1px solid @accent; }
QLineEdit:disabled, QSpinBox:disabled, QDoubleSpinBox:disabled { color: @disabled; }
QSpinBox::up-button, QSpinBox::down-button, QDoubleSpinBox::up-button,
QDoubleSpinBox::down-button { width: 0px; border: none; }

QComboBox { background: @control; color: @text; border: 1px solid @line; border-radius: 6px;
    min-height: 26px; padding: 0 8px; }
QComboBox:hover { background: @controlHover; }
QComboBox:focus { border: 1px solid @accent; }
QComboBox:disabled { color: @disabled; }
QComboBox::drop-down { border: none; width: 22px; }
QComboBox::down-arrow { image: none; }
QComboBox QAbstractItemView { background: @control; color: @text; border: 1px solid @line;
    padding: 4px; selection-background-color: @primary; selection-color: @onPrimary; }

QListView, QTreeView, QScrollArea, QAbstractScrollArea { background: transparent; border: none; }
QListWidget::item { height: 28px; border-radius: 6px; padding-left: 6px; color: @text; }
QListWidget::item:hover { background: @hover; }
QListWidget::item:selected { background: @pressed; color: @text; }
QListWidget::indicator { width: 14px; height: 14px; border: 1px solid @scrollHover; border-radius: 4px;
    background: @control; }
QListWidget::indicator:checked { background: @knob; border-color: @knob;
    image: url(:/kelvaro/check.svg); }
#sidebar { background: @panel; }
QScrollBar { background: transparent; border: none; margin: 0; }
QScrollBar:vertical { width: 12px; }
QScrollBar:horizontal { height: 12px; }
QScrollBar::handle { background: @scroll; border-radius: 3px; margin: 3px; }
QScrollBar::handle:vertical { min-height: 32px; }
QScrollBar::handle:horizontal { min-width: 32px; }
QScrollBar::handle:hover { background: @scrollHover; }
QScrollBar::handle:disabled { background: transparent; }
QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; }
QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }
QSlider { min-height: 22px; background: transparent; }
QSlider::groove:horizontal { height: 2px; background: @scroll; border-radius: 1px; }
QSlider::sub-page:horizontal { background: @knob; border-radius: 1px; }
QSlider::handle:horizontal { width: 12px; height: 12px; margin: -5px 0; border-radius: 6px;
    background: @knob; }
QSlider::handle:horizontal:hover { background: @text; }
QSlider::handle:horizontal:focus { background: @accent; }
QSlider::sub-page:horizontal:focus { background: @accent; }
QSlider::handle:horizontal:disabled, QSlider::sub-page:horizontal:disabled { background: @disabled; }
QCheckBox { spacing: 8px; color: @text; padding: 2px 0; }
QCheckBox::indicator { width: 14px; height: 14px; border: 1px solid @scrollHover; border-radius: 4px;
    background: @control; }
QCheckBox::indicator:hover { border-color: @secondary; }
QCheckBox::indicator:focus { border-color: @accent; }
QCheckBox::indicator:checked { background: @primary; border-color: @primary;
    image: url(:/kelvaro/check.svg); }
QSplitter::handle { background: @line; }
QProgressBar { background: @line; border: none; border-radius: 2px; max-height: 4px; min-height: 4px; }
QProgressBar::chunk { background: @accent; border-radius: 2px; }
)";

} // namespace

QString styleSheetOf(const Theme& theme) {
    const auto over = [](const QColor& top, const QColor& bottom) {
        return blended(top, bottom).name();
    };
    const QColor ink = theme.text;
    const auto faint = [&](double alpha) {
        return over(QColor::fromRgbF(ink.redF(), ink.greenF(), ink.blueF(), float(alpha)),
                    theme.window);
    };
    // Longer names first, so that none is taken for the beginning of another.
    const std::pair<const char*, QString> names[] = {
        {"@controlHover", over(theme.hover, theme.control)},
        {"@controlPressed", over(theme.pressed, theme.control)},
        {"@control", theme.control.name()},
        {"@panel", theme.panel.name()},
        {"@primaryHover", theme.primary.lighter(theme.dark ? 104 : 106).name()},
        {"@primary", theme.primary.name()},
        {"@onPrimary", theme.onPrimary.name()},
        {"@knob", faint(0.72)},
        {"@scrollHover", faint(0.42)},
        {"@scroll", faint(0.24)},
        {"@secondary", theme.secondary.name()},
        {"@disabled", theme.disabled.name()},
        {"@warning", theme.warning.name()},
        {"@window", theme.window.name()},
        {"@accent", theme.accent.name()},
        {"@hover", theme.hover.name(QColor::HexArgb)},
        {"@pressed", theme.pressed.name(QColor::HexArgb)},
        {"@line", theme.hairline.name(QColor::HexArgb)},
        {"@text", theme.text.name()},
    };
    QString sheet = rules;
    for (const auto& [name, value] : names)
        sheet.replace(name, value);
    return sheet;
}

} // namespace kelvaro
