// Finds where the photos of a selection stand in the grid. A few are looked up at once; a hundred
// thousand names are compared in slices between other events, those on the screen first, so that
// nothing holds up the hand. Main thread.
#pragma once

#include "ui/library/LibraryGridContent.h"

#include <QTimer>

#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace kelvaro {

class SelectionFinder {
public:
    explicit SelectionFinder(const LibraryGridContent& content);

    // Calls `onFound` before it returns, with all of them or with those of `onScreen`, and for a
    // large selection again when all have been found.
    void begin(PhotoSet photos, CellRange onScreen);
    // The rest at once: somebody is about to work with the selection.
    void finish();
    void cancel();

    std::function<void(std::span<const int>)> onFound; // ascending

private:
    void look(int count);

    const LibraryGridContent& content_;
    std::optional<PhotoSet> photos_; // while a search goes on
    std::vector<int> found_;
    int next_ = 0;
    QTimer slices_;
};

} // namespace kelvaro
