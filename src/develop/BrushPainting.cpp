#include "develop/BrushPainting.h"

#include "base/Require.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {

namespace {

constexpr int kBlock = 32;
constexpr std::size_t kTogether = 32;      // dabs that are placed at once
constexpr std::size_t kMostWaiting = 4096; // dabs that a stroke collects before they are placed

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
    settled_.resize(lowest_.size());
}

std::uint8_t BrushCanvas::Dab::valueAt(double distance) const {
    if (distance >= radius) return 0;
    if (distance <= std::max(radius - band, 0.0)) return std::uint8_t(peak + 0.5);
    const double t = (distance - (radius - band)) / band;
    return std::uint8_t((1 - t * t * (3 - 2 * t)) * peak + 0.5);
}

// The values of a dab by the square of the distance. Between most neighbouring squares of a table
// the value is the same; where it is not, it is worked out.
class BrushCanvas::DabValues {
public:
    explicit DabValues(const Dab& dab) : dab_(dab), reach_(dab.radius * dab.radius) {
        if (dab.radius < kTabulatedRadius) return;
        table_.resize(kEntries);
        std::uint8_t here = dab.valueAt(0);
        for (std::size_t i = 0; i < kEntries; ++i) {
            const std::uint8_t next = dab.valueAt(std::sqrt(double(i + 1) * reach_ / kEntries));
            table_[i] = std::uint16_t(here == next ? here : kVaries);
            here = next;
        }
    }
    bool erase() const { return dab_.erase; }
    double reach() const { return reach_; } // squared
    std::uint8_t atSquare(double square) const {
        if (square >= reach_) return 0;
        if (!table_.empty()) {
            const auto entry = std::min(std::size_t(square * (kEntries / reach_)), kEntries - 1);
            if (table_[entry] != kVaries) return std::uint8_t(table_[entry]);
        }
        return dab_.valueAt(std::sqrt(square));
    }

private:
    static constexpr double kTabulatedRadius = 48; // a table pays where it is asked more often
    static constexpr std::size_t kEntries = 2048;
    static constexpr std::uint16_t kVaries = 256;

    const Dab& dab_;
    double reach_;
    std::vector<std::uint16_t> table_;
};

PixelRect BrushCanvas::place(const Dab& dab, std::span<const Point> centres) {
    const DabValues values(dab);
    PixelRect all;
    for (; !centres.empty(); centres = centres.subspan(std::min(kTogether, centres.size()))) {
        const auto together = centres.first(std::min(kTogether, centres.size()));
        PixelRect touched;
        for (const Point& centre : together) {
            const int left = int(std::max(std::floor(centre.x - dab.radius), 0.0));
            const int bottom = int(std::max(std::floor(centre.y - dab.radius), 0.0));
            const int right = int(std::min(std::ceil(centre.x + dab.radius), double(size_.width)));
            const int top = int(std::min(std::ceil(centre.y + dab.radius), double(size_.height)));
            if (right > left && top > bottom)
                touched = bounding(touched, {left, bottom, right - left, top - bottom});
        }
        for (int by = touched.y / kBlock; by * kBlock < touched.top(); ++by)
            for (int bx = touched.x / kBlock; bx * kBlock < touched.right(); ++bx)
                placeInBlock(values, together,
                             intersection({bx * kBlock, by * kBlock, kBlock, kBlock},
                                          {0, 0, size_.width, size_.height}),
                             std::size_t(by) * std::size_t(blocksAcross_) + std::size_t(bx));
        all = bounding(all, touched);
    }
    return all;
}

// A pixel gets what the nearest of the dabs gives it. Dabs that are farther from the whole block
// than another one is from its farthest pixel play no part.
void BrushCanvas::placeInBlock(const DabValues& dab, std::span<const Point> centres,
                               const PixelRect& block, std::size_t index) {
    if (settled_[index]) return;
    double nearest[kTogether], within = dab.reach();
    const double left = block.x + 0.5, right = block.right() - 0.5;
    const double bottom = block.y + 0.5, top = block.top() - 0.5;
    for (std::size_t i = 0; i < centres.size(); ++i) {
        const Point& c = centres[i];
        const double nearX = std::clamp(c.x, left, right) - c.x;
        const double nearY = std::clamp(c.y, bottom, top) - c.y;
        const double farX = std::max(c.x - left, right - c.x);
        const double farY = std::max(c.y - bottom, top - c.y);
        nearest[i] = nearX * nearX + nearY * nearY;
        within = std::min(within, farX * farX + farY * farY);
    }
    Point kept[kTogether];
    std::size_t count = 0;
    double closest = dab.reach();
    for (std::size_t i = 0; i < centres.size(); ++i) {
        if (nearest[i] >= dab.reach() || nearest[i] > within) continue;
        closest = std::min(closest, nearest[i]);
        kept[count++] = centres[i];
    }
    if (count == 0) return;
    const int strongest = dab.atSquare(closest);
    if (dab.erase() ? highest_[index] <= 255 - strongest : lowest_[index] >= strongest) return;

    const auto width = std::size_t(block.width);
    std::uint8_t dabs[kBlock];
    const bool even = dab.atSquare(within) == strongest; // the same value everywhere
    if (even) std::fill_n(dabs, width, std::uint8_t(strongest));
    for (int y = block.y; y < block.top(); ++y) {
        double squares[kBlock];
        if (!even) {
            std::fill_n(squares, width, dab.reach());
            for (std::size_t k = 0; k < count; ++k) {
                const double dy = y + 0.5 - kept[k].y;
                for (std::size_t x = 0; x < width; ++x) {
                    const double dx = block.x + int(x) + 0.5 - kept[k].x;
                    const double square = dx * dx + dy * dy;
                    squares[x] = square < squares[x] ? square : squares[x];
                }
            }
            for (std::size_t x = 0; x < width; ++x)
                dabs[x] = dab.atSquare(squares[x]);
        }
        applyRow(dabs, dab.erase(), std::size_t(y) * this->width() + std::size_t(block.x), width);
    }
    measureBlock(block, index);
}

