// The controls beside the canvas while masks are edited: the list of masks, the shapes of the
// selected one, the brush, amount and the eight sliders. Shows state values and reports what the
// user wants. Main thread.
#pragma once

#include "editor/MaskTools.h"
#include "ui/controls/IconButton.h"
#include "ui/editor/SliderRow.h"

#include <QLabel>
#include <QListWidget>
#include <QPushButton>

#include <array>

namespace kelvaro {

class MaskControls final : public QWidget {
public:
    explicit MaskControls(const Appearance& appearance, QWidget* parent = nullptr);

    void show(const Adjustments& edit, const MaskToolState& state, bool canChange);
    using QWidget::show;
    QListWidget* list() const { return masks_; }
    SliderRow* brushRow(std::size_t index) const { return brushRows_.at(index); }

    // --- The list ---
    std::function<void(MaskComponent::Kind)> onAdd;
    std::function<void(Uuid)> onSelect, onDuplicate, onDelete, onInvert, onResetControls;
    std::function<void(Uuid, std::string)> onRename;
    std::function<void(Uuid, bool)> onEnable;
    std::function<void(Uuid, std::size_t)> onMove;
    // --- The shapes of the selected mask ---
    std::function<void(MaskComponent::Kind, MaskComponent::Mode)> onAddShape;
    std::function<void(Uuid)> onSelectShape, onRemoveShape, onInvertShape;
    // --- Sliders: the selected mask's controls, its amount, the shape's feather ---
    enum class Slider { control, amount, feather };
    std::function<void(const QString& title)> onBegin;
    std::function<void(Slider, std::size_t control, double value)> onValue;
    std::function<void()> onEnd;
    std::function<void(const BrushTool&)> onBrush;
    std::function<void()> onOverlay, onDone;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* makeAddRow();
    QWidget* makeMaskSection();
    QWidget* makeBrushSection();
    void bind(SliderRow* row, Slider kind, std::size_t index, double neutral);
    void showList(const Adjustments& edit);
    void showShapes(const LocalMask& mask);
    void showCanChange(bool canChange);
    void openMaskMenu(const QPoint& at);
    void openShapeMenu(const QPoint& at);
    void openAddShapeMenu();
    QListWidget* makeList(const char* name, const QString& title, const QString& help);
    std::optional<Uuid> maskAt(int row) const;
    void call(const std::function<void(Uuid)>& what, const std::optional<Uuid>& which) const {
        if (what && which) what(*which);
    }

    const Appearance& appearance_;
    QListWidget *masks_, *shapes_;
    QWidget *selected_, *brush_;
    IconButton *overlay_, *erase_;
    QLabel* empty_;
    SliderRow *amount_, *feather_;
    std::vector<SliderRow*> controls_, brushRows_;
    std::vector<LocalMask> shownMasks_; // what the list shows of them
    // Of the selected mask, without strokes, and the selected one.
    std::pair<std::vector<MaskComponent>, std::optional<Uuid>> shownShapes_;
    std::optional<bool> shownCanChange_;
    MaskToolState state_;
    bool showing_ = false;
};

} // namespace kelvaro
