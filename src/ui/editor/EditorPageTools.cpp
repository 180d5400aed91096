// The inspector, the picker, crop, masks and presets of the editor.
#include "app/SettingsKeys.h"
#include "editor/MaskList.h"
#include "editor/Straightening.h"
#include "editor/WhiteBalancePick.h"
#include "recipe/MaskControls.h"
#include "ui/Texts.h"
#include "ui/editor/EditorPage.h"

namespace kelvaro {

// --- Inspector ---

void EditorPage::bindInspector() {
    inspector_->onBegin = [this](const AdjustmentSpec& spec) {
        model_.beginChange(std::string(spec.title));
    };
    inspector_->onValue = [this](const AdjustmentSpec& spec, double value) {
        model_.change(std::string(spec.title), [&](Adjustments& edit) {
            if (spec.id == "straighten")
                edit = straightenedTo(edit, value, model_.photo().size);
            else
                spec.setValue(edit, value);
        });
    };
    inspector_->onEnd = [this] { model_.endChange(); };
    inspector_->onResetPanel = [this](AdjustmentSpec::Group group) {
        inspector_->finish();
        model_.resetPanel(group);
    };
    inspector_->onKelvin = [this](SliderRow* row) { openKelvin(row); };
    if (const auto titles =
            parts_.settings.get<std::vector<std::string>>(settingsKey::foldedPanels))
        inspector_->setFolded(*titles);
    inspector_->onFolded = [this] {
        parts_.settings.set(settingsKey::foldedPanels, inspector_->folded());
    };
    inspector_->onPick = [this] { setPicking(!picking_); };
    kelvin_->onChosen = [this](double temperature) {
        model_.change("Temperature", [&](Adjustments& edit) { edit.temperature = temperature; });
    };
    kelvin_->onReset = [this] {
        model_.change("Temperature", [](Adjustments& edit) { edit.temperature = 0; });
    };
    pick_.onPicked = [this](Point at) { pick(at); };
}

void EditorPage::openKelvin(SliderRow*) {
    if (!model_.isReadOnly())
        kelvin_->begin(model_.edit().temperature, model_.photo().asShotKelvin);
}

// --- White balance picker ---

void EditorPage::setPicking(bool picking) {
    if (picking == picking_) return;
    if (picking && (!model_.isOpen() || model_.isReadOnly())) return;
    if (picking) setMode(Mode::adjust);
    picking_ = picking;
    inspector_->pickButton()->setHighlighted(picking);
    canvas_->setTool(picking ? &pick_ : nullptr);
    if (picking) canvas_->setFocus();
}

void EditorPage::pick(Point viewPoint) {
    const auto place =
        PhotoPlacement::ofPicture(canvas_->view(), model_.edit(), model_.photo().size);
    canvas_->session().sample(place.toPhoto(viewPoint), pickRadiusPx,
                              [this](const Result<SampledArea>& area) { picked(area); });
}

void EditorPage::picked(const Result<SampledArea>& area) {
    if (!area) return notice(area.error().message);
    PickRefusal refusal{};
    const auto balance =
        pickedBalance(pickSample(area->pixels.view(), area->clipLevel), area->asShot, &refusal);
    if (!balance) return notice(text(refusal));
    model_.change("White Balance", [&](Adjustments& edit) {
        edit.temperature = balance->temperature;
        edit.tint = balance->tint;
    });
    setPicking(false);
    if (balance->isLimited) notice("This light is beyond the sliders; the nearest is set.");
}

// --- Crop ---

void EditorPage::bindCrop() {
    CropControls& controls = inspector_->crop();
    const auto with = [this](auto act) {
        return [this, act] {
            if (!crop_) return;
            act();
            showTools();
        };
    };
    controls.onAspect = [this](Aspect aspect) {
        if (crop_) crop_->tool().setAspect(aspect);
        showTools();
    };
    controls.onOrientation = with([this] { crop_->tool().togglePortrait(); });
    controls.onHorizon = with([this] { crop_->setDrawsHorizon(!crop_->drawsHorizon()); });
    controls.onReset = with([this] { crop_->tool().reset(); });
    controls.onKeep = [this] { leaveCrop(true); };
    controls.onBegin = [this] {
        beforeCropDrag_ = model_.edit();
        model_.beginChange("Straighten");
    };
    controls.onStraighten = [this](double degrees) {
        // From where the drag began, so that a crop that had to shrink grows again on the way back.
        model_.change("Straighten", [&](Adjustments& edit) {
            edit = straightenedTo(beforeCropDrag_, degrees, model_.photo().size);
        });
    };
    controls.onEnd = [this] { model_.endChange(); };
}

void EditorPage::enterCrop() {
    beforeCrop_ = model_.edit();
    crop_ = std::make_unique<CropCanvas>(model_);
    crop_->onChanged = [this] { showTools(); };
    crop_->onNotice = [this](const std::string& text) { notice(text); };
    canvas_->setTool(crop_.get());
}

void EditorPage::leaveCrop(bool keeps) {
    if (!crop_) return;
    crop_->cancel();
    inspector_->finish();
    if (!keeps) {
        Adjustments back = model_.edit();
        for (const auto field :
             {&Adjustments::cropLeft, &Adjustments::cropRight, &Adjustments::cropTop,
              &Adjustments::cropBottom, &Adjustments::straighten})
            back.*field = beforeCrop_.*field;
        if (back != model_.edit()) model_.apply("Crop", back);
    }
    canvas_->setTool(nullptr);
    crop_.reset();
    inspector_->setMode(Mode::adjust);
    canvas_->setFocus();
    showDisplay();
    refresh();
    showBar();
}

void EditorPage::showTools() {
    const bool canChange = !model_.isReadOnly();
    if (mode() == Mode::crop && crop_)
        inspector_->crop().show(crop_->tool().state().aspect, crop_->tool().standsUpright(),
                                model_.edit(), canChange, crop_->drawsHorizon());
    if (mode() == Mode::masks) inspector_->masks().show(model_.edit(), mask_.state(), canChange);
    inspector_->showStraighten(model_.edit(), canChange);
    canvas_->update();
}

// --- Masks ---

void EditorPage::changeMask(const std::string& name,
                            const std::function<void(Adjustments&, const Uuid&)>& change) {
    const auto mask = mask_.state().mask;
    if (mask) model_.change(name, [&](Adjustments& edit) { change(edit, *mask); });
}

void EditorPage::addMask(MaskComponent::Kind kind) {
    Uuid added;
    RandomSource& random = *parts_.editing.services().random;
    const bool did = model_.change("New Mask", [&](Adjustments& edit) {
        added = kelvaro::addMask(edit, kind, model_.photo().size, random);
    });
    if (!did) return;
    MaskToolState state = mask_.state();
    state.mask = added;
    state.shape.reset();
    mask_.setState(state);
    if (kind != MaskComponent::Kind::brush) mask_.drawShapeNext();
    canvas_->setFocus();
}

void EditorPage::setMaskValue(MaskControls::Slider slider, std::size_t control, double value) {
    changeMask("Mask", [&](Adjustments& edit, const Uuid& id) {
        LocalMask* mask = findMask(edit, id);
        if (!mask) return;
        switch (slider) {
        case MaskControls::Slider::control:
            mask->*maskControlCatalogue()[control].field = value;
            break;
        case MaskControls::Slider::amount:
            setMaskAmount(edit, id, value);
            break;
        case MaskControls::Slider::feather:
            if (MaskComponent* shape =
                    mask_.state().shape ? findShape(*mask, *mask_.state().shape) : nullptr)
                shape->feather = value;
            break;
        }
    });
}

void EditorPage::bindMasks() {
    MaskControls& controls = inspector_->masks();
    mask_.setAccent(appearance_.theme().accent);
    mask_.onChanged = [this] {
        if (isOpening_) return;
        showDisplay();
        showTools();
        const MaskToolState& state = mask_.state();
        parts_.commands.action(CommandId::maskOverlay)->setToolTip(words(overlayTip(state)));
    };
    const auto select = [this](const std::optional<Uuid>& mask, const std::optional<Uuid>& shape) {
        MaskToolState state = mask_.state();
        state.mask = mask;
        state.shape = shape;
        mask_.setState(state);
    };
    RandomSource& random = *parts_.editing.services().random;
    controls.onAdd = [this](MaskComponent::Kind kind) { addMask(kind); };
    controls.onSelect = [select](Uuid mask) { select(mask, std::nullopt); };
    controls.onSelectShape = [this, select](Uuid shape) { select(mask_.state().mask, shape); };
    controls.onDuplicate = [this, select, &random](Uuid mask) {
        std::optional<Uuid> copy;
        model_.change("Duplicate Mask",
                      [&](Adjustments& edit) { copy = duplicateMask(edit, mask, random); });
        if (copy) select(copy, std::nullopt);
    };
    // An act of the list as a step of its own.
    const auto step = [this](const char* name, auto act) {
        return [this, name, act](Uuid which, auto... rest) {
            model_.change(name, [&](Adjustments& edit) { act(edit, which, rest...); });
        };
    };
    controls.onDelete = step("Delete Mask", [](auto& edit, Uuid mask) { removeMask(edit, mask); });
    controls.onInvert = step("Invert Mask", [](auto& edit, Uuid mask) { invertMask(edit, mask); });
    controls.onResetControls =
        step("Reset Mask", [](auto& edit, Uuid mask) { resetMaskControls(edit, mask); });
    controls.onRename = step("Rename Mask", [](auto& edit, Uuid mask, const std::string& name) {
        renameMask(edit, mask, name);
    });
    controls.onEnable = step("Enable Mask", [](auto& edit, Uuid mask, bool enabled) {
        setMaskEnabled(edit, mask, enabled);
    });
    controls.onMove =
        step("Move Mask", [](auto& edit, Uuid mask, std::size_t to) { moveMask(edit, mask, to); });
    controls.onAddShape = [this, select, &random](MaskComponent::Kind kind,
                                                  MaskComponent::Mode mode) {
        std::optional<Uuid> added;
        changeMask("Add Shape", [&](Adjustments& edit, const Uuid& mask) {
            added = addShape(edit, mask, kind, mode, model_.photo().size, random);
        });
        if (!added) return;
        select(mask_.state().mask, added);
        if (kind != MaskComponent::Kind::brush) mask_.drawShapeNext();
    };
    controls.onRemoveShape = [this](Uuid shape) {
        changeMask("Remove Shape",
                   [&](Adjustments& edit, const Uuid& mask) { removeShape(edit, mask, shape); });
    };
    controls.onInvertShape = [this](Uuid shape) {
        changeMask("Invert Shape",
                   [&](Adjustments& edit, const Uuid& mask) { invertShape(edit, mask, shape); });
    };
    controls.onBegin = [this](const QString& title) { model_.beginChange(title.toStdString()); };
    controls.onEnd = [this] { model_.endChange(); };
    controls.onValue = [this](MaskControls::Slider slider, std::size_t control, double value) {
        setMaskValue(slider, control, value);
    };
    controls.onBrush = [this](const BrushTool& brush) { mask_.setBrush(brush); };
    controls.onOverlay = [this] { parts_.commands.action(CommandId::maskOverlay)->trigger(); };
    controls.onDone = [this] { setMode(Mode::adjust); };
}

// --- Presets ---

void EditorPage::bindPresets() {
    PresetFolder& folder = parts_.editing.presets();
    const auto reload = [this, &folder] {
        later([&folder] { return folder.load(); },
              [this](const PresetList& list) { presets_->showPresets(list); });
    };
    const auto tell = [this, reload](const auto& result) {
        if (!result) notice(result.error().message);
        reload();
    };
    bar_->onPresets = [this, &folder] {
        later([&folder] { return folder.load(); },
              [this](const PresetList& list) { presets_->begin(list); });
    };
    presets_->onHover = [this](const Preset* preset) {
        model_.setPreview(preset ? std::optional(applied(*preset, model_.edit())) : std::nullopt);
    };
    presets_->onApply = [this](const Preset& preset) {
        model_.setPreview(std::nullopt);
        model_.apply("Preset " + preset.name, applied(preset, model_.edit()));
        presets_->dismiss();
    };
    presets_->onClosed = [this] { model_.setPreview(std::nullopt); };
    presets_->onSave = [this, &folder, tell](const std::string& name) {
        PasteParts parts;
        parts.masks = false; // of this photo alone
        later(
            [&folder, name, parts, edit = model_.edit()] { return folder.save(name, edit, parts); },
            tell);
    };
    presets_->onRemove = [this, &folder, tell](const Preset& preset) {
        later([&folder, preset] { return folder.remove(preset); }, tell);
    };
    presets_->onRename = [this, &folder, tell](const Preset& preset, const std::string& name) {
        later([&folder, preset, name] { return folder.rename(preset, name); }, tell);
    };
}

} // namespace kelvaro
