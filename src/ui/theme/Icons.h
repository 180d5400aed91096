// The icons, all drawn in one hand: line drawings on a 20 px grid with strokes of 1.5 px, coloured
// by whoever asks and sharp at every scaling. Main thread.
#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>

namespace kelvaro {

enum class IconName {
    add,
    back,
    check,
    chevronDown,
    chevronRight,
    close,
    drive,
    driveMissing,
    edited,
    exportArrow,
    favorite,
    favoriteFilled,
    filter,
    folder,
    gear,
    info,
    photos,
    photoUnreadable,
    person,
    search,
    sidebar,
    sort,
    sortAscending,
    sortDescending,
    squareSmall,
    squareLarge,
    stop,
    trash,
    aperture,
    mountain,
    leaf,
    star,
    moon,
    wave,
    // The editor's.
    undo,
    redo,
    split,
    crop,
    mask,
    eyedropper,
    assessment,
    presets,
    copy,
    paste,
    reset,
    revert,
    brush,
    linearGradient,
    radialGradient,
    eye,
    eyeOff,
    invert,
    duplicate,
    horizon,
    landscape,
    portrait,
    more,
    plus,
    minus,
    intersect,
    before,
    eraser,
};

// One drawing of `sizePx` logical pixels for a screen of that pixel ratio. Drawings are kept.
QPixmap iconPixmap(IconName name, int sizePx, const QColor& colour, double pixelRatio);
// An icon that draws itself for whatever size and scaling it is asked for; grey when disabled.
QIcon icon(IconName name, const QColor& colour, const QColor& disabled);
// The drawing's path data, on a grid of 20 units.
const char* iconPath(IconName name);

} // namespace kelvaro
