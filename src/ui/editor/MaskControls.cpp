#include "ui/editor/MaskControls.h"

#include "editor/MaskList.h"
#include "editor/ToolRows.h"
#include "recipe/MaskControls.h"
#include "recipe/RecipeActions.h"
#include "ui/Texts.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"
#include "ui/editor/InspectorView.h"

#include <QKeyEvent>
#include <QMenu>

namespace kelvaro {
namespace {

constexpr int rowPx = 28, shownRows = 5;

using Kind = MaskComponent::Kind;
using Mode = MaskComponent::Mode;
constexpr std::array kinds{Kind::brush, Kind::linear, Kind::radial};
constexpr std::array modes{Mode::add, Mode::subtract, Mode::intersect};

const char* nameOf(Kind kind) {
    return kind == Kind::brush ? "Brush" : kind == Kind::linear ? "Linear" : "Radial";
}
const char* nameOf(Mode mode) {
    return mode == Mode::add ? "Add" : mode == Mode::subtract ? "Subtract" : "Intersect";
}
IconName iconOf(Kind kind) {
    return kind == Kind::brush    ? IconName::brush
           : kind == Kind::linear ? IconName::linearGradient
                                  : IconName::radialGradient;
}

// What the list shows of the masks.
std::vector<LocalMask> listed(const std::vector<LocalMask>& masks) {
    std::vector<LocalMask> bare;
    for (const LocalMask& mask : masks) {
        LocalMask row;
        row.id = mask.id;
        row.name = mask.name;
        row.enabled = mask.enabled;
        row.invert = mask.invert;
        bare.push_back(std::move(row));
    }
    return bare;
}

QVBoxLayout* columnOf(QWidget* widget) {
    auto* column = new QVBoxLayout(widget);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    return column;
}

} // namespace

MaskControls::MaskControls(const Appearance& appearance, QWidget* parent)
    : QWidget(parent), appearance_(appearance) {
    setObjectName("maskControls");
    auto* heading = new QHBoxLayout;
    heading->setContentsMargins(16, 8, 12, 4);
    heading->addWidget(label(words("Masks"), "heading", this), 1);
    overlay_ = named(new IconButton(appearance, IconName::mask, this), "overlayButton",
                     words("Mask overlay"), words(overlayTip({})));
    heading->addWidget(overlay_);
    auto* done = named(new QPushButton(words("Done"), this), "doneMasks", words("Done"),
                       words("Back to the adjustments (Return)"));
    done->setProperty("kind", "quiet");
    heading->addWidget(done);
    masks_ = makeList("maskList", words("Masks"),
                      words("Double-click renames, dragging changes the order"));
    masks_->setDragDropMode(QAbstractItemView::InternalMove);
    empty_ = wrappedLabel(words("A mask changes a part of the photo. Paint one, or draw a gradient "
                                "or an ellipse over the photo."),
                          "secondary", measure::inspectorWidth - 32, this);
    empty_->setContentsMargins(0, 4, 0, 8);
    auto* emptyRow = new QHBoxLayout;
    emptyRow->setContentsMargins(16, 0, 16, 0);
    emptyRow->addWidget(empty_);
    auto* content = new QWidget;
    auto* below = columnOf(content);
    selected_ = makeMaskSection();
    below->addWidget(selected_);
    below->addStretch(1);
    auto* column = columnOf(this);
    column->addLayout(heading);
    column->addWidget(makeAddRow());
    column->addLayout(emptyRow);
    column->addWidget(masks_);
    column->addWidget(inspectorScroll(content, "maskScroll", words("Mask"), this), 1);
    QObject::connect(overlay_, &QToolButton::clicked, this, [this] {
        if (onOverlay) onOverlay();
    });
    QObject::connect(done, &QPushButton::clicked, this, [this] {
        if (onDone) onDone();
    });
    QObject::connect(masks_, &QListWidget::currentRowChanged, this, [this](int row) {
        if (!showing_) call(onSelect, maskAt(row));
    });
    QObject::connect(masks_, &QListWidget::itemChanged, this, [this](QListWidgetItem* item) {
        const auto mask = maskAt(masks_->row(item));
        if (showing_ || !mask) return;
        const LocalMask& was = shownMasks_[static_cast<std::size_t>(masks_->row(item))];
        if ((item->checkState() == Qt::Checked) != was.enabled) {
            if (onEnable) onEnable(*mask, !was.enabled);
        } else if (onRename && item->text().toStdString() != was.name) {
            onRename(*mask, item->text().toStdString());
        }
    });
    QObject::connect(masks_->model(), &QAbstractItemModel::rowsMoved, this,
                     [this](const QModelIndex&, int from, int, const QModelIndex&, int to) {
                         if (showing_ || from >= static_cast<int>(shownMasks_.size())) return;
                         const Uuid mask = shownMasks_[static_cast<std::size_t>(from)].id;
                         shownMasks_.clear(); // the list is shown anew
                         if (onMove) onMove(mask, static_cast<std::size_t>(to));
                     });
    QObject::connect(masks_, &QWidget::customContextMenuRequested, this,
                     [this](const QPoint& at) { openMaskMenu(at); });
}

QListWidget* MaskControls::makeList(const char* name, const QString& title, const QString& help) {
    auto* list = named(new QListWidget(this), name, title, help);
    list->setContextMenuPolicy(Qt::CustomContextMenu);
    list->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list->setIconSize({16, 16});
    list->setStyleSheet("QListWidget { padding: 0 8px; }");
    list->installEventFilter(this);
    return list;
}

QWidget* MaskControls::makeAddRow() {
    auto* row = new QWidget(this);
    auto* line = new QHBoxLayout(row);
    line->setContentsMargins(16, 4, 16, 8);
    line->setSpacing(measure::unit);
    constexpr std::array tips{"Paint a new mask",
                              "Draw a gradient: full where you begin, none where you end",
                              "Draw an ellipse around its middle"};
    for (const Kind kind : kinds) {
        auto* button = named(new QPushButton(words(nameOf(kind)), row), "addMask",
                             words("New mask: %1").arg(words(nameOf(kind))),
                             words(tips[static_cast<std::size_t>(kind)]));
        button->setObjectName(QString("add") + nameOf(kind));
        button->setIcon(icon(iconOf(kind), appearance_.theme().text, appearance_.theme().disabled));
        button->setStyleSheet("padding: 0 6px;");
        QObject::connect(button, &QPushButton::clicked, this, [this, kind] {
            if (onAdd) onAdd(kind);
        });
        line->addWidget(button, 1);
    }
    return row;
}

QWidget* MaskControls::makeMaskSection() {
    auto* section = new QWidget;
    auto* column = columnOf(section);
    auto* head = new QHBoxLayout;
    head->setContentsMargins(16, 8, 12, 0);
    head->setSpacing(2);
    head->addWidget(label(words("Shapes"), "caption", section), 1);
    const auto button = [&](IconName name, const char* objectName, const char* title,
                            const char* tip) {
        auto* made =
            named(new IconButton(appearance_, name, section), objectName, words(title), words(tip));
        head->addWidget(made);
        return made;
    };
    auto* add = button(IconName::add, "addShape", "Add a shape",
                       "Add, subtract or intersect another shape");
    auto* invert = button(IconName::invert, "invertMask", "Invert", "Invert this mask");
    auto* copy = button(IconName::duplicate, "duplicateMask", "Duplicate", "Duplicate this mask");
    auto* remove = button(IconName::trash, "deleteMask", "Delete", "Delete this mask (Delete)");
    column->addLayout(head);
    shapes_ = makeList("shapeList", words("Shapes"),
                       words("The shapes of this mask, combined in this order"));
    column->addWidget(shapes_);
    brush_ = makeBrushSection();
    column->addWidget(brush_);
    feather_ = new SliderRow(appearance_, section);
    feather_->show(featherRow({}));
    bind(feather_, Slider::feather, 0, 50);
    column->addWidget(feather_);
    column->addSpacing(measure::unit);
    amount_ = new SliderRow(appearance_, section);
    amount_->show(amountRow({}));
    bind(amount_, Slider::amount, 0, 100);
    column->addWidget(amount_);
    std::size_t index = 0;
    for (const InspectorRow& row : maskRows({})) {
        auto* slider = new SliderRow(appearance_, section);
        slider->show(row);
        bind(slider, Slider::control, index++, 0);
        column->addWidget(slider);
        controls_.push_back(slider);
    }
    QObject::connect(add, &QToolButton::clicked, this, [this] { openAddShapeMenu(); });
    QObject::connect(invert, &QToolButton::clicked, this, [this] { call(onInvert, state_.mask); });
    QObject::connect(copy, &QToolButton::clicked, this, [this] { call(onDuplicate, state_.mask); });
    QObject::connect(remove, &QToolButton::clicked, this, [this] { call(onDelete, state_.mask); });
    QObject::connect(shapes_, &QListWidget::currentItemChanged, this,
                     [this](QListWidgetItem* item) {
                         if (!showing_ && item && onSelectShape)
                             onSelectShape(item->data(Qt::UserRole).value<Uuid>());
                     });
    QObject::connect(shapes_, &QWidget::customContextMenuRequested, this,
                     [this](const QPoint& at) { openShapeMenu(at); });
    return section;
}

QWidget* MaskControls::makeBrushSection() {
    auto* section = new QWidget;
    auto* column = columnOf(section);
    for (const BrushRow which : allBrushRows) {
        auto* row = new SliderRow(appearance_, section);
        row->show(kelvaro::brushRow(which, {}));
        row->onValue = [this, which](double value) {
            if (onBrush) onBrush(withBrushRow(state_.brush, which, value));
        };
        row->onReset = [this, which] {
            if (onBrush) onBrush(withBrushRowReset(state_.brush, which));
        };
        column->addWidget(row);
        brushRows_.push_back(row);
    }
    auto* line = new QHBoxLayout;
    line->setContentsMargins(16, 2, 12, 2);
    line->addWidget(label(words("Erase"), "body", section), 1);
    erase_ = named(new IconButton(appearance_, IconName::eraser, section), "eraseButton",
                   words("Erase"), words(texts::brushEraseTip));
    QObject::connect(erase_, &QToolButton::clicked, this, [this] {
        BrushTool other = state_.brush;
        other.erase = !other.erase;
        if (onBrush) onBrush(other);
    });
    line->addWidget(erase_);
    column->addLayout(line);
    return section;
}

void MaskControls::bind(SliderRow* row, Slider kind, std::size_t index, double neutral) {
    const QString title = words(row->row().spec->title);
    row->onBegin = [this, title] {
        if (onBegin) onBegin(title);
    };
    row->onValue = [this, kind, index](double value) {
        if (onValue) onValue(kind, index, value);
    };
    row->onEnd = [this] {
        if (onEnd) onEnd();
    };
    row->onReset = [this, title, kind, index, neutral] {
        if (onBegin) onBegin(title);
        if (onValue) onValue(kind, index, neutral);
        if (onEnd) onEnd();
    };
}

std::optional<Uuid> MaskControls::maskAt(int row) const {
    if (row < 0 || row >= static_cast<int>(shownMasks_.size())) return std::nullopt;
    return shownMasks_[static_cast<std::size_t>(row)].id;
}

// --- Showing ---

void MaskControls::show(const Adjustments& edit, const MaskToolState& state, bool canChange) {
    showing_ = true;
    state_ = state;
    showList(edit);
    const LocalMask* mask = state.mask ? findMask(edit, *state.mask) : nullptr;
    selected_->setVisible(mask != nullptr);
    overlay_->setHighlighted(state.overlay);
    overlay_->setToolTip(words(overlayTip(state)));
    overlay_->setAccessibleDescription(overlay_->toolTip());
    if (mask) {
        showShapes(*mask);
        const auto shape =
            std::ranges::find_if(mask->components, [&](const MaskComponent& component) {
                return state.shape && component.id == *state.shape;
            });
        const bool paints = shape != mask->components.end() && shape->kind == Kind::brush;
        const bool feathers = shape != mask->components.end() && shape->kind == Kind::radial;
        brush_->setVisible(paints);
        feather_->setVisible(feathers);
        if (feathers) feather_->show(featherRow(*shape));
        for (std::size_t at = 0; at < brushRows_.size(); ++at)
            brushRows_[at]->show(kelvaro::brushRow(allBrushRows[at], state.brush));
        erase_->setHighlighted(state.brush.erases());
        amount_->show(amountRow(*mask));
        const auto rows = maskRows(*mask);
        for (std::size_t at = 0; at < rows.size(); ++at)
            controls_[at]->show(rows[at]);
    }
    showCanChange(canChange);
    showing_ = false;
}

void MaskControls::showCanChange(bool canChange) {
    if (std::exchange(shownCanChange_, canChange) == canChange) return;
    for (QWidget* widget : findChildren<QWidget*>()) {
        if (qobject_cast<QAbstractButton*>(widget) || dynamic_cast<SliderRow*>(widget))
            widget->setEnabled(canChange || widget->objectName() == "overlayButton" ||
                               widget->objectName() == "doneMasks");
    }
}

void MaskControls::showList(const Adjustments& edit) {
    empty_->setVisible(edit.masks.empty());
    masks_->setVisible(!edit.masks.empty());
    std::vector<LocalMask> rows = listed(edit.masks);
    if (rows != shownMasks_ || masks_->count() != static_cast<int>(rows.size())) {
        shownMasks_ = std::move(rows);
        masks_->clear();
        for (const LocalMask& mask : shownMasks_) {
            auto* item = new QListWidgetItem(fromUtf8(mask.name), masks_);
            item->setFlags(item->flags() | Qt::ItemIsUserCheckable | Qt::ItemIsEditable);
            item->setCheckState(mask.enabled ? Qt::Checked : Qt::Unchecked);
            if (mask.invert)
                item->setIcon(icon(IconName::invert, appearance_.theme().secondary,
                                   appearance_.theme().disabled));
            item->setToolTip(words(mask.enabled ? "Untick to leave it without effect"
                                                : "Tick to give it effect"));
        }
    }
    int current = -1;
    for (std::size_t at = 0; at < shownMasks_.size(); ++at)
        if (state_.mask && shownMasks_[at].id == *state_.mask) current = static_cast<int>(at);
    masks_->setCurrentRow(current);
    masks_->setFixedHeight(rowPx * std::min(masks_->count(), shownRows) + 4);
}

void MaskControls::showShapes(const LocalMask& mask) {
    std::pair next{withoutStrokes(mask).components, state_.shape};
    if (next == shownShapes_ && shapes_->count() == static_cast<int>(next.first.size())) return;
    shownShapes_ = std::move(next);
    shapes_->clear();
    for (const MaskComponent& shape : shownShapes_.first) {
        QString text = words(nameOf(shape.kind));
        if (shapes_->count() > 0) text = words(nameOf(shape.mode)) + " · " + text;
        if (shape.invert) text += " · " + words("inverted");
        auto* item = new QListWidgetItem(text, shapes_);
        item->setIcon(
            icon(iconOf(shape.kind), appearance_.theme().secondary, appearance_.theme().disabled));
        item->setData(Qt::UserRole, QVariant::fromValue(shape.id));
        if (state_.shape && shape.id == *state_.shape) shapes_->setCurrentItem(item);
    }
    shapes_->setFixedHeight(rowPx * std::clamp(shapes_->count(), 1, shownRows) + 4);
}

// --- Menus and keys ---

void MaskControls::openMaskMenu(const QPoint& at) {
    const auto mask = maskAt(masks_->indexAt(at).row());
    if (!mask) return;
    QMenu menu(this);
    menu.addAction(words("Rename"), this, [this] { masks_->editItem(masks_->currentItem()); });
    menu.addAction(words("Invert"), this, [&] { call(onInvert, mask); });
    menu.addAction(words("Duplicate"), this, [&] { call(onDuplicate, mask); });
    menu.addAction(words("Reset Sliders"), this, [&] { call(onResetControls, mask); });
    menu.addSeparator();
    menu.addAction(words("Delete"), this, [&] { call(onDelete, mask); });
    menu.exec(masks_->viewport()->mapToGlobal(at));
}

void MaskControls::openShapeMenu(const QPoint& at) {
    const QListWidgetItem* item = shapes_->itemAt(at);
    if (!item) return;
    const auto shape = std::optional(item->data(Qt::UserRole).value<Uuid>());
    QMenu menu(this);
    menu.addAction(words("Invert Shape"), this, [&] { call(onInvertShape, shape); });
    menu.addAction(words("Remove Shape"), this, [&] { call(onRemoveShape, shape); });
    menu.exec(shapes_->viewport()->mapToGlobal(at));
}

void MaskControls::openAddShapeMenu() {
    auto* button = findChild<IconButton*>("addShape");
    QMenu menu(this);
    for (const Mode mode : modes) {
        for (const Kind kind : kinds) {
            menu.addAction(
                icon(iconOf(kind), appearance_.theme().text, appearance_.theme().disabled),
                words(nameOf(mode)) + " " + words(nameOf(kind)), this, [this, kind, mode] {
                    if (onAddShape) onAddShape(kind, mode);
                });
        }
        menu.addSeparator();
    }
    menu.exec(button->mapToGlobal(QPoint(0, button->height())));
}

bool MaskControls::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress) return QWidget::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key != Qt::Key_Delete && key != Qt::Key_Backspace)
        return QWidget::eventFilter(watched, event);
    if (watched == masks_) call(onDelete, state_.mask);
    if (watched == shapes_) call(onRemoveShape, state_.shape);
    return true;
}

} // namespace kelvaro
