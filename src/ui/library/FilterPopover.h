// The four groups of the filter as check boxes; a change applies at once.
#pragma once

#include "library/LibraryViews.h"
#include "ui/controls/Overlay.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <functional>

namespace kelvaro {

class FilterPopover final : public Overlay {
public:
    FilterPopover(const Appearance& appearance, QWidget* window, QWidget* anchor);
    void show(const FilterState& state);
    using QWidget::show;

    std::function<void(const PhotoFilter&)> onFilter;

protected:
    void prepare() override;

private:
    template<class Value, class Name>
    void addGroup(const char* title, const std::vector<Value>& options,
                  std::set<Value> PhotoFilter::*chosen, Name name);
    void rebuild();

    FilterState state_;
    PhotoFilter shown_;   // when the boxes were made
    bool isStale_ = true; // the boxes show other options
    QWidget* groups_ = nullptr;
    QVBoxLayout* groupColumn_ = nullptr;
    QVBoxLayout* column_;
    QPushButton* clear_;
};

} // namespace kelvaro
