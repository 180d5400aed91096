// What the grid shows, as it asks for it: photos by position, the headings over them, and their
// pictures in whatever size is at hand. Main thread.
#pragma once

#include "ui/grid/GridLayout.h"

#include <QImage>
#include <QString>

#include <filesystem>
#include <vector>

namespace kelvaro {

struct GridCell {
    QString name; // the file name, for people who hear the grid and for typing ahead
    QSize shape;  // of the photo, in any unit; empty when unknown
    bool isRaw = false, isFavorite = false, isEdited = false;
    bool isMissing = false;    // its drive is away
    bool isUnreadable = false; // no picture can be had of it
};

struct GridHeading {
    int start = 0;
    QString title;
};

// A cell's picture: upright, in the screen's colours, `image` in device pixels.
struct CellPicture {
    QImage image;       // null: nothing at hand yet
    QColor average;     // of the photo, where it is known before the picture
    double opacity = 1; // less than 1 while it appears
};

class GridContent {
public:
    virtual ~GridContent() = default;
    virtual int count() const = 0;
    virtual std::vector<GridHeading> headings() const = 0; // none for photos without dates
    virtual GridCell cell(int index) const = 0;
    virtual std::filesystem::path file(int index) const = 0;
    // The first photo from `from` on, then from the start, whose name begins like that whatever the
    // case; -1 when there is none.
    virtual int find(const QString& beginning, int from) const = 0;
    // The picture for a photo that is drawn `size` device pixels large. Never waits: what is not
    // at hand is fetched after `wants`.
    virtual CellPicture picture(int index, QSize size) = 0;
    // What is on the screen and what is near it; replaces what was wanted before.
    virtual void wants(CellRange visible, CellRange nearby, int cellPx) = 0;
};

} // namespace kelvaro
