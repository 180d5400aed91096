// The inspector as plain values, built from the catalogue: panels in their order, rows with texts
// and positions, what has changed, the notes. Read anew after each change; cheap.
#pragma once

#include "recipe/AdjustmentSpec.h"
#include "recipe/Adjustments.h"

#include <string>
#include <string_view>
#include <vector>

namespace kelvaro {

// What the rows depend on beside the edit.
struct InspectedPhoto {
    bool isRaw = false;
    double asShotKelvin = 6500;
};

struct InspectorRow {
    const AdjustmentSpec* spec = nullptr;
    double value = 0;
    std::string valueText;   // empty for a switch
    double position = 0;     // of the knob, 0 … 1 along the row
    double zeroPosition = 0; // of the tick; the filled part runs from there to the knob
    bool isChanged = false;
    bool isSwitch = false;
    bool opensKelvinField = false; // a click on the value
    std::string_view tip;

    bool operator==(const InspectorRow&) const = default;
};

struct InspectorPanel {
    AdjustmentSpec::Group group = AdjustmentSpec::Group::basic;
    std::string_view title;
    std::vector<InspectorRow> rows; // none for the crop, which shows the angle alone
    std::string straightenText;     // of the crop panel
    bool isChanged = false;         // anything that its reset would set to 0
    std::string_view note;          // empty where there is nothing to say

    bool operator==(const InspectorPanel&) const = default;
};

// All six panels in catalogue order.
std::vector<InspectorPanel> inspectorPanels(const Adjustments& edit, const InspectedPhoto& photo);

// The eight rows of a mask and its amount are like the others; see recipe/MaskControls.h.
std::vector<InspectorRow> maskRows(const LocalMask& mask);

} // namespace kelvaro
