// The colours and measures of the window, for one appearance. Greys have no tint, because colour
// around a photo changes how its colours are judged; the accent marks selection, focus and the
// primary action only. Plain values in logical pixels and sRGB.
#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

namespace kelvaro {

struct Theme {
    bool dark = true;
    QColor window, panel, control, canvas;
    QColor hover, pressed, hairline; // laid over what is below
    QColor text, secondary, disabled;
    QColor accent;  // lines, focus, selection
    QColor primary; // filled behind `onPrimary`
    QColor onPrimary;
    QColor selectedRow; // filled behind `text`
    QColor cell;        // behind a selected photo
    QColor placeholder; // of a photo that has not been read
    QColor heart, warning;
    QColor scrim, shadow;

    static Theme forDark();
    static Theme forLight();

    bool operator==(const Theme&) const = default;
};

namespace measure {
inline constexpr int unit = 8;
inline constexpr int margin = 16;
inline constexpr int groupGap = 24;
inline constexpr int controlHeight = 28;
inline constexpr int controlRadius = 6;
inline constexpr int sheetRadius = 10;
inline constexpr int sidebarWidth = 216;
inline constexpr int inspectorWidth = 300;
inline constexpr int bodyPx = 13;
inline constexpr int captionPx = 11;
inline constexpr int headingPx = 15;
inline constexpr int greetingPx = 24;
inline constexpr int motionMs = 150;
} // namespace measure

enum class TextRole { body, strong, caption, heading, greeting };

// The system's interface font where it names one, else one that reads well on a screen.
QFont interfaceFont(TextRole role = TextRole::body);

QPalette paletteOf(const Theme& theme);
QString styleSheetOf(const Theme& theme);

// Contrast of two opaque colours, 1 to 21, as WCAG 2 defines it.
double contrastRatio(const QColor& one, const QColor& other);
// `over` laid on `under` with over's alpha.
QColor blended(const QColor& over, const QColor& under);

} // namespace kelvaro
