// The colour profile of the screen, where the display server has been told one.
#pragma once

#include <QColorSpace>
#include <QScreen>

namespace kelvaro {

// The profile that X11 keeps for the screen; invalid where there is none, or on Wayland, whose
// compositors convert by themselves. Invalid means sRGB.
QColorSpace screenProfile(const QScreen* screen);

} // namespace kelvaro
