#include "develop/BrushPainting.h"

#include "base/Require.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {

namespace {

constexpr int kBlock = 32;

// Recipes are brought into these limits when they are read; what is built in memory may not be.
double limited(double value, double low, double high, double otherwise) {
    return std::isfinite(value) ? std::clamp(value, low, high) : otherwise;
}

// The parameters of the piece of from + s × direction, 0 ≤ s ≤ length, inside low … high on one
// axis.
void clipAxis(double from, double direction, double low, double high, double& first, double& last) {
    if (direction == 0) {
        if (from < low || from > high) last = -1;
        return;
    }
    const double a = (low - from) / direction, b = (high - from) / direction;
    first = std::max(first, std::min(a, b));
    last = std::min(last, std::max(a, b));
}

} // namespace

PixelSize brushRasterSize(PixelSize photo) {
    const int longer = std::max({photo.width, photo.height, 1});
    const auto scaled = [&](int side) {
        return std::max(2, int(std::int64_t(kBrushRasterLongerSide) * side / longer));
    };
    return {scaled(photo.width), scaled(photo.height)};
}

BrushCanvas::BrushCanvas(PixelSize size) : size_(size) {
    KELVARO_REQUIRE(size.width > 0 && size.height > 0);
    values_.resize(width() * std::size_t(size.height));
    blocksAcross_ = (size.width + kBlock - 1) / kBlock;
    const int blocksUp = (size.height + kBlock - 1) / kBlock;
    lowest_.resize(std::size_t(blocksAcross_) * std::size_t(blocksUp));
    highest_.resize(lowest_.size());
}

std::uint8_t BrushCanvas::Dab::valueAt(double distance) const {
    if (distance >= radius) return 0;
    if (distance <= std::max(radius - band, 0.0)) return std::uint8_t(peak + 0.5);
    const double t = (distance - (radius - band)) / band;
    return std::uint8_t((1 - t * t * (3 - 2 * t)) * peak + 0.5);
}

PixelRect BrushCanvas::place(const Dab& dab) {
    const int left = int(std::max(std::floor(dab.x - dab.radius), 0.0));
    const int bottom = int(std::max(std::floor(dab.y - dab.radius), 0.0));
    const int right = int(std::min(std::ceil(dab.x + dab.radius), double(size_.width)));
    const int top = int(std::min(std::ceil(dab.y + dab.radius), double(size_.height)));
    if (right <= left || top <= bottom) return {};
    const PixelRect touched{left, bottom, right - left, top - bottom};
    for (int by = bottom / kBlock; by * kBlock < top; ++by)
        for (int bx = left / kBlock; bx * kBlock < right; ++bx) {
            const PixelRect block = intersection({bx * kBlock, by * kBlock, kBlock, kBlock},
                                                 {0, 0, size_.width, size_.height});
            placeInBlock(dab, block, intersection(block, touched),
                         std::size_t(by) * std::size_t(blocksAcross_) + std::size_t(bx));
        }
    return touched;
}

void BrushCanvas::placeInBlock(const Dab& dab, const PixelRect& block, const PixelRect& area,
                               std::size_t blockIndex) {
    // A dab that is no stronger than what the whole block has already changes nothing.
    const auto changesNothing = [&](int strongest) {
        return dab.erase ? highest_[blockIndex] <= 255 - strongest
                         : lowest_[blockIndex] >= strongest;
    };
    if (changesNothing(dab.valueAt(0))) return;
    // The strongest value that it can have at any pixel centre of the block.
    const double nearX = std::clamp(dab.x, area.x + 0.5, area.right() - 0.5) - dab.x;
    const double nearY = std::clamp(dab.y, area.y + 0.5, area.top() - 0.5) - dab.y;
    const int strongest = dab.valueAt(std::hypot(nearX, nearY));
    if (strongest == 0 || changesNothing(strongest)) return;
    const double reach = dab.radius * dab.radius;
    for (int y = area.y; y < area.top(); ++y) {
        std::uint8_t* row = values_.data() + std::size_t(y) * width();
        const double dy = y + 0.5 - dab.y;
        for (int x = area.x; x < area.right(); ++x) {
            const double dx = x + 0.5 - dab.x, square = dx * dx + dy * dy;
            if (square >= reach) continue;
            const std::uint8_t value = dab.valueAt(std::sqrt(square));
            row[x] =
                dab.erase ? std::min(row[x], std::uint8_t(255 - value)) : std::max(row[x], value);
        }
    }
    std::uint8_t low = 255, high = 0;
    for (int y = block.y; y < block.top(); ++y) {
        const std::uint8_t* row = values_.data() + std::size_t(y) * width();
        for (int x = block.x; x < block.right(); ++x) {
            low = std::min(low, row[x]);
            high = std::max(high, row[x]);
        }
    }
    lowest_[blockIndex] = low;
    highest_[blockIndex] = high;
}

