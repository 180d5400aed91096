// A rectangle of real numbers with y up: photo pixels or upright view points. Plain value.
#pragma once

#include "base/Geometry.h"

namespace kelvaro {

struct Box {
    double x = 0, y = 0, width = 0, height = 0;

    static constexpr Box between(double minX, double minY, double maxX, double maxY) {
        return {minX, minY, maxX - minX, maxY - minY};
    }
    // Of this size, its middle at `centre`.
    static constexpr Box around(Point centre, double width, double height) {
        return {centre.x - width / 2, centre.y - height / 2, width, height};
    }

    constexpr double minX() const { return x; }
    constexpr double minY() const { return y; }
    constexpr double maxX() const { return x + width; }
    constexpr double maxY() const { return y + height; }
    constexpr Point centre() const { return {x + width / 2, y + height / 2}; }
    // Bounds are inclusive.
    constexpr bool contains(Point p) const {
        return p.x >= minX() && p.x <= maxX() && p.y >= minY() && p.y <= maxY();
    }
    constexpr Box grownBy(double by) const {
        return {x - by, y - by, width + 2 * by, height + 2 * by};
    }
    bool operator==(const Box&) const = default;
};

// The box `share` of the way from `from` to `to`: position and size alike.
constexpr Box interpolated(const Box& from, const Box& to, double share) {
    return {from.x + share * (to.x - from.x), from.y + share * (to.y - from.y),
            from.width + share * (to.width - from.width),
            from.height + share * (to.height - from.height)};
}

} // namespace kelvaro
