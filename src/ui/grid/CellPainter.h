// Draws one cell of the grid: the photo in its own shape, or a placeholder of that shape, the
// selection around it and the badges in its corners.
#pragma once

#include "ui/grid/GridContent.h"
#include "ui/theme/Theme.h"

#include <QPainter>

namespace kelvaro {

struct CellState {
    bool selected = false, hovered = false;
    bool current = false; // has the keyboard
};

// Where a photo of that shape stands in its cell, on whole device pixels. An unknown shape is that
// of most cameras. Extreme shapes keep at least 2 px.
QRectF photoRect(const QRect& cell, QSize shape, double pixelRatio);

void paintCell(QPainter& painter, const QRect& rect, const GridCell& cell,
               const CellPicture& picture, CellState state, const Theme& theme);

} // namespace kelvaro
