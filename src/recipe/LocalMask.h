// Local adjustments: a mask selects part of the photo by its shapes and applies eight controls of
// its own there. Points are normalised by the photo's longer side, origin at the lower-left corner,
// y up. Plain values; the records hold what they are given, `sanitised` brings shapes into their
// limits.
#pragma once

#include "recipe/Uuid.h"

#include <cstddef>
#include <string>
#include <vector>

namespace kelvaro {

struct MaskPoint {
    double x = 0, y = 0; // −4 … 5: a shape may start beyond the edge

    bool operator==(const MaskPoint&) const = default;
};

struct BrushStroke {
    std::vector<MaskPoint> points; // the path
    double radius = 0.05;          // of the brush, as a share of the longer side, 0 … 1
    double feather = 50;           // softness of the edge, percent
    double flow = 100;             // strength of each dab, percent
    bool erase = false;            // removes paint instead of adding it

    bool operator==(const BrushStroke&) const = default;
};

struct MaskComponent {
    enum class Kind { brush, linear, radial };
    enum class Mode { add, subtract, intersect };

    Uuid id;
    Kind kind = Kind::brush;
    Mode mode = Mode::add;
    bool invert = false; // this shape alone, before it is combined
    MaskPoint start;     // linear: where the gradient starts; radial: the centre
    MaskPoint end;       // linear: where it ends; radial: the horizontal and the vertical radius
    double angle = 0;    // degrees, counter-clockwise; radial: rotation of the ellipse
    double feather = 50; // softness of the edge, percent
    std::vector<BrushStroke> strokes; // brush: painted in this order

    bool operator==(const MaskComponent&) const = default;
};

// The ranges of the controls stand in the mask control catalogue (recipe/MaskControls.h).
struct LocalMask {
    Uuid id;
    std::string name = "Mask";
    bool enabled = true;
    bool invert = false;                   // outside of the combined shape instead of inside
    double amount = 100;                   // strength of all controls, percent
    std::vector<MaskComponent> components; // combined in this order
    double exposure = 0;
    double temperature = 0;
    double tint = 0;
    double contrast = 0;
    double highlights = 0;
    double shadows = 0;
    double clarity = 0;
    double saturation = 0;

    bool operator==(const LocalMask&) const = default;
};

LocalMask newMask(RandomSource& random);
MaskComponent newComponent(MaskComponent::Kind kind, MaskComponent::Mode mode,
                           RandomSource& random);

// Non-finite values become the default, finite ones are brought into their limits; the radii of an
// ellipse become positive, its angle is reduced to less than one turn with its sign kept, and
// strokes without points are dropped. Sanitising twice gives what sanitising once gives.
MaskComponent sanitised(MaskComponent component);
// All components sanitised; name, amount and controls stay as they are.
LocalMask sanitised(LocalMask mask);

// Equal masks have equal hashes.
std::size_t hashOf(const LocalMask& mask);

} // namespace kelvaro
