// The right side of the editor: the histogram, then the panels of the catalogue, or the controls of
// the crop or mask tool in their place, and copy, paste and revert at the foot. Main thread.
#pragma once

#include "editor/Inspector.h"
#include "ui/editor/CropControls.h"
#include "ui/editor/HistogramView.h"
#include "ui/editor/MaskControls.h"
#include "ui/editor/PanelView.h"
#include "ui/editor/SliderRow.h"

#include <QScrollArea>
#include <QStackedWidget>

#include <map>

namespace kelvaro {

class CommandActions;
class Switch;

class InspectorView final : public QWidget {
public:
    enum class Mode { adjust, crop, masks };

    InspectorView(const Appearance& appearance, CommandActions& commands, QWidget* parent);

    // All rows and panels; `reason` says why nothing can be changed, where that is so.
    void show(const std::vector<InspectorPanel>& panels, const QString& reason);
    using QWidget::show;
    // The crop panel's row.
    void showStraighten(const Adjustments& edit, bool canChange);
    void setMode(Mode mode);
    Mode mode() const { return mode_; }
    HistogramView& histogram() const { return *histogram_; }
    CropControls& crop() const { return *crop_; }
    MaskControls& masks() const { return *masks_; }
    IconButton* pickButton() const { return pick_; }
    SliderRow* row(std::string_view id) const;
    PanelView* panel(AdjustmentSpec::Group group) const { return panels_.at(group); }
    // Titles of the panels that are folded; others are open.
    void setFolded(const std::vector<std::string>& titles);
    std::vector<std::string> folded() const;
    // Ends steps by wheel or keys that have no end of their own.
    void finish();

    std::function<void(const AdjustmentSpec&)> onBegin;
    std::function<void(const AdjustmentSpec&, double)> onValue;
    std::function<void()> onEnd;
    std::function<void(AdjustmentSpec::Group)> onResetPanel;
    std::function<void(SliderRow*)> onKelvin;
    std::function<void()> onPick;
    std::function<void()> onFolded; // a panel was folded or unfolded

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QWidget* makePanels();
    QWidget* makeSwitchRow(const AdjustmentSpec& spec);
    QWidget* makeFoot(CommandActions& commands);
    void bind(SliderRow* row, const AdjustmentSpec& spec);

    const Appearance& appearance_;
    Mode mode_ = Mode::adjust;
    HistogramView* histogram_;
    QLabel* reason_;
    QStackedWidget* stack_;
    QScrollArea* scroll_ = nullptr;
    CropControls* crop_ = nullptr;
    MaskControls* masks_ = nullptr;
    IconButton* pick_ = nullptr;
    std::map<AdjustmentSpec::Group, PanelView*> panels_;
    std::map<std::string_view, SliderRow*> rows_;
    std::map<std::string_view, Switch*> switches_;
    SliderRow* straighten_ = nullptr; // the crop panel's
};

// A scroll area of an inspector's column.
QScrollArea* inspectorScroll(QWidget* content, const char* name, const QString& title,
                             QWidget* parent);

} // namespace kelvaro
