#include "ui/library/Toolbar.h"

#include "ui/Texts.h"
#include "ui/controls/Naming.h"

#include <QAction>
#include <QActionGroup>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>

#include <cmath>

namespace kelvaro {
namespace {

// The slider moves in equal ratios, so that a step feels the same at every size.
constexpr int sliderSteps = 1000;

int cellFor(int slider) {
    const double ratio = double(Toolbar::largestCell) / Toolbar::smallestCell;
    return static_cast<int>(
        std::lround(Toolbar::smallestCell * std::pow(ratio, double(slider) / sliderSteps)));
}

int sliderFor(double cell) {
    const double ratio = double(Toolbar::largestCell) / Toolbar::smallestCell;
    return static_cast<int>(std::lround(
        sliderSteps * std::log(std::max(1.0, cell) / Toolbar::smallestCell) / std::log(ratio)));
}

// A picture beside the slider; says nothing to people who hear the window.
class Glyph final : public QWidget {
public:
    Glyph(const Appearance& appearance, IconName name, QWidget* parent)
        : QWidget(parent), appearance_(appearance), name_(name) {
        setFixedSize(16, 16);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter(this).drawPixmap(
            0, 0, iconPixmap(name_, 16, appearance_.theme().secondary, devicePixelRatioF()));
    }

private:
    const Appearance& appearance_;
    IconName name_;
};

// A line edit with the magnifier and a button that empties it.
class SearchField final : public QLineEdit {
public:
    SearchField(const Appearance& appearance, QWidget* parent)
        : QLineEdit(parent),
          appearance_(appearance),
          clear_(new IconButton(appearance, IconName::close, this)) {
        setTextMargins(20, 0, 20, 0);
        named(clear_, "clearSearch", words("Clear Search"), words("Clear Search"));
        clear_->hide();
        QObject::connect(clear_, &QToolButton::clicked, this, [this] {
            clear();
            setFocus();
        });
        QObject::connect(this, &QLineEdit::textChanged, this,
                         [this](const QString& now) { clear_->setVisible(!now.isEmpty()); });
    }

protected:
    void resizeEvent(QResizeEvent* event) override {
        QLineEdit::resizeEvent(event);
        clear_->setGeometry(width() - 27, (height() - 24) / 2, 24, 24);
    }
    void paintEvent(QPaintEvent* event) override {
        QLineEdit::paintEvent(event);
        QPainter(this).drawPixmap(
            8, (height() - 16) / 2,
            iconPixmap(IconName::search, 16, appearance_.theme().secondary, devicePixelRatioF()));
    }

private:
    const Appearance& appearance_;
    IconButton* clear_;
};

} // namespace

IconButton* actionButton(const Appearance& appearance, IconName name, QAction* action,
                         const char* objectName, QWidget* parent) {
    auto* button = named(new IconButton(appearance, name, parent), objectName, action->text(),
                         action->toolTip());
    const auto follow = [button, action] {
        button->setEnabled(action->isEnabled());
        button->setToolTip(action->toolTip());
        button->setAccessibleName(action->text());
    };
    follow();
    QObject::connect(action, &QAction::changed, button, follow);
    QObject::connect(button, &QToolButton::clicked, action, &QAction::trigger);
    return button;
}

Toolbar::Toolbar(const Appearance& appearance, QAction* exports, QAction* profile, QWidget* parent)
    : QWidget(parent) {
    makeSearch(appearance);
    filter_ = named(new IconButton(appearance, IconName::filter, this), "filterButton",
                    words(texts::filterButton), words(texts::filterButton));
    QObject::connect(filter_, &QToolButton::clicked, this, [this] { onFilter(); });
    sort_ =
        named(new IconButton(appearance, IconName::sort, this), "sortButton", words("Sort"), {});
    makeSort();
    size_ = named(new QSlider(Qt::Horizontal, this), "sizeSlider", words("Size of the photos"),
                  words("Size of the photos in the grid"));
    size_->setRange(0, sliderSteps);
    size_->setSingleStep(50);
    size_->setPageStep(150);
    size_->setFixedWidth(112);
    size_->setFocusPolicy(Qt::TabFocus);
    QObject::connect(size_, &QSlider::valueChanged, this,
                     [this](int value) { onCellSize(cellFor(value)); });

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(measure::margin, measure::unit, measure::margin, 0);
    row->setSpacing(measure::unit / 2);
    row->addWidget(search_, 1);
    row->addStretch(0);
    row->addSpacing(measure::unit);
    row->addWidget(filter_);
    row->addWidget(sort_);
    row->addSpacing(measure::unit);
    row->addWidget(new Glyph(appearance, IconName::squareSmall, this));
    row->addWidget(size_);
    row->addWidget(new Glyph(appearance, IconName::squareLarge, this));
    row->addSpacing(measure::unit);
    row->addWidget(actionButton(appearance, IconName::exportArrow, exports, "exportButton", this));
    profile_ = actionButton(appearance, IconName::person, profile, "profileButton", this);
    row->addWidget(profile_);
}

void Toolbar::makeSearch(const Appearance& appearance) {
    search_ = named(new SearchField(appearance, this), "searchField", words("Search"),
                    words(texts::searchPlaceholder));
    search_->setPlaceholderText(words(texts::searchPlaceholder));
    search_->setMaximumWidth(560);
    search_->setMinimumWidth(120);
    search_->installEventFilter(this);
    QObject::connect(search_, &QLineEdit::textEdited, this,
                     [this](const QString& text) { onSearch(text); });
    QObject::connect(search_, &QLineEdit::textChanged, this, [this](const QString& text) {
        if (text.isEmpty()) onSearch(text);
    });
}

void Toolbar::makeSort() {
    auto* menu = new QMenu(sort_);
    auto* keys = new QActionGroup(menu);
    for (const SortKey key : kSortKeys) {
        QAction* action = menu->addAction(words(texts::sortBy) + words(title(key)));
        action->setCheckable(true);
        action->setData(static_cast<int>(key));
        keys->addAction(action);
    }
    menu->addSeparator();
    auto* directions = new QActionGroup(menu);
    QAction* ascending = menu->addAction(words("Ascending"));
    QAction* descending = menu->addAction(words("Descending"));
    for (QAction* action : {ascending, descending}) {
        action->setCheckable(true);
        directions->addAction(action);
    }
    QObject::connect(keys, &QActionGroup::triggered, this, [this](QAction* action) {
        onSort({static_cast<SortKey>(action->data().toInt()), order_.ascending});
    });
    QObject::connect(ascending, &QAction::triggered, this, [this] { onSort({order_.key, true}); });
    QObject::connect(descending, &QAction::triggered, this, [this] {
        onSort({order_.key, false});
    });
    QObject::connect(menu, &QMenu::aboutToShow, this, [this, keys, ascending, descending] {
        for (QAction* action : keys->actions())
            action->setChecked(action->data().toInt() == static_cast<int>(order_.key));
        (order_.ascending ? ascending : descending)->setChecked(true);
    });
    sort_->setMenu(menu);
}

void Toolbar::showTools(const GridToolsState& state) {
    order_ = state.sortOrder;
    const QString sorting = words(texts::sortBy) + words(title(order_.key));
    sort_->setToolTip(sorting);
    sort_->setAccessibleDescription(sorting);
    const QString filtering =
        words(state.filtersActive ? texts::filterButtonActive : texts::filterButton);
    filter_->setHighlighted(state.filtersActive);
    filter_->setToolTip(filtering);
    filter_->setAccessibleName(filtering);
    const QSignalBlocker quiet(size_);
    if (!size_->isSliderDown()) size_->setValue(sliderFor(state.thumbSize));
}

void Toolbar::showSearch(const SearchState& state) {
    const QString text = fromUtf8(state.text);
    if (search_->text() != text) search_->setText(text);
}

bool Toolbar::eventFilter(QObject* watched, QEvent* event) {
    if (watched != search_ || event->type() != QEvent::KeyPress) return false;
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Escape && !search_->text().isEmpty()) {
        search_->clear();
        return true;
    }
    if (key == Qt::Key_Escape || key == Qt::Key_Return || key == Qt::Key_Enter ||
        key == Qt::Key_Down) {
        if (onLeaveSearch) onLeaveSearch();
        return true;
    }
    return false;
}

} // namespace kelvaro
