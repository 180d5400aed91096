#include "ui/grid/GridSelection.h"

#include <algorithm>

namespace kelvaro {

std::vector<int> GridSelection::indexes() const {
    std::vector<int> found;
    found.reserve(static_cast<size_t>(selectedCount_));
    for (int index = 0; index < count(); ++index) {
        if (contains(index)) found.push_back(index);
    }
    return found;
}

void GridSelection::set(int index, bool on) {
    if (contains(index) == on) return;
    selected_[static_cast<size_t>(index)] = on;
    selectedCount_ += on ? 1 : -1;
}

void GridSelection::choose(int index, Mode mode) {
    if (index < 0 || index >= count()) return;
    switch (mode) {
    case Mode::replace:
        clear();
        set(index, true);
        anchor_ = index;
        break;
    case Mode::toggle:
        set(index, !contains(index));
        anchor_ = index;
        break;
    case Mode::extend: {
        const int from = anchor_ < 0 ? index : anchor_;
        clear();
        for (int at = std::min(from, index); at <= std::max(from, index); ++at)
            set(at, true);
        anchor_ = from;
        break;
    }
    }
    current_ = index;
}

void GridSelection::selectAll() {
    std::fill(selected_.begin(), selected_.end(), true);
    selectedCount_ = count();
}

void GridSelection::clear() {
    if (selectedCount_ > 0) std::fill(selected_.begin(), selected_.end(), false);
    selectedCount_ = 0;
}

void GridSelection::setSelected(std::span<const int> indexes) {
    clear();
    for (const int index : indexes)
        set(index, true);
}

void GridSelection::applyBand(const GridSelection& before, std::span<const CellRange> band,
                              bool toggles) {
    *this = before;
    if (!toggles) clear();
    for (const CellRange& row : band) {
        for (int index = row.first; index < row.last; ++index)
            set(index, toggles ? !before.contains(index) : true);
    }
    if (!band.empty()) current_ = band.back().last - 1;
}

} // namespace kelvaro
