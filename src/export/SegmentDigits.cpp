#include "export/SegmentDigits.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kelvaro {

namespace {

struct Corner {
    double x, y; // in pixels, y down
};
using Polygon = std::vector<Corner>;

// A digit within its cell, in digit heights: strokes along the edges of a narrow upright box.
constexpr double kBoxWidth = 0.40, kStroke = 0.088, kGap = 0.014;
constexpr double kSlant = 0.14; // of the height, as on the LED backs: 8 degrees
constexpr double kPointSize = 0.105;

// Segments a to g: top, upper right, lower right, bottom, lower left, upper left, middle.
constexpr std::array<unsigned, 10> kSegments{0b0111111, 0b0000110, 0b1011011, 0b1001111, 0b1100110,
                                             0b1101101, 0b1111101, 0b0000111, 0b1111111, 0b1101111};

// A bar from one joint to the next, pointed at both ends like those of the displays.
Polygon bar(Corner from, Corner to, double halfStroke, double gap) {
    const double length = std::hypot(to.x - from.x, to.y - from.y);
    const double ux = (to.x - from.x) / length, uy = (to.y - from.y) / length;
    const auto at = [&](double along, double across) {
        return Corner{from.x + ux * along - uy * across, from.y + uy * along + ux * across};
    };
    return {at(gap, 0),
            at(gap + halfStroke, -halfStroke),
            at(length - gap - halfStroke, -halfStroke),
            at(length - gap, 0),
            at(length - gap - halfStroke, halfStroke),
            at(gap + halfStroke, halfStroke)};
}

// In digit heights, the cell's upper left corner at the origin.
std::vector<Polygon> digitShape(unsigned segments) {
    const double half = kStroke / 2, left = (kDigitCell - kBoxWidth) / 2 + half;
    const double right = left + kBoxWidth - kStroke, top = half, middle = 0.5, bottom = 1 - half;
    const std::array<std::pair<Corner, Corner>, 7> joints{{{{left, top}, {right, top}},
                                                           {{right, top}, {right, middle}},
                                                           {{right, middle}, {right, bottom}},
                                                           {{left, bottom}, {right, bottom}},
                                                           {{left, middle}, {left, bottom}},
                                                           {{left, top}, {left, middle}},
                                                           {{left, middle}, {right, middle}}}};
    std::vector<Polygon> shape;
    for (std::size_t i = 0; i < joints.size(); ++i)
        if (segments >> i & 1) shape.push_back(bar(joints[i].first, joints[i].second, half, kGap));
    return shape;
}

std::vector<Polygon> pointShape() {
    const double left = (kPointCell - kPointSize) / 2, top = 1 - kPointSize;
    return {{{left, top}, {left + kPointSize, top}, {left + kPointSize, 1}, {left, 1}}};
}

// The part of a convex polygon where `sign` × (coordinate − limit) ≥ 0 (Sutherland and Hodgman).
Polygon cut(const Polygon& polygon, bool isX, double limit, double sign) {
    const auto inside = [&](const Corner& c) { return sign * ((isX ? c.x : c.y) - limit); };
    Polygon kept;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Corner &a = polygon[i], &b = polygon[(i + 1) % polygon.size()];
        const double da = inside(a), db = inside(b);
        if (da >= 0) kept.push_back(a);
        if ((da >= 0) == (db >= 0)) continue;
        const double t = da / (da - db);
        kept.push_back({a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)});
    }
    return kept;
}

double area(const Polygon& polygon) {
    double twice = 0;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Corner &a = polygon[i], &b = polygon[(i + 1) % polygon.size()];
        twice += a.x * b.y - b.x * a.y;
    }
    return std::abs(twice) / 2;
}

void fill(const Polygon& polygon, Coverage& into) {
    const auto [top, bottom] = std::minmax_element(polygon.begin(), polygon.end(),
                                                   [](auto& a, auto& b) { return a.y < b.y; });
    const int last = std::min(into.height - 1, int(std::floor(bottom->y)));
    for (int y = std::max(0, int(std::floor(top->y))); y <= last; ++y) {
        const Polygon row = cut(cut(polygon, false, y, 1), false, y + 1, -1);
        if (row.size() < 3) continue;
        const auto [left, right] =
            std::minmax_element(row.begin(), row.end(), [](auto& a, auto& b) { return a.x < b.x; });
        const int end = std::min(into.width - 1, int(std::floor(right->x)));
        for (int x = std::max(0, int(std::floor(left->x))); x <= end; ++x) {
            float& value = into.values[std::size_t(y) * std::size_t(into.width) + std::size_t(x)];
            value = std::min(1.0F, value + float(area(cut(cut(row, true, x, 1), true, x + 1, -1))));
        }
    }
}

} // namespace

Coverage segmentText(std::string_view text, double digitHeightPx) {
    const double h = digitHeightPx, padding = kTextPadding * h;
    double cells = 0;
    for (const char c : text)
        cells += c == '.' ? kPointCell : kDigitCell;
    Coverage coverage;
    coverage.width = int(std::ceil(cells * h + 2 * padding));
    coverage.height = int(std::ceil(h + 2 * padding));
    coverage.values.resize(std::size_t(coverage.width) * std::size_t(coverage.height));
    double x = padding;
    for (const char c : text) {
        const bool isDigit = c >= '0' && c <= '9';
        auto shape = isDigit    ? digitShape(kSegments[std::size_t(c - '0')])
                     : c == '.' ? pointShape()
                                : std::vector<Polygon>{};
        for (Polygon& polygon : shape) {
            // Slanted about the middle of the height, so that the text stays centred in its room.
            for (Corner& corner : polygon)
                corner = {x + (corner.x + kSlant * (0.5 - corner.y)) * h, padding + corner.y * h};
            fill(polygon, coverage);
        }
        x += (c == '.' ? kPointCell : kDigitCell) * h;
    }
    return coverage;
}

} // namespace kelvaro
