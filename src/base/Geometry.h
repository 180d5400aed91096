// Points, sizes and rectangles in image space: pixels, origin at the photo's lower-left corner, x
// to the right, y up, pixel centres at half-integers.
#pragma once

#include <algorithm>

namespace kelvaro {

struct Point {
    double x = 0, y = 0;
    bool operator==(const Point&) const = default;
};

struct PixelSize {
    int width = 0, height = 0;
    bool operator==(const PixelSize&) const = default;
};

// A half-open rectangle of whole pixels: x … x + width, y … y + height, y counted upwards.
struct PixelRect {
    int x = 0, y = 0, width = 0, height = 0;

    int right() const { return x + width; }
    int top() const { return y + height; }
    bool isEmpty() const { return width <= 0 || height <= 0; }
    PixelSize size() const { return {width, height}; }
    int longerSide() const { return std::max(width, height); }
    bool contains(const PixelRect& other) const {
        return other.x >= x && other.y >= y && other.right() <= right() && other.top() <= top();
    }
    bool operator==(const PixelRect&) const = default;
};

// Where both lie; an empty rectangle at the origin when they do not meet.
inline PixelRect intersection(const PixelRect& a, const PixelRect& b) {
    const int x = std::max(a.x, b.x), y = std::max(a.y, b.y);
    const int right = std::min(a.right(), b.right()), top = std::min(a.top(), b.top());
    if (right <= x || top <= y) return {};
    return {x, y, right - x, top - y};
}

// The smallest rectangle around both; an empty one counts for nothing.
inline PixelRect bounding(const PixelRect& a, const PixelRect& b) {
    if (a.isEmpty()) return b;
    if (b.isEmpty()) return a;
    const int x = std::min(a.x, b.x), y = std::min(a.y, b.y);
    return {x, y, std::max(a.right(), b.right()) - x, std::max(a.top(), b.top()) - y};
}

inline PixelRect outset(const PixelRect& r, int by) {
    return {r.x - by, r.y - by, r.width + 2 * by, r.height + 2 * by};
}

} // namespace kelvaro
