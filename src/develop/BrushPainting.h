// Brush strokes as pixels: an 8-bit grey canvas on which round dabs are placed evenly along each
// stroke's path. Dabs never add up: paint keeps the larger value, erasing the smaller. Canvas
// pixels have their centres at half-integers, row 0 at the bottom. A plain value, not thread-safe.
#pragma once

#include "base/Geometry.h"
#include "recipe/LocalMask.h"

#include <cstdint>
#include <span>
#include <vector>

namespace kelvaro {

inline constexpr int kBrushRasterLongerSide = 2048;

// The size of the canvas that covers a photo: 2048 on the longer side, each side at least 2.
PixelSize brushRasterSize(PixelSize photo);

class BrushCanvas {
public:
    explicit BrushCanvas(PixelSize size);

    PixelSize size() const { return size_; }
    // Row `y` counted from the bottom.
    const std::uint8_t* row(int y) const { return values_.data() + std::size_t(y) * width(); }
    std::size_t bytes() const { return values_.size() + 2 * lowest_.size(); }

    // The dab's value at distance d is `peak` up to `radius` − `band`, then falls as 1 − smoothstep
    // over the band to 0 at `radius`. All in canvas pixels; a band wider than the radius is cut at
    // the centre, which itself gets the peak.
    struct Dab {
        double radius = 0, band = 1;
        double peak = 255; // 255 × flow
        bool erase = false;

        std::uint8_t valueAt(double distance) const;
    };
    // Places dabs of one kind. Returns the rectangle of pixels that they may have changed, y
    // counted from the bottom.
    PixelRect place(const Dab& dab, std::span<const Point> centres);

    // From here on dabs go underneath those that are placed already, on an empty canvas. A stroke
    // that later ones hide costs next to nothing then.
    void beginBehind();
    void endBehind();

private:
    class DabValues;

    std::size_t width() const { return std::size_t(size_.width); }
    bool isBehind() const { return !ceiling_.empty(); }
    void placeInBlock(const DabValues& dab, std::span<const Point> centres, const PixelRect& block,
                      std::size_t index);
    void applyRow(const std::uint8_t* dabs, bool erase, std::size_t first, std::size_t count);
    void measureBlock(const PixelRect& block, std::size_t index);

    PixelSize size_;
    std::vector<std::uint8_t> values_;
    // While dabs go underneath: what is there already lets a pixel become values_ at least and
    // ceiling_ at most.
    std::vector<std::uint8_t> ceiling_;
    // The least and largest value that each square block can have, so that dabs skip what they
    // cannot change.
    int blocksAcross_ = 0;
    std::vector<std::uint8_t> lowest_, highest_;
    std::vector<std::uint8_t> settled_; // 1 where nothing underneath can show any more
};

// Whether `strokes` begin with all of `painted`, the last of which may have grown by points.
bool goesOn(const std::vector<BrushStroke>& painted, const std::vector<BrushStroke>& strokes);

// Paints the strokes of one component, and can go on where it stopped when the last stroke grew or
// strokes were added.
class BrushPainter {
public:
    explicit BrushPainter(PixelSize size) : canvas_(size) {}

    const BrushCanvas& canvas() const { return canvas_; }
    const std::vector<BrushStroke>& strokes() const { return strokes_; }
    // Whether `strokes` begin with everything that is painted already.
    bool canGoOnTo(const std::vector<BrushStroke>& strokes) const {
        return goesOn(strokes_, strokes);
    }
    // Paints what is new; canGoOnTo(strokes) must hold. Returns the rectangle that may have
    // changed.
    PixelRect goOnTo(const std::vector<BrushStroke>& strokes);

private:
    PixelRect paintAll(const std::vector<BrushStroke>& strokes);
    PixelRect extend(const BrushStroke& stroke, std::size_t pointsDone);
    void findDabsAlong(double radius, double spacing, Point from, Point to,
                       std::vector<Point>& centres);
    Point onCanvas(MaskPoint point) const;
    BrushCanvas::Dab dabOf(const BrushStroke& stroke) const;

    BrushCanvas canvas_;
    std::vector<BrushStroke> strokes_; // painted
    double untilNextDab_ = 0;          // from the end of the last stroke's path, in canvas pixels
};

} // namespace kelvaro
