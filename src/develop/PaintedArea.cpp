#include "develop/PaintedArea.h"

#include "develop/BrushPainting.h"
#include "recipe/RecipeActions.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {

namespace {

// Pixels of the brush's canvas: rounding of the dabs, and the interpolation between its pixels.
constexpr double kReach = 2;
constexpr double kLeastRadius = 0.5; // of a dab, in the same

// Around the points of a stroke from number `first` on; shares of the longer side.
struct Bounds {
    double left = 5, bottom = 5, right = -4, top = -4;

    void add(const BrushStroke& stroke, std::size_t first) {
        const double least = (kLeastRadius + kReach) / kBrushRasterLongerSide;
        const double reach = std::max(stroke.radius, 0.0) + least;
        for (std::size_t at = first; at < stroke.points.size(); ++at) {
            const MaskPoint& point = stroke.points[at];
            left = std::min(left, point.x - reach);
            right = std::max(right, point.x + reach);
            bottom = std::min(bottom, point.y - reach);
            top = std::max(top, point.y + reach);
        }
    }
};

void addGrowth(Bounds& bounds, const std::vector<BrushStroke>& before,
               const std::vector<BrushStroke>& after) {
    const std::size_t last = before.empty() ? 0 : before.size() - 1;
    for (std::size_t at = last; at < after.size(); ++at) {
        const std::size_t done = at < before.size() ? before[at].points.size() : 0;
        // The dabs of a new point lie on the way to it from the point before.
        if (done < after[at].points.size()) bounds.add(after[at], done > 0 ? done - 1 : 0);
    }
}

} // namespace

std::optional<PixelRect> paintedArea(const Adjustments& before, const Adjustments& after,
                                     PixelSize photo) {
    if (withoutStrokes(before) != withoutStrokes(after)) return std::nullopt;
    Bounds bounds;
    for (std::size_t m = 0; m < after.masks.size(); ++m)
        for (std::size_t c = 0; c < after.masks[m].components.size(); ++c) {
            const auto& was = before.masks[m].components[c].strokes;
            const auto& is = after.masks[m].components[c].strokes;
            if (!goesOn(was, is)) return std::nullopt;
            addGrowth(bounds, was, is);
        }
    const PixelRect all{0, 0, photo.width, photo.height};
    const double longer = all.longerSide();
    // Strokes may run far outside of the photo: cut to it before anything becomes a whole number.
    const auto pixel = [longer](double share) {
        return static_cast<int>(std::floor(std::clamp(share, -1.0, 2.0) * longer));
    };
    if (!(bounds.right > bounds.left && bounds.top > bounds.bottom)) return PixelRect{};
    const int x = pixel(bounds.left), y = pixel(bounds.bottom);
    return intersection({x, y, pixel(bounds.right) + 1 - x, pixel(bounds.top) + 1 - y}, all);
}

} // namespace kelvaro