bool goesOn(const std::vector<BrushStroke>& painted, const std::vector<BrushStroke>& strokes) {
    if (painted.empty()) return true;
    if (strokes.size() < painted.size()) return false;
    const std::size_t last = painted.size() - 1;
    if (!std::equal(painted.begin(), painted.begin() + std::ptrdiff_t(last), strokes.begin()))
        return false;
    const BrushStroke& done = painted[last];
    const BrushStroke& grown = strokes[last];
    return done.radius == grown.radius && done.feather == grown.feather &&
           done.flow == grown.flow && done.erase == grown.erase &&
           done.points.size() <= grown.points.size() &&
           std::equal(done.points.begin(), done.points.end(), grown.points.begin());
}

PixelRect BrushPainter::goOnTo(const std::vector<BrushStroke>& strokes) {
    KELVARO_REQUIRE(canGoOnTo(strokes));
    PixelRect touched;
    for (std::size_t i = strokes_.empty() ? 0 : strokes_.size() - 1; i < strokes.size(); ++i) {
        const BrushStroke& stroke = strokes[i];
        if (i == strokes_.size()) {
            strokes_.push_back(stroke);
            touched = bounding(touched, extend(stroke, 0));
            continue;
        }
        std::vector<MaskPoint>& done = strokes_[i].points;
        touched = bounding(touched, extend(stroke, done.size()));
        done.insert(done.end(), stroke.points.begin() + std::ptrdiff_t(done.size()),
                    stroke.points.end());
    }
    return touched;
}

Point BrushPainter::onCanvas(MaskPoint point) const {
    const double longer = std::max(canvas_.size().width, canvas_.size().height);
    return {limited(point.x, -4, 5, 0) * longer, limited(point.y, -4, 5, 0) * longer};
}

BrushCanvas::Dab BrushPainter::dabOf(const BrushStroke& stroke) const {
    const double longer = std::max(canvas_.size().width, canvas_.size().height);
    BrushCanvas::Dab dab;
    dab.radius = std::max(limited(stroke.radius, 0, 1, 0) * longer, 0.5);
    const double inner = dab.radius * (1 - limited(stroke.feather, 0, 100, 50) / 100);
    dab.band = std::max(dab.radius - inner, 1.0);
    dab.peak = 255 * limited(stroke.flow, 0, 100, 100) / 100;
    dab.erase = stroke.erase;
    return dab;
}

// Continues a stroke of which `pointsDone` points have been walked.
PixelRect BrushPainter::extend(const BrushStroke& stroke, std::size_t pointsDone) {
    if (stroke.points.empty()) return {};
    BrushCanvas::Dab dab = dabOf(stroke);
    const double spacing = std::max(dab.radius * 0.25, 0.5);
    PixelRect touched;
    if (pointsDone == 0) {
        const Point first = onCanvas(stroke.points.front());
        dab.x = first.x;
        dab.y = first.y;
        touched = canvas_.place(dab);
        untilNextDab_ = spacing;
        pointsDone = 1;
    }
    for (std::size_t i = pointsDone; i < stroke.points.size(); ++i)
        touched = bounding(touched, dabsAlong(dab, spacing, onCanvas(stroke.points[i - 1]),
                                              onCanvas(stroke.points[i])));
    return touched;
}

// Places the dabs of one segment; what is left of the spacing at its end carries into the next.
PixelRect BrushPainter::dabsAlong(BrushCanvas::Dab dab, double spacing, Point from, Point to) {
    const double length = std::hypot(to.x - from.x, to.y - from.y);
    if (length < untilNextDab_ || length == 0) {
        untilNextDab_ -= length;
        return {};
    }
    const double start = untilNextDab_;
    const double dabs = std::floor((length - start) / spacing) + 1;
    untilNextDab_ = std::max(start + dabs * spacing - length, 0.0);

    // Only dabs that can reach the canvas are placed: a segment may run far outside.
    const double directionX = (to.x - from.x) / length, directionY = (to.y - from.y) / length;
    double first = 0, last = length;
    clipAxis(from.x, directionX, -dab.radius, canvas_.size().width + dab.radius, first, last);
    clipAxis(from.y, directionY, -dab.radius, canvas_.size().height + dab.radius, first, last);
    PixelRect touched;
    if (last < first) return touched;
    double k = std::max(std::ceil((first - start) / spacing) - 1, 0.0);
    for (; k < dabs; ++k) {
        const double along = start + k * spacing;
        if (along > last + spacing) break;
        dab.x = from.x + directionX * along;
        dab.y = from.y + directionY * along;
        touched = bounding(touched, canvas_.place(dab));
    }
    return touched;
}

} // namespace kelvaro
