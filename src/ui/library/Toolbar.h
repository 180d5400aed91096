// The row of tools above the grid: search, filter, sorting, cell size, export, profile. Shows state
// values and reports what the user wants.
#pragma once

#include "library/LibraryViews.h"
#include "ui/controls/IconButton.h"

#include <QLineEdit>
#include <QSlider>

#include <functional>

namespace kelvaro {

class Toolbar final : public QWidget {
public:
    static constexpr int smallestCell = 64, largestCell = 512;

    // `exports` and `profile` are the actions of those commands.
    Toolbar(const Appearance& appearance, QAction* exports, QAction* profile,
            QWidget* parent = nullptr);

    void showTools(const GridToolsState& state);
    void showSearch(const SearchState& state);
    QLineEdit* searchField() const { return search_; }
    IconButton* filterButton() const { return filter_; }
    void setProfileIcon(IconName icon) { profile_->setIconName(icon); }

    std::function<void(const QString&)> onSearch;
    std::function<void()> onFilter;
    std::function<void(SortOrder)> onSort;
    std::function<void(int)> onCellSize;
    std::function<void()> onLeaveSearch; // Esc in an empty field, or Return

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void makeSearch(const Appearance& appearance);
    void makeSort();

    QLineEdit* search_;
    IconButton *filter_, *sort_, *profile_;
    QSlider* size_;
    SortOrder order_;
};

// An action's button: enabled, help and click are the action's.
IconButton* actionButton(const Appearance& appearance, IconName name, QAction* action,
                         const char* objectName, QWidget* parent);

} // namespace kelvaro
