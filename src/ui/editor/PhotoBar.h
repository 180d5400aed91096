// The photos of the grid in one row below the canvas; the open one is marked and kept in view.
// Main thread.
#pragma once

#include "ui/library/CellPictures.h"
#include "ui/library/LibraryGridContent.h"

#include <QAbstractScrollArea>

#include <functional>

namespace kelvaro {

class PhotoBar final : public QAbstractScrollArea {
public:
    static constexpr int barHeight = 84;

    PhotoBar(const Appearance& appearance, LibraryStore& lib, ThumbnailLoader& loader,
             QWidget* parent = nullptr);

    void setScreenProfile(const QColorSpace& profile) { pictures_.setScreenProfile(profile); }
    // The photo whose cell is marked.
    void setOpen(const PhotoUrl& photo);
    // Where a photo's cell is, in the bar; empty when it is not shown.
    QRect cellOf(const PhotoUrl& photo) const;
    QSize sizeHint() const override { return {400, barHeight}; }

    std::function<void(const PhotoUrl&)> onOpen;
    std::function<void(QPoint global)> onContextMenu;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    void layOut();
    void reveal();
    void tellWhatIsWanted();
    QRect cellAt(int index) const; // on the viewport
    int indexAt(QPoint at) const;

    const Appearance& appearance_;
    CellPictures pictures_;
    LibraryGridContent content_;
    PhotoUrl open_;
    int openIndex_ = -1, hovered_ = -1;
    // What was drawn last of each photo: a changed one keeps it until the new picture is there.
    std::unordered_map<PhotoUrl, QImage> drawn_;
    std::vector<Subscription> subscriptions_;
};

} // namespace kelvaro
