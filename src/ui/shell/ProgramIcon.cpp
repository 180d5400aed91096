#include "ui/shell/ProgramIcon.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace kelvaro {

QIcon programIcon() {
    QIcon icon;
    QSvgRenderer drawing(QString(":/kelvaro/icon.svg"));
    for (const int side : {16, 32, 48, 64, 128, 256}) {
        QPixmap pixmap(side, side);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        drawing.render(&painter);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace kelvaro
