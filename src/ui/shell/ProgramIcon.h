// The program's icon, drawn from the SVG that the desktop also shows.
#pragma once

#include <QIcon>

namespace kelvaro {

QIcon programIcon();

} // namespace kelvaro
