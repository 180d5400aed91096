// The controls beside the canvas while cropping: aspect, orientation, straighten, horizon, reset
// and keep. Main thread.
#pragma once

#include "editor/CropState.h"
#include "ui/controls/Choice.h"
#include "ui/controls/IconButton.h"
#include "ui/editor/SliderRow.h"

#include <QLabel>
#include <QPushButton>

namespace kelvaro {

class CropControls final : public QWidget {
public:
    explicit CropControls(const Appearance& appearance, QWidget* parent = nullptr);

    // `upright`: how a crop of the chosen aspect stands.
    void show(Aspect aspect, bool upright, const Adjustments& edit, bool canChange,
              bool drawsHorizon);
    using QWidget::show;
    SliderRow* straighten() const { return straighten_; }

    std::function<void(Aspect)> onAspect;
    std::function<void()> onOrientation, onHorizon, onReset, onKeep, onBegin, onEnd;
    std::function<void(double)> onStraighten;

private:
    Choice* aspect_;
    IconButton *orientation_, *horizon_;
    SliderRow* straighten_;
    QPushButton *reset_, *keep_;
};

} // namespace kelvaro
