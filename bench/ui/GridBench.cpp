// Frame times of the grid over 100,000 photos whose pictures are at hand: laying out, scrolling
// through all of it, selecting all. Prints milliseconds; run it with QT_QPA_PLATFORM=offscreen or
// under Xvfb.
#include "ui/grid/GridView.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QScrollBar>

#include <algorithm>
#include <cstdio>
#include <map>

namespace kelvaro {
namespace {

constexpr int photoCount = 100'000;
constexpr int photosInADay = 40;
constexpr int frames = 1000;

// Pictures of three shapes, one per size that is asked for.
class DrawnContent final : public GridContent {
public:
    int count() const override { return photoCount; }
    std::vector<GridHeading> headings() const override {
        std::vector<GridHeading> days;
        for (int start = 0; start < photoCount; start += photosInADay)
            days.push_back({start, QString("Day %1").arg(start / photosInADay)});
        return days;
    }
    GridCell cell(int index) const override {
        GridCell cell;
        cell.name = QString("IMG_%1.JPG").arg(index);
        cell.shape = index % 3 == 0 ? QSize(2, 3) : index % 3 == 1 ? QSize(3, 2) : QSize(16, 9);
        cell.isRaw = index % 2;
        cell.isFavorite = index % 7 == 0;
        cell.isEdited = index % 5 == 0;
        return cell;
    }
    std::filesystem::path file(int) const override { return "/photo"; }
    int find(const QString&, int) const override { return -1; }
    CellPicture picture(int, QSize size) override {
        QImage& image = pictures_[{size.width(), size.height()}];
        if (image.isNull()) {
            image = QImage(size, QImage::Format_RGB32);
            image.fill(QColor(90, 110, 130));
        }
        return {image, {}, 1};
    }
    void wants(CellRange, CellRange, int) override {}

private:
    std::map<std::pair<int, int>, QImage> pictures_;
};

double milliseconds(const std::function<void()>& work) {
    QElapsedTimer clock;
    clock.start();
    work();
    return double(clock.nsecsElapsed()) / 1e6;
}

void scrollThrough(int cellPx) {
    Appearance appearance;
    appearance.apply(true, false);
    DrawnContent content;
    GridView grid(appearance, content);
    grid.resize(1280, 720);
    grid.setCellSize(cellPx);
    grid.show();
    const double layout = milliseconds([&] { grid.reload(); });
    QApplication::processEvents();
    QScrollBar* bar = grid.verticalScrollBar();
    std::vector<double> times;
    for (int frame = 0; frame < frames; ++frame) {
        bar->setValue(static_cast<int>(qint64(bar->maximum()) * frame / frames));
        times.push_back(milliseconds([&] { grid.viewport()->repaint(); }));
    }
    std::ranges::sort(times);
    const double all = milliseconds([&] { grid.selectAll(); });
    std::printf(
        "cells of %3d px: layout %6.2f   frame p50 %5.2f  p99 %5.2f  max %5.2f   select all "
        "%5.2f ms\n",
        cellPx, layout, times[frames / 2], times[frames * 99 / 100], times.back(), all);
}

} // namespace
} // namespace kelvaro

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    for (const int cellPx : {64, 160, 400})
        kelvaro::scrollThrough(cellPx);
    return 0;
}
