#include "ui/editor/CropControls.h"

#include "editor/ToolRows.h"
#include "recipe/RecipeTexts.h"
#include "ui/Texts.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace kelvaro {

CropControls::CropControls(const Appearance& appearance, QWidget* parent) : QWidget(parent) {
    setObjectName("cropControls");
    aspect_ = named(new Choice(appearance, this), "aspect", words("Aspect"),
                    words("The shape that the crop keeps"));
    for (const Aspect aspect : allAspects)
        aspect_->addItem(words(title(aspect)));
    orientation_ = named(new IconButton(appearance, IconName::landscape, this), "orientation",
                         words("Orientation"), words(orientationTip(false)));
    straighten_ = new SliderRow(appearance, this);
    straighten_->show(straightenRow({}));
    horizon_ =
        named(new IconButton(appearance, IconName::horizon, this), "horizon",
              words("Draw a horizon"), words("Draw a line along something level or upright"));
    reset_ = named(new QPushButton(words("Reset"), this), "resetCrop", words("Reset the crop"),
                   words("Show the whole photo again, unturned"));
    keep_ = named(new QPushButton(words("Done"), this), "keepCrop", words("Keep the crop"),
                  words(texts::keepCropTip));
    keep_->setProperty("kind", "primary");

    QObject::connect(aspect_, &QComboBox::activated, this, [this](int index) {
        if (onAspect) onAspect(allAspects[static_cast<std::size_t>(index)]);
    });
    const auto call = [](const std::function<void()>& what) {
        if (what) what();
    };
    QObject::connect(orientation_, &QToolButton::clicked, this, [=, this] { call(onOrientation); });
    QObject::connect(horizon_, &QToolButton::clicked, this, [=, this] { call(onHorizon); });
    QObject::connect(reset_, &QPushButton::clicked, this, [=, this] { call(onReset); });
    QObject::connect(keep_, &QPushButton::clicked, this, [=, this] { call(onKeep); });
    straighten_->onBegin = [=, this] { call(onBegin); };
    straighten_->onEnd = [=, this] { call(onEnd); };
    straighten_->onValue = [this](double degrees) {
        if (onStraighten) onStraighten(degrees);
    };
    straighten_->onReset = [=, this] {
        call(onBegin);
        if (onStraighten) onStraighten(0);
        call(onEnd);
    };

    auto* shape = new QHBoxLayout;
    shape->setContentsMargins(16, 4, 16, 12);
    shape->setSpacing(measure::unit);
    shape->addWidget(aspect_, 1);
    shape->addWidget(orientation_);
    shape->addWidget(horizon_);
    auto* buttons = new QHBoxLayout;
    buttons->setContentsMargins(16, 16, 16, 0);
    buttons->setSpacing(measure::unit);
    buttons->addWidget(reset_, 1);
    buttons->addWidget(keep_, 1);
    auto* heading = label(words("Crop & Straighten"), "heading", this);
    heading->setContentsMargins(16, 8, 16, 4);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(heading);
    column->addLayout(shape);
    column->addWidget(straighten_);
    column->addLayout(buttons);
    column->addStretch(1);
}

void CropControls::show(Aspect aspect, bool upright, const Adjustments& edit, bool canChange,
                        bool drawsHorizon) {
    aspect_->setCurrentIndex(static_cast<int>(aspect));
    orientation_->setIconName(upright ? IconName::portrait : IconName::landscape);
    orientation_->setToolTip(words(orientationTip(upright)));
    orientation_->setAccessibleDescription(orientation_->toolTip());
    orientation_->setEnabled(canChange && aspect != Aspect::free && aspect != Aspect::square);
    straighten_->show(straightenRow(edit));
    horizon_->setHighlighted(drawsHorizon);
    for (QWidget* widget : {static_cast<QWidget*>(aspect_), static_cast<QWidget*>(straighten_),
                            static_cast<QWidget*>(horizon_), static_cast<QWidget*>(reset_)})
        widget->setEnabled(canChange);
}

} // namespace kelvaro
