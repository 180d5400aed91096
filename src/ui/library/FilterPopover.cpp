#include "ui/library/FilterPopover.h"

#include "ui/Texts.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"

#include <QApplication>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QLocale>
#include <QScrollArea>

namespace kelvaro {
namespace {

constexpr int widthPx = 320;
constexpr int tallestPx = 420;

} // namespace

FilterPopover::FilterPopover(const Appearance& appearance, QWidget* window, QWidget* anchor)
    : Overlay(appearance, Kind::popover, window, anchor) {
    setObjectName("filterPopover");
    panel()->setFixedWidth(widthPx);
    column_ = new QVBoxLayout(panel());
    column_->setContentsMargins(16, 16, 8, 16);
    column_->setSpacing(measure::unit);
    auto* heading = new QHBoxLayout;
    heading->addWidget(label(words(texts::filterButton), "heading"));
    heading->addStretch(1);
    clear_ = named(new QPushButton(words("Clear Filters")), "clearFilters", words("Clear Filters"),
                   words("Show photos whatever the filter"));
    clear_->setProperty("kind", "quiet");
    QObject::connect(clear_, &QPushButton::clicked, this, [this] { onFilter({}); });
    heading->addWidget(clear_);
    column_->addLayout(heading);
    column_->addWidget(wrappedLabel(words(texts::filterNote), "caption", widthPx - 40));
    auto* scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setObjectName("filterScroll");
    column_->addWidget(scroll);
}

void FilterPopover::show(const FilterState& state) {
    // Boxes are made anew only for other options, or the keyboard would lose its place.
    const bool sameOptions = state.options == state_.options;
    const bool emptied = state_.filter.isActive() && !state.filter.isActive();
    state_ = state;
    clear_->setEnabled(state.filter.isActive());
    const bool ticksChange = isHidden() && !(state.filter == shown_);
    isStale_ = isStale_ || !sameOptions || emptied || ticksChange;
    if (isStale_ && !isHidden()) rebuild();
}

void FilterPopover::prepare() {
    if (isStale_) rebuild();
}

template<class Value, class Name>
void FilterPopover::addGroup(const char* title, const std::vector<Value>& options,
                             std::set<Value> PhotoFilter::*chosen, Name name) {
    if (options.empty()) return;
    auto* heading = label(words(title), "caption");
    heading->setContentsMargins(0, 8, 0, 0);
    groupColumn_->addWidget(heading);
    for (const Value& option : options) {
        const QString text = name(option);
        auto* box =
            named(new QCheckBox(QString(text).replace("&", "&&")), "filterOption", text, text);
        box->setChecked((state_.filter.*chosen).contains(option));
        QObject::connect(box, &QCheckBox::toggled, this, [this, chosen, option](bool on) {
            auto& values = state_.filter.*chosen;
            on ? void(values.insert(option)) : void(values.erase(option));
            onFilter(state_.filter);
        });
        groupColumn_->addWidget(box);
    }
}

void FilterPopover::rebuild() {
    isStale_ = false;
    shown_ = state_.filter;
    const QWidget* focused = QApplication::focusWidget();
    const bool isInside = groups_ && groups_->isAncestorOf(focused);
    const QString keeper = isInside ? focused->accessibleName() : QString();
    auto* scroll = panel()->findChild<QScrollArea*>("filterScroll");
    groups_ = new QWidget;
    groupColumn_ = new QVBoxLayout(groups_);
    groupColumn_->setContentsMargins(0, 0, 8, 0);
    groupColumn_->setSpacing(measure::unit / 2);
    const auto text = [](const std::string& value) { return fromUtf8(value); };
    addGroup("File kinds", state_.options.formats, &PhotoFilter::formats, [](PhotoKind kind) {
        return words(kind == PhotoKind::raw ? texts::rawFormats : texts::imageFormats);
    });
    addGroup("Cameras", state_.options.cameras, &PhotoFilter::cameras, text);
    addGroup("Lenses", state_.options.lenses, &PhotoFilter::lenses, text);
    addGroup("Focal lengths", state_.options.focalLengths, &PhotoFilter::focalLengths,
             [](double mm) { return words("%1 mm").arg(QLocale().toString(mm, 'g', 5)); });
    if (groupColumn_->isEmpty())
        groupColumn_->addWidget(
            label(words("These photos record nothing to filter by"), "secondary"));
    groupColumn_->addStretch(1);
    scroll->setWidget(groups_);
    groups_->setAutoFillBackground(false);
    scroll->setFixedHeight(std::min(groups_->sizeHint().height() + 4, tallestPx));
    if (!isVisible()) return;
    // What had the keyboard may have gone with the old boxes, and Esc would find nobody.
    for (QCheckBox* box : groups_->findChildren<QCheckBox*>()) {
        if (isInside && box->accessibleName() == keeper) return box->setFocus();
    }
    if (!isAncestorOf(QApplication::focusWidget())) focusNextPrevChild(true);
}

} // namespace kelvaro
