#include "ui/editor/PresetPopover.h"

#include "ui/Texts.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMenu>
#include <QVBoxLayout>

namespace kelvaro {
namespace {

constexpr int widthPx = 280, rowPx = 28, shownRows = 9;
constexpr int itemAir = 9; // of a name within its row: it stands under the heading's first letter

} // namespace

PresetPopover::PresetPopover(const Appearance& appearance, QWidget* window, QWidget* anchor)
    : Overlay(appearance, Kind::popover, window, anchor) {
    setObjectName("presetPopover");
    panel()->setFixedWidth(widthPx);
    auto* column = new QVBoxLayout(panel());
    column->setContentsMargins(measure::margin - itemAir, 16, measure::margin - itemAir, 16);
    column->setSpacing(measure::unit);
    const auto inset = [column] {
        auto* line = new QHBoxLayout;
        line->setContentsMargins(itemAir, 0, itemAir, 0);
        column->addLayout(line);
        return line;
    };
    inset()->addWidget(label(words("Presets"), "heading"));
    list_ = named(new QListWidget(panel()), "presetList", words("Presets"),
                  words("Resting on a preset shows it, Return or a click applies it"));
    list_->setToolTip({});
    list_->setMouseTracking(true);
    list_->setContextMenuPolicy(Qt::CustomContextMenu);
    list_->setEditTriggers(QAbstractItemView::EditKeyPressed);
    list_->viewport()->installEventFilter(this);
    list_->installEventFilter(this);
    column->addWidget(list_);
    note_ = wrappedLabel({}, "secondary", widthPx - 32);
    inset()->addWidget(note_);
    auto* row = inset();
    name_ = named(new QLineEdit(panel()), "presetName", words("Name of a new preset"),
                  words("Keeps the present adjustments under this name"));
    name_->setPlaceholderText(words("New preset"));
    auto* save = named(new QPushButton(words("Save"), panel()), "savePreset", words("Save preset"),
                       words("Keep the present adjustments as a preset"));
    save->setEnabled(false);
    row->addWidget(name_, 1);
    row->addWidget(save);
    const auto keep = [this] {
        if (name_->text().trimmed().isEmpty()) return;
        if (onSave) onSave(name_->text().trimmed().toStdString());
        name_->clear();
    };
    QObject::connect(name_, &QLineEdit::textChanged, save,
                     [save](const QString& text) { save->setEnabled(!text.trimmed().isEmpty()); });
    QObject::connect(name_, &QLineEdit::returnPressed, this, keep);
    QObject::connect(save, &QPushButton::clicked, this, keep);
    QObject::connect(list_, &QListWidget::itemEntered, this, [this](QListWidgetItem* item) {
        if (onHover) onHover(presetAt(list_->row(item)));
    });
    QObject::connect(list_, &QListWidget::itemClicked, this, [this](QListWidgetItem* item) {
        if (const Preset* preset = presetAt(list_->row(item)); preset && onApply) onApply(*preset);
    });
    QObject::connect(list_, &QListWidget::currentRowChanged, this, [this](int at) {
        if (!showing_ && list_->hasFocus() && onHover) onHover(presetAt(at));
    });
    QObject::connect(list_, &QListWidget::itemChanged, this, [this](QListWidgetItem* item) {
        const Preset* preset = presetAt(list_->row(item));
        if (!showing_ && preset && onRename && item->text().toStdString() != preset->name)
            onRename(*preset, item->text().toStdString());
    });
    QObject::connect(list_, &QWidget::customContextMenuRequested, this,
                     [this](const QPoint& at) { openMenu(at); });
}

void PresetPopover::begin(PresetList presets) {
    showPresets(std::move(presets));
    open();
}

void PresetPopover::showPresets(PresetList presets) {
    showing_ = true;
    presets_ = std::move(presets);
    list_->clear();
    for (const Preset& preset : presets_.presets) {
        auto* item = new QListWidgetItem(fromUtf8(preset.name), list_);
        item->setFlags(item->flags() | Qt::ItemIsEditable);
    }
    list_->setVisible(list_->count() > 0);
    list_->setFixedHeight(rowPx * std::min(list_->count(), shownRows) + 2);
    QString note = list_->count() == 0
                       ? words("Give the adjustments of this photo a name to use them on others.")
                       : QString();
    for (const std::string& problem : presets_.problems)
        note += (note.isEmpty() ? "" : "\n") + fromUtf8(problem);
    note_->setText(note);
    note_->setVisible(!note.isEmpty());
    showing_ = false;
}

const Preset* PresetPopover::presetAt(int row) const {
    if (row < 0 || row >= static_cast<int>(presets_.presets.size())) return nullptr;
    return &presets_.presets[static_cast<std::size_t>(row)];
}

void PresetPopover::openMenu(const QPoint& at) {
    QListWidgetItem* item = list_->itemAt(at);
    if (!item) return;
    const int row = list_->row(item);
    QMenu menu(this);
    menu.addAction(words("Rename"), this, [&] { list_->editItem(item); });
    menu.addAction(words("Delete"), this, [&] {
        if (const Preset* preset = presetAt(row); preset && onRemove) onRemove(Preset(*preset));
    });
    menu.exec(list_->viewport()->mapToGlobal(at));
}

bool PresetPopover::eventFilter(QObject* watched, QEvent* event) {
    if (watched == list_->viewport() && event->type() == QEvent::Leave && onHover) onHover(nullptr);
    if (watched == list_ && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        const Preset* preset = presetAt(list_->currentRow());
        if (preset && (key == Qt::Key_Return || key == Qt::Key_Enter)) {
            if (onApply) onApply(*preset);
            return true;
        }
        if (preset && key == Qt::Key_Delete) {
            if (onRemove) onRemove(Preset(*preset));
            return true;
        }
    }
    return Overlay::eventFilter(watched, event);
}

} // namespace kelvaro
