// Draws coarse frames as large as they are meant, smoothly: straight into the memory that the
// painter fills, sooner than the painter's own enlarging does it. Main thread.
#pragma once

#include <QImage>
#include <QPainter>

namespace kelvaro {

constexpr int mostEnlarged = 4;

// Pixels `part` of `coarse` enlarged `factor` times (2 … mostEnlarged), bilinear between the
// middles of its pixels, beyond the outermost of them constant. `to` is where the first of them
// goes, rows lie `bytesPerLine` apart. `coarse` has 32 bits a pixel and no transparency; `part`
// lies within.
void enlarge(const QImage& coarse, int factor, const QRect& part, uchar* to,
             qsizetype bytesPerLine);

// `coarse` drawn over `target`, where that is a whole multiple of it on whole pixels and the
// painter only writes pixels to memory. False, and nothing drawn, in all other cases.
bool drawEnlarged(QPainter& painter, const QImage& coarse, const QRectF& target);

} // namespace kelvaro
