// The library: sidebar, tools, subtitle and the grid, bound to the store. Shows the store's slices
// and calls its operations; decides nothing itself. Main thread.
#pragma once

#include "library/LibraryStore.h"
#include "ui/grid/GridView.h"
#include "ui/library/CellPictures.h"
#include "ui/library/EmptyView.h"
#include "ui/library/FilterPopover.h"
#include "ui/library/LastSeen.h"
#include "ui/library/LibraryGridContent.h"
#include "ui/library/SelectionFinder.h"
#include "ui/library/Sidebar.h"
#include "ui/library/Toolbar.h"

#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QSplitter>
#include <QStackedWidget>

#include <map>

namespace kelvaro {

class CommandActions;

class LibraryPage final : public QWidget {
public:
    LibraryPage(const Appearance& appearance, LibraryStore& lib, ThumbnailLoader& thumbnails,
                CellPictures& pictures, CommandActions& commands, QWidget* parent);

    GridView& grid() const { return *grid_; }
    Sidebar& sidebar() const { return *sidebar_; }
    Toolbar& toolbar() const { return *toolbar_; }
    bool showsSidebar() const { return !sidebar_->isHidden(); }
    void setShowsSidebar(bool shows);
    void focusSearch();
    // Where a photo's cell is on the screen; invalid when it is not shown.
    QRect cellOnScreen(const PhotoUrl& photo) const;
    void changeCellSize(int steps);
    // A panel at the right edge; the page becomes its parent.
    void setSidePanel(QWidget* panel);
    // The row of the subtitle, for what the window tells at its end.
    QRect statusRow() const;

    std::function<void()> onAddFolder, onBackToProfile;
    std::function<void(const std::filesystem::path&)> onAddGivenFolder;
    std::function<void(const std::filesystem::path&)> onShowFolder;

protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    // A folder may be dropped anywhere, not only on the sidebar.
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    // A photo and where its cell stood, to come back to.
    struct PhotoPlace {
        PhotoUrl photo;
        int top = 0;
    };

    void makeLayout();
    void bindTools();
    void bindSidebar();
    void bindGrid();
    void observeStore();
    void showVisible();
    std::optional<PhotoPlace> topPhoto() const;
    void restore(const PhotoPlace& place);
    void showSelection();
    void showSubtitle();
    void makeRestrictionButtons();
    void showEmptyState();
    void tellSelection();
    void setCellSize(int wanted);
    void openFilter();
    void pressEmptyButton();

    LibraryStore& lib_;
    CellPictures& pictures_;
    LibraryGridContent content_;
    LastSeen lastSeen_;
    SelectionFinder finder_;
    Sidebar* sidebar_;
    Toolbar* toolbar_;
    QLabel *title_, *subtitle_;
    QPushButton *toProfile_, *showAll_; // while photos were picked out
    QStackedWidget* middle_;
    GridView* grid_;
    EmptyView* empty_;
    QWidget* right_ = nullptr;
    FilterPopover* filter_;
    QMenu* menu_;
    Scope shownScope_;
    bool shownWhole_ = true;                   // neither searched nor filtered
    std::map<std::string, PhotoPlace> places_; // by scope
    int keptCurrent_ = -1;                     // while the selection is looked for
    bool telling_ = false;                     // the selection is on its way to the store
    std::vector<Subscription> subscriptions_;
};

} // namespace kelvaro
