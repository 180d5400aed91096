// One photo, large: a bar with the way back, its name and a few commands, and the canvas. Shows the
// photo that the store has open. Main thread.
#pragma once

#include "library/LibraryStore.h"
#include "ui/controls/IconButton.h"
#include "ui/library/CellPictures.h"
#include "ui/viewer/PhotoCanvas.h"

#include <QLabel>

namespace kelvaro {

class CommandActions;

class ViewerPage final : public QWidget {
public:
    ViewerPage(const Appearance& appearance, LibraryStore& lib, RenderEngine& engine,
               PhotoSessionCache& sessions, ThumbnailLoader& thumbnails, CommandActions& commands,
               QWidget* parent = nullptr);

    PhotoCanvas& canvas() const { return *canvas_; }
    void setSidePanel(QWidget* panel);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void makeBar(const Appearance& appearance, CommandActions& commands);
    void showOpenPhoto();
    void showTools();
    void prepareNeighbours();

    LibraryStore& lib_;
    ThumbnailLoader& thumbnails_;
    QWidget* bar_;
    QLabel *name_, *place_;
    IconButton* favorite_ = nullptr;
    PhotoCanvas* canvas_;
    std::vector<Subscription> subscriptions_;
};

} // namespace kelvaro
