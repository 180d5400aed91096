// Which cells of the grid are selected, and how clicks and keys change it. Cells are positions;
// whoever shows other photos sets the selection anew. Plain value, no widgets.
#pragma once

#include "ui/grid/GridLayout.h"

#include <span>
#include <vector>

namespace kelvaro {

class GridSelection {
public:
    enum class Mode {
        replace, // a plain click or key
        toggle,  // with Ctrl
        extend,  // with Shift: from where the last plain click or key was
    };

    explicit GridSelection(int count = 0) : selected_(static_cast<size_t>(count), false) {}

    int count() const { return static_cast<int>(selected_.size()); }
    bool contains(int index) const { return selected_[static_cast<size_t>(index)]; }
    int selectedCount() const { return selectedCount_; }
    std::vector<int> indexes() const;
    // The cell with the keyboard; -1 when none has been chosen yet.
    int current() const { return current_; }

    void choose(int index, Mode mode);
    void setCurrent(int index) { current_ = anchor_ = index; }
    void selectAll();
    void clear();
    void setSelected(std::span<const int> indexes);
    // A rubber band: `before` is the selection when it began; with Ctrl the band turns it around.
    void applyBand(const GridSelection& before, std::span<const CellRange> band, bool toggles);

    bool operator==(const GridSelection&) const = default;

private:
    void set(int index, bool on);

    std::vector<bool> selected_;
    int selectedCount_ = 0;
    int current_ = -1, anchor_ = -1;
};

} // namespace kelvaro
