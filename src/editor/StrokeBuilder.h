// Builds brush strokes from pointer events, a thousand a second if need be: points that the mask's
// raster could not tell apart are left out, and points are only ever appended, so that painting can
// go on where it stopped. A change of pressure begins another stroke where the last one ended.
#pragma once

#include "editor/BrushTool.h"

namespace kelvaro {

class StrokeBuilder {
public:
    // Of the path, in raster pixels: points nearer than this to the last one are left out.
    static constexpr double leastStepPx = 1;
    // A stroke with this many points is ended and another one goes on: what must be compared and
    // written anew for one more point stays small.
    static constexpr std::size_t mostPoints = 4000;
    static constexpr double flowStep = 10; // percent between strokes of different pressure

    // `hasPressure`: the device is a tablet's pen.
    StrokeBuilder(const BrushTool& brush, bool hasPressure)
        : brush_(brush), hasPressure_(hasPressure) {}

    // Both return whether anything was added to the component's strokes. The component must be the
    // same one throughout, and nobody else may add strokes meanwhile.
    bool begin(MaskComponent& shape, MaskPoint at, double pressure);
    bool add(MaskComponent& shape, MaskPoint at, double pressure);
    // A click with ⇧ goes straight on from the end of the last stroke.
    bool beginFromLast(MaskComponent& shape, MaskPoint at, double pressure);

private:
    void startStroke(MaskComponent& shape, MaskPoint at, double flow);
    double flowAt(double pressure);

    BrushTool brush_;
    bool hasPressure_, pressureSeen_ = false;
    double flow_ = 100;
    MaskPoint last_;
};

} // namespace kelvaro
