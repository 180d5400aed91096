// The slider rows of the tools, beside those of the catalogue: straighten, a mask's amount, a
// shape's feather, the brush. Plain values; each spec has no `keyPath`.
#pragma once

#include "editor/BrushTool.h"
#include "editor/Inspector.h"

#include <array>

namespace kelvaro {

InspectorRow straightenRow(const Adjustments& edit); // degrees
InspectorRow amountRow(const LocalMask& mask);       // percent
InspectorRow featherRow(const MaskComponent& shape); // percent

enum class BrushRow { size, feather, flow };
inline constexpr std::array allBrushRows{BrushRow::size, BrushRow::feather, BrushRow::flow};
// The size runs 0 … 100 in equal factors from the smallest brush to the largest.
InspectorRow brushRow(BrushRow row, const BrushTool& brush);
BrushTool withBrushRow(BrushTool brush, BrushRow row, double value);
BrushTool withBrushRowReset(BrushTool brush, BrushRow row);

} // namespace kelvaro
