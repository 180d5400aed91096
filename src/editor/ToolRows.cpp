#include "editor/ToolRows.h"

#include "editor/CropState.h"
#include "editor/SliderMapping.h"
#include "recipe/AdjustmentCatalogue.h"
#include "recipe/RecipeTexts.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace kelvaro {
namespace {

using Spec = AdjustmentSpec;

constexpr Spec percentSpec(std::string_view id, std::string_view title) {
    Spec spec;
    spec.id = id;
    spec.title = title;
    spec.range = {0, 100};
    spec.format = Spec::Format::signed_;
    spec.track = Spec::Track::plain;
    return spec;
}

constexpr Spec amountSpec = percentSpec("mask.amount", "Amount");
constexpr Spec shapeFeatherSpec = percentSpec("shape.feather", "Feather");
constexpr Spec sizeSpec = percentSpec("brush.size", "Size");
constexpr Spec featherSpec = percentSpec("brush.feather", "Feather");
constexpr Spec flowSpec = percentSpec("brush.flow", "Flow");

InspectorRow rowOf(const Spec& spec, double value, double neutral, std::string text,
                   std::string_view tip) {
    InspectorRow row;
    row.spec = &spec;
    row.value = value;
    row.valueText = std::move(text);
    row.position = sliderPosition(spec.range, value);
    row.zeroPosition = sliderPosition(spec.range, 0);
    row.isChanged = std::abs(value - neutral) > 1e-9;
    row.tip = tip;
    return row;
}

std::string percent(double value) {
    return fmt::format("{:.0f}%", value);
}

double sizeOf(double radius) {
    const double whole = std::log(BrushTool::mostRadius / BrushTool::leastRadius);
    return 100 * std::log(std::max(radius, BrushTool::leastRadius) / BrushTool::leastRadius) /
           whole;
}

double radiusOf(double size) {
    return BrushTool::leastRadius * std::pow(BrushTool::mostRadius / BrushTool::leastRadius,
                                             std::clamp(size, 0.0, 100.0) / 100);
}

constexpr std::string_view brushTip = "Drag, or use [ and ] while painting";

} // namespace

InspectorRow straightenRow(const Adjustments& edit) {
    return rowOf(*findStoredKey("straighten"), edit.straighten, 0, straightenText(edit.straighten),
                 texts::straightenTip);
}

InspectorRow amountRow(const LocalMask& mask) {
    const double shown = std::clamp(mask.amount, 0.0, 100.0);
    return rowOf(amountSpec, shown, 100, percent(shown),
                 "How strongly the mask's adjustments apply");
}

InspectorRow featherRow(const MaskComponent& shape) {
    return rowOf(shapeFeatherSpec, shape.feather, 50, percent(shape.feather),
                 "How softly the shape ends");
}

InspectorRow brushRow(BrushRow row, const BrushTool& brush) {
    const BrushTool fresh;
    switch (row) {
    case BrushRow::size:
        return rowOf(sizeSpec, sizeOf(brush.radius), sizeOf(fresh.radius),
                     fmt::format("{:.0f}", sizeOf(brush.radius)), brushTip);
    case BrushRow::feather:
        return rowOf(featherSpec, brush.feather, fresh.feather, percent(brush.feather),
                     "Drag, or use Shift with [ and ] while painting");
    case BrushRow::flow:
        break;
    }
    return rowOf(flowSpec, brush.flow, fresh.flow, percent(brush.flow),
                 "How strongly each stroke paints");
}

BrushTool withBrushRow(BrushTool brush, BrushRow row, double value) {
    switch (row) {
    case BrushRow::size:
        brush.radius = radiusOf(value);
        return brush;
    case BrushRow::feather:
        brush.feather = std::clamp(value, 0.0, 100.0);
        return brush;
    case BrushRow::flow:
        break;
    }
    return withFlow(brush, value);
}

BrushTool withBrushRowReset(BrushTool brush, BrushRow row) {
    const BrushTool fresh;
    if (row == BrushRow::size) brush.radius = fresh.radius;
    if (row == BrushRow::feather) brush.feather = fresh.feather;
    if (row == BrushRow::flow) brush.flow = fresh.flow;
    return brush;
}

} // namespace kelvaro
