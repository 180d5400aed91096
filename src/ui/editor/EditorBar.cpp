#include "ui/editor/EditorBar.h"

#include "library/LibraryTexts.h"
#include "ui/Texts.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"
#include "ui/library/Toolbar.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>

namespace kelvaro {

EditorBar::EditorBar(const Appearance& appearance, CommandActions& commands, QWidget* parent)
    : QWidget(parent), appearance_(appearance) {
    setObjectName("editorBar");
    auto* back = named(new QPushButton(words("‹ Library"), this), "backButton",
                       words("Back to Library"), words(texts::backToLibrary));
    back->setProperty("kind", "quiet");
    QObject::connect(back, &QPushButton::clicked, this, [this] { onBack(); });
    name_ = label({}, "body", this);
    place_ = label({}, "secondary", this);
    saving_ = label({}, "warning", this);
    name_->setObjectName("photoName");
    place_->setObjectName("photoPlace");
    saving_->setObjectName("savingState");
    favorite_ = tool(IconName::favorite, CommandId::favorite, commands, "favoriteButton");
    auto* undo = tool(IconName::undo, CommandId::undo, commands, "undoButton");
    auto* redo = tool(IconName::redo, CommandId::redo, commands, "redoButton");
    original_ = named(new IconButton(appearance, IconName::before, this), "originalButton",
                      words("Show Original"), commands.action(CommandId::showOriginal)->toolTip());
    split_ = named(new IconButton(appearance, IconName::split, this), "splitButton",
                   words("Before and after"), words("Compare before and after, side by side"));
    presets_ = named(new IconButton(appearance, IconName::presets, this), "presetsButton",
                     words("Presets"), words("Sets of adjustments that you keep"));
    crop_ = tool(IconName::crop, CommandId::crop, commands, "cropButton");
    masks_ = tool(IconName::mask, CommandId::masks, commands, "masksButton");
    assessment_ =
        tool(IconName::assessment, CommandId::colourAssessment, commands, "assessmentButton");
    auto* info = tool(IconName::info, CommandId::photoInfo, commands, "infoButton");
    auto* exports =
        tool(IconName::exportArrow, CommandId::exportPhotos, commands, "editorExportButton");
    QObject::connect(split_, &QToolButton::clicked, this, [this] { onSplit(); });
    QObject::connect(presets_, &QToolButton::clicked, this, [this] { onPresets(); });
    QObject::connect(original_, &QToolButton::pressed, this, [this] { onOriginal(true); });
    QObject::connect(original_, &QToolButton::released, this, [this] { onOriginal(false); });
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(measure::unit, measure::unit, measure::margin, measure::unit);
    row->setSpacing(measure::unit / 2);
    row->addWidget(back);
    row->addSpacing(measure::unit);
    row->addWidget(name_);
    row->addSpacing(measure::unit / 2);
    row->addWidget(place_);
    row->addSpacing(measure::unit);
    row->addWidget(saving_);
    row->addStretch(1);
    const std::initializer_list<std::initializer_list<QWidget*>> groups{
        {favorite_},
        {undo, redo},
        {original_, split_},
        {presets_, crop_, masks_, assessment_},
        {info, exports}};
    bool isFirst = true;
    for (const auto& group : groups) {
        if (!isFirst) row->addSpacing(12);
        isFirst = false;
        for (QWidget* button : group)
            row->addWidget(button);
    }
}

IconButton* EditorBar::tool(IconName name, CommandId id, CommandActions& commands,
                            const char* objectName) {
    return actionButton(appearance_, name, commands.action(id), objectName, this);
}

void EditorBar::show(const EditorBarState& state) {
    name_->setText(state.name);
    place_->setText(state.place);
    saving_->setText(state.state);
    favorite_->setIconName(state.isFavorite ? IconName::favoriteFilled : IconName::favorite);
    split_->setHighlighted(state.isSplit);
    crop_->setHighlighted(state.isCropping);
    masks_->setHighlighted(state.isMasking);
    assessment_->setHighlighted(state.isAssessing);
}

void EditorBar::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), appearance_.theme().window);
}

} // namespace kelvaro
