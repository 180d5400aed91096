#include "editor/Inspector.h"

#include "editor/CropState.h"
#include "editor/SliderMapping.h"
#include "recipe/AdjustmentCatalogue.h"
#include "recipe/DisplayText.h"
#include "recipe/MaskControls.h"
#include "recipe/RecipeTexts.h"

#include <algorithm>

namespace kelvaro {
namespace {

InspectorRow rowOf(const AdjustmentSpec& spec, double value, double asShotKelvin) {
    InspectorRow row;
    row.spec = &spec;
    row.value = value;
    row.valueText = displayText(spec, value, asShotKelvin);
    row.position = sliderPosition(spec.range, value);
    row.zeroPosition = sliderPosition(spec.range, 0);
    row.isChanged = value != 0;
    row.isSwitch = spec.format == AdjustmentSpec::Format::toggle;
    row.opensKelvinField = spec.format == AdjustmentSpec::Format::kelvin;
    row.tip = row.isSwitch ? texts::blackAndWhiteTip : texts::sliderTip;
    return row;
}

std::string_view noteOf(AdjustmentSpec::Group group, const Adjustments& edit, bool isRaw) {
    if (group == AdjustmentSpec::Group::basic && edit.brightness != 0) {
        return texts::brightnessNote;
    }
    if (group == AdjustmentSpec::Group::detail && !isRaw) return texts::detailNote;
    return {};
}

bool isPanelChanged(AdjustmentSpec::Group group, const Adjustments& edit) {
    return std::ranges::any_of(storedKeyCatalogue(), [&](const AdjustmentSpec& spec) {
        return spec.group == group && spec.value(edit) != 0;
    });
}

} // namespace

std::vector<InspectorPanel> inspectorPanels(const Adjustments& edit, const InspectedPhoto& photo) {
    std::vector<InspectorPanel> panels;
    for (const AdjustmentSpec::Group group : AdjustmentSpec::allGroups) {
        InspectorPanel panel;
        panel.group = group;
        panel.title = title(group);
        panel.isChanged = isPanelChanged(group, edit);
        panel.note = noteOf(group, edit, photo.isRaw);
        for (const AdjustmentSpec& spec : sliderCatalogue(group))
            panel.rows.push_back(rowOf(spec, spec.value(edit), photo.asShotKelvin));
        if (group == AdjustmentSpec::Group::crop) {
            panel.straightenText = straightenText(edit.straighten);
        }
        panels.push_back(std::move(panel));
    }
    return panels;
}

std::vector<InspectorRow> maskRows(const LocalMask& mask) {
    std::vector<InspectorRow> rows;
    for (const MaskControl& control : maskControlCatalogue())
        rows.push_back(rowOf(control.spec, mask.*control.field, 0));
    return rows;
}

} // namespace kelvaro
