// The store's visible photos as the grid asks for them. Holds the block that the store published,
// so that positions stay valid while the store makes the next one. Main thread.
#pragma once

#include "library/LibraryStore.h"
#include "ui/grid/GridContent.h"
#include "ui/library/CellPictures.h"

namespace kelvaro {

class LibraryGridContent final : public GridContent {
public:
    LibraryGridContent(LibraryStore& lib, CellPictures& pictures);

    // Takes the store's current block; returns whether it is another one.
    bool update();
    const Photo& photo(int index) const { return *view_->photos[static_cast<size_t>(index)]; }
    // -1 for a photo that is not shown.
    int indexOf(const PhotoUrl& url) const;

    int count() const override { return static_cast<int>(view_->photos.size()); }
    std::vector<GridHeading> headings() const override;
    GridCell cell(int index) const override;
    std::filesystem::path file(int index) const override { return photo(index).url; }
    int find(const QString& beginning, int from) const override;
    CellPicture picture(int index, QSize size) override;
    void wants(CellRange visible, CellRange nearby, int cellPx) override;

    void setPixelRatio(double ratio) { pixelRatio_ = ratio; }

private:
    PictureSource sourceOf(const Photo& photo) const;
    std::string keyOf(const Photo& photo) const;
    void tellWishes();

    LibraryStore& lib_;
    CellPictures& pictures_;
    std::shared_ptr<const LibraryView> view_;
    double pixelRatio_ = 1;
    CellRange visible_, nearby_;
    int cellPx_ = 0;
    QTimer wishes_; // scrolling asks once for many steps
};

} // namespace kelvaro
