// A chart with its heading, as bars or, for those who would rather read it, as a table.
#pragma once

#include "ui/profile/BarChart.h"
#include "ui/profile/Section.h"

#include <QLabel>
#include <QTableWidget>

namespace kelvaro {

class ChartCard final : public Section {
public:
    ChartCard(const Appearance& appearance, QWidget* parent);

    void show(const Chart& chart);
    void setShowsTable(bool shows);
    int arrange(int widthPx) override;
    BarChart& bars() const { return *bars_; }
    QTableWidget* table() const { return table_; } // null until it was shown

    std::function<void(const Chart& chart, std::size_t bar)> onBar;

private:
    void makeTable();
    void fillTable();
    bool showsTable() const { return showsTable_ && chart_ && chart_->recorded() > 0; }

    QLabel* title_;
    BarChart* bars_;
    QTableWidget* table_ = nullptr;
    std::optional<Chart> chart_;
    bool showsTable_ = false;
};

} // namespace kelvaro
