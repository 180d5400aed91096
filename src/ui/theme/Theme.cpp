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

QString interfaceFamily() {
    const QString system = QFontDatabase::systemFont(QFontDatabase::GeneralFont).family();
    if (!isGenericFamily(system)) return system;
    for (const char* family : {"Inter", "Cantarell", "Noto Sans"}) {
        if (QFontDatabase::hasFamily(family)) return family;
    }
    return system;
}

} // namespace

Theme Theme::forDark() {
    Theme theme;
    theme.dark = true;
    theme.window = QColor("#1b1b1b");
    theme.panel = QColor("#222222");
    theme.control = QColor("#2d2d2d");
    theme.canvas = QColor("#161616");
    theme.hover = white(0.06);
    theme.pressed = white(0.10);
    theme.hairline = white(0.08);
    theme.text = QColor("#ededed");
    theme.secondary = QColor("#a6a6a6");
    theme.disabled = QColor("#6f6f6f");
    theme.accent = QColor("#4c8dff");
    theme.primary = QColor("#2f6fe4");
    theme.onPrimary = QColor("#ffffff");
    theme.selectedRow = white(0.10);
    theme.cell = QColor("#2a2a2a");
    theme.placeholder = QColor("#2d2d2d");
    theme.heart = QColor("#ff5a4f");
    theme.warning = QColor("#ff8a80");
    theme.scrim = black(0.5);
    theme.shadow = black(0.55);
    return theme;
}

Theme Theme::forLight() {
    Theme theme;
    theme.dark = false;
    theme.window = QColor("#f4f4f4");
    theme.panel = QColor("#fbfbfb");
    theme.control = QColor("#ffffff");
    theme.canvas = QColor("#e4e4e4");
    theme.hover = black(0.05);
    theme.pressed = black(0.09);
    theme.hairline = black(0.10);
    theme.text = QColor("#1d1d1d");
    theme.secondary = QColor("#5f5f5f");
    theme.disabled = QColor("#949494");
    theme.accent = QColor("#1f6feb");
    theme.primary = QColor("#1f6feb");
    theme.onPrimary = QColor("#ffffff");
    theme.selectedRow = black(0.08);
    theme.cell = QColor("#e6e6e6");
    theme.placeholder = QColor("#dcdcdc");
    theme.heart = QColor("#e5382c");
    theme.warning = QColor("#b3261e");
    theme.scrim = black(0.25);
    theme.shadow = black(0.22);
    return theme;
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
