#include "ui/theme/Theme.h"

#include <QFontDatabase>
#include <QGuiApplication>

#include <algorithm>
#include <cmath>

namespace kelvaro {
namespace {

QColor white(double alpha) {
    return QColor::fromRgbF(1, 1, 1, static_cast<float>(alpha));
}
QColor black(double alpha) {
    return QColor::fromRgbF(0, 0, 0, static_cast<float>(alpha));
}

double linear(double coded) {
    return coded <= 0.04045 ? coded / 12.92 : std::pow((coded + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& colour) {
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

// A desktop that names no font of its own gives one of these.
bool isGenericFamily(const QString& family) {
    static const QStringList generic{"",           "Sans Serif",  "Sans",
                                     "sans-serif", "DejaVu Sans", "Helvetica"};
    return generic.contains(family);
}

QString chosenFamily() {
    const QString system = QFontDatabase::systemFont(QFontDatabase::GeneralFont).family();
    if (!isGenericFamily(system)) return system;
    for (const char* family : {"Inter", "Cantarell", "Noto Sans"}) {
        if (QFontDatabase::hasFamily(family)) return family;
    }
    return system;
}

// Looked up once: finding a family takes longer than painting a row of text.
const QString& interfaceFamily() {
    static const QString family = chosenFamily();
    return family;
}

struct Tone {
    QColor Theme::*colour;
    QColor dark, light;
};

Theme themeOf(bool dark) {
    const Tone tones[] = {
        {&Theme::window, "#1b1b1b", "#f4f4f4"},
        {&Theme::panel, "#222222", "#fbfbfb"},
        {&Theme::control, "#2d2d2d", "#ffffff"},
        {&Theme::canvas, "#161616", "#e4e4e4"},
        {&Theme::hover, white(0.06), black(0.05)},
        {&Theme::pressed, white(0.10), black(0.09)},
        {&Theme::hairline, white(0.08), black(0.10)},
        {&Theme::text, "#ededed", "#1d1d1d"},
        {&Theme::secondary, "#a6a6a6", "#5f5f5f"},
        {&Theme::disabled, "#6f6f6f", "#949494"},
        {&Theme::accent, "#4c8dff", "#1f6feb"},
        {&Theme::primary, "#2f6fe4", "#1f6feb"},
        {&Theme::onPrimary, "#ffffff", "#ffffff"},
        {&Theme::selectedRow, white(0.10), black(0.08)},
        {&Theme::cell, "#2a2a2a", "#e6e6e6"},
        {&Theme::placeholder, "#2d2d2d", "#dcdcdc"},
        {&Theme::heart, "#ff5a4f", "#e5382c"},
        {&Theme::warning, "#ff8a80", "#b3261e"},
        {&Theme::scrim, black(0.5), black(0.25)},
        {&Theme::shadow, black(0.55), black(0.22)},
    };
    Theme theme;
    theme.dark = dark;
    for (const Tone& tone : tones)
        theme.*tone.colour = dark ? tone.dark : tone.light;
    return theme;
}

} // namespace

Theme Theme::forDark() {
    return themeOf(true);
}

Theme Theme::forLight() {
    return themeOf(false);
}

QFont interfaceFont(TextRole role) {
    QFont font(interfaceFamily());
    switch (role) {
    case TextRole::body:
        font.setPixelSize(measure::bodyPx);
        break;
    case TextRole::strong:
        font.setPixelSize(measure::bodyPx);
        font.setWeight(QFont::DemiBold);
        break;
    case TextRole::caption:
        font.setPixelSize(measure::captionPx);
        break;
    case TextRole::heading:
        font.setPixelSize(measure::headingPx);
        font.setWeight(QFont::DemiBold);
        break;
    case TextRole::greeting:
        font.setPixelSize(measure::greetingPx);
        font.setWeight(QFont::DemiBold);
        break;
    }
    return font;
}

QPalette paletteOf(const Theme& theme) {
    QPalette palette;
    palette.setColor(QPalette::Window, theme.window);
    palette.setColor(QPalette::Base, theme.control);
    palette.setColor(QPalette::AlternateBase, theme.panel);
    palette.setColor(QPalette::Button, theme.control);
    palette.setColor(QPalette::ToolTipBase, theme.control);
    palette.setColor(QPalette::Highlight, theme.primary);
    palette.setColor(QPalette::HighlightedText, theme.onPrimary);
    palette.setColor(QPalette::Link, theme.accent);
    palette.setColor(QPalette::Mid, blended(theme.hairline, theme.window));
    palette.setColor(QPalette::Dark, theme.canvas);
    palette.setColor(QPalette::PlaceholderText, theme.secondary);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                            QPalette::ToolTipText, QPalette::BrightText}) {
        palette.setColor(role, theme.text);
        palette.setColor(QPalette::Disabled, role, theme.disabled);
    }
    return palette;
}

double contrastRatio(const QColor& one, const QColor& other) {
    const double a = luminance(one) + 0.05, b = luminance(other) + 0.05;
    return std::max(a, b) / std::min(a, b);
}

QColor blended(const QColor& over, const QColor& under) {
    const float a = over.alphaF();
    const auto mix = [a](float top, float bottom) { return top * a + bottom * (1 - a); };
    return QColor::fromRgbF(mix(over.redF(), under.redF()), mix(over.greenF(), under.greenF()),
                            mix(over.blueF(), under.blueF()));
}

} // namespace kelvaro
