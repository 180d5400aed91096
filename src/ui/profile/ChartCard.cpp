#include "ui/profile/ChartCard.h"

#include "profile/Shares.h"
#include "ui/Texts.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"

#include <QHeaderView>

namespace kelvaro {
namespace {

constexpr int cellAirPx = 3, rowPx = 26, headPx = 28; // the heading with the air below it

QTableWidgetItem* cell(const QString& text, Qt::Alignment alignment, int bar) {
    auto* item = new QTableWidgetItem(text);
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    item->setTextAlignment(alignment | Qt::AlignVCenter);
    item->setData(Qt::UserRole, bar);
    return item;
}

} // namespace

ChartCard::ChartCard(const Appearance& appearance, QWidget* parent) : Section(parent) {
    title_ = label({}, "heading", this);
    bars_ = new BarChart(appearance, this);
    bars_->setObjectName("barChart");
    bars_->onChosen = [this](int bar) {
        if (onBar) onBar(*chart_, static_cast<std::size_t>(bar));
    };
}

// Not before somebody asks for it: a dozen tables take longer to make than the page around them.
void ChartCard::makeTable() {
    table_ = named(new QTableWidget(0, 3, this), "chartTable", {}, {});
    table_->setHorizontalHeaderLabels({words("Value"), words("Photos"), words("Share")});
    table_->horizontalHeader()->hide();
    table_->horizontalHeader()->setMinimumSectionSize(48);
    table_->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    table_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    table_->verticalHeader()->hide();
    table_->verticalHeader()->setDefaultSectionSize(rowPx);
    table_->setShowGrid(false);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setSelectionMode(QAbstractItemView::SingleSelection);
    table_->setTabKeyNavigation(false);
    table_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    QObject::connect(table_, &QTableWidget::itemActivated, this, [this](QTableWidgetItem* item) {
        if (onBar) onBar(*chart_, static_cast<std::size_t>(item->data(Qt::UserRole).toInt()));
    });
}

void ChartCard::show(const Chart& chart) {
    chart_ = chart;
    title_->setText(words(chart.title()));
    bars_->show(chart);
    if (showsTable_) fillTable();
}

void ChartCard::setShowsTable(bool shows) {
    showsTable_ = shows;
    if (shows && !table_) makeTable();
    if (shows && chart_) fillTable();
}

void ChartCard::fillTable() {
    table_->setAccessibleName(words(chart_->title()));
    table_->setAccessibleDescription(words(chart_->description()));
    table_->setRowCount(0);
    for (std::size_t at = 0; at < chart_->bars().size(); ++at) {
        const ChartBar& bar = chart_->bars()[at];
        if (bar.count == 0) continue;
        const int row = table_->rowCount(), index = static_cast<int>(at);
        table_->insertRow(row);
        const Share share{bar.count, chart_->recorded()};
        table_->setItem(row, 0, cell(fromUtf8(bar.label), Qt::AlignLeft, index));
        table_->setItem(row, 1, cell(number(bar.count), Qt::AlignRight, index));
        table_->setItem(row, 2, cell(fromUtf8(share.percentText()), Qt::AlignRight, index));
    }
}

int ChartCard::arrange(int widthPx) {
    const bool isTable = showsTable();
    bars_->setVisible(!isTable);
    if (table_) table_->setVisible(isTable);
    title_->setGeometry(0, 0, widthPx, 20);
    const int tall = isTable ? rowPx * table_->rowCount() + 2 : bars_->heightPx();
    bars_->setGeometry(0, headPx, widthPx, tall);
    // Cells have air of their own; their text is to stand below the heading.
    if (table_) table_->setGeometry(-cellAirPx, headPx, widthPx + 2 * cellAirPx, tall);
    return headPx + tall;
}

} // namespace kelvaro