void BrushCanvas::applyRow(const std::uint8_t* dabs, bool erase, std::size_t first,
                           std::size_t count) {
    std::uint8_t* values = values_.data() + first;
    if (!isBehind()) {
        for (std::size_t x = 0; x < count; ++x)
            values[x] = erase ? std::min(values[x], std::uint8_t(255 - dabs[x]))
                              : std::max(values[x], dabs[x]);
        return;
    }
    std::uint8_t* ceiling = ceiling_.data() + first;
    for (std::size_t x = 0; x < count; ++x)
        if (erase)
            ceiling[x] = std::max(values[x], std::min(ceiling[x], std::uint8_t(255 - dabs[x])));
        else
            values[x] = std::min(ceiling[x], std::max(values[x], dabs[x]));
}

void BrushCanvas::measureBlock(const PixelRect& block, std::size_t index) {
    const std::vector<std::uint8_t>& tops = isBehind() ? ceiling_ : values_;
    std::uint8_t low = 255, high = 0;
    bool settled = isBehind();
    for (int y = block.y; y < block.top(); ++y) {
        const std::size_t first = std::size_t(y) * width() + std::size_t(block.x);
        const auto count = std::size_t(block.width);
        for (std::size_t x = 0; x < count; ++x) {
            low = std::min(low, values_[first + x]);
            high = std::max(high, tops[first + x]);
        }
        settled = settled && std::equal(values_.begin() + std::ptrdiff_t(first),
                                        values_.begin() + std::ptrdiff_t(first + count),
                                        tops.begin() + std::ptrdiff_t(first));
    }
    lowest_[index] = low;
    highest_[index] = high;
    settled_[index] = settled ? 1 : 0;
}

void BrushCanvas::beginBehind() {
    ceiling_.assign(values_.size(), 255);
    std::fill(highest_.begin(), highest_.end(), std::uint8_t(255));
}

void BrushCanvas::endBehind() {
    ceiling_ = {};
    for (int y = 0; y < size_.height; y += kBlock)
        for (int x = 0; x < size_.width; x += kBlock)
            measureBlock(intersection({x, y, kBlock, kBlock}, {0, 0, size_.width, size_.height}),
                         std::size_t(y / kBlock) * std::size_t(blocksAcross_) +
                             std::size_t(x / kBlock));
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
    if (strokes_.empty()) return paintAll(strokes);
    PixelRect touched;
    for (std::size_t i = strokes_.size() - 1; i < strokes.size(); ++i) {
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

// The last stroke first, each other one underneath.
PixelRect BrushPainter::paintAll(const std::vector<BrushStroke>& strokes) {
    if (strokes.empty()) return {};
    canvas_.beginBehind();
    PixelRect touched = extend(strokes.back(), 0);
    const double untilNextDab = untilNextDab_;
    for (std::size_t i = strokes.size() - 1; i-- > 0;)
        touched = bounding(touched, extend(strokes[i], 0));
    canvas_.endBehind();
    untilNextDab_ = untilNextDab;
    strokes_ = strokes;
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
    const BrushCanvas::Dab dab = dabOf(stroke);
    const double spacing = std::max(dab.radius * 0.25, 0.5);
    std::vector<Point> centres;
    if (pointsDone == 0) {
        centres.push_back(onCanvas(stroke.points.front()));
        untilNextDab_ = spacing;
        pointsDone = 1;
    }
    PixelRect touched;
    for (std::size_t i = pointsDone; i < stroke.points.size(); ++i) {
        findDabsAlong(dab.radius, spacing, onCanvas(stroke.points[i - 1]),
                      onCanvas(stroke.points[i]), centres);
        if (centres.size() < kMostWaiting) continue;
        touched = bounding(touched, canvas_.place(dab, centres));
        centres.clear();
    }
    return bounding(touched, canvas_.place(dab, centres));
}

// Adds the dabs of one segment; what is left of the spacing at its end carries into the next.
void BrushPainter::findDabsAlong(double radius, double spacing, Point from, Point to,
                                 std::vector<Point>& centres) {
    const double length = std::hypot(to.x - from.x, to.y - from.y);
    if (length < untilNextDab_ || length == 0) {
        untilNextDab_ -= length;
        return;
    }
    const double start = untilNextDab_;
    const double dabs = std::floor((length - start) / spacing) + 1;
    untilNextDab_ = std::max(start + dabs * spacing - length, 0.0);

    // Only dabs that can reach the canvas are placed: a segment may run far outside.
    const double directionX = (to.x - from.x) / length, directionY = (to.y - from.y) / length;
    double first = 0, last = length;
    clipAxis(from.x, directionX, -radius, canvas_.size().width + radius, first, last);
    clipAxis(from.y, directionY, -radius, canvas_.size().height + radius, first, last);
    if (last < first) return;
    double k = std::max(std::ceil((first - start) / spacing) - 1, 0.0);
    for (; k < dabs; ++k) {
        const double along = start + k * spacing;
        if (along > last + spacing) break;
        centres.push_back({from.x + directionX * along, from.y + directionY * along});
    }
}

} // namespace kelvaro
