#include "editor/CropRules.h"

#include "develop/CropGeometry.h"

#include <cmath>

namespace kelvaro {
namespace {

double storedFraction(double fraction) {
    if (!(std::abs(fraction) >= fractionSnap)) return 0; // not a number either
    return std::clamp(fraction, 0.0, largestFraction);
}

// The largest share in 0 … 1 that `fits` accepts, when 0 is accepted and 1 is not; to 2^-20.
template<class Fits>
double largestShare(Fits fits) {
    double low = 0, high = 1;
    for (int step = 0; step < fitBisections; ++step) {
        const double middle = (low + high) / 2;
        (fits(middle) ? low : high) = middle;
    }
    return low;
}

// Crops hold at least this share of each side, whatever their fractions say.
constexpr double leastKept = 0.02;

bool isStorable(const Box& box, PixelSize photo) {
    constexpr double rounding = 1e-9;
    return box.width >= (leastKept - rounding) * photo.width &&
           box.height >= (leastKept - rounding) * photo.height;
}

Box scaledAboutCentre(const Box& box, Point centre, double scale) {
    return Box::around(centre, box.width * scale, box.height * scale);
}

} // namespace

double turnOf(const Adjustments& edit) {
    return CropGeometry::of(edit, {1, 1}).turnRadians;
}

Box cropBox(const Adjustments& edit, PixelSize photo) {
    const CropGeometry crop = CropGeometry::of(edit, photo);
    return {crop.x, crop.y, crop.width, crop.height};
}

Adjustments withCropBox(Adjustments edit, const Box& box, PixelSize photo) {
    const double width = std::max(photo.width, 1), height = std::max(photo.height, 1);
    edit.cropLeft = storedFraction(box.minX() / width);
    edit.cropRight = storedFraction(1 - box.maxX() / width);
    edit.cropTop = storedFraction(1 - box.maxY() / height);
    edit.cropBottom = storedFraction(box.minY() / height);
    return edit;
}

bool fitsTurned(const Box& box, PixelSize photo, double turn) {
    const double w = photo.width, h = photo.height;
    if (!(box.width > 0) || !(box.height > 0)) return false;
    if (!(box.minX() >= -fitTolerancePx) || !(box.maxX() <= w + fitTolerancePx) ||
        !(box.minY() >= -fitTolerancePx) || !(box.maxY() <= h + fitTolerancePx)) {
        return false;
    }
    if (turn == 0) return true;
    const double c = std::cos(turn), s = std::sin(turn);
    for (const double x : {box.minX(), box.maxX()}) {
        for (const double y : {box.minY(), box.maxY()}) {
            const double dx = x - w / 2, dy = y - h / 2;
            if (!(std::abs(c * dx + s * dy) <= w / 2 + fitTolerancePx)) return false;
            if (!(std::abs(c * dy - s * dx) <= h / 2 + fitTolerancePx)) return false;
        }
    }
    return true;
}

Box fittedTowards(const Box& start, const Box& requested, PixelSize photo, double turn) {
    const auto accepted = [&](const Box& box) {
        return fitsTurned(box, photo, turn) && isStorable(box, photo);
    };
    if (accepted(requested)) return requested;
    const double share =
        largestShare([&](double t) { return accepted(interpolated(start, requested, t)); });
    return interpolated(start, requested, share);
}

Box shrunkToFit(const Box& box, PixelSize photo, double turn) {
    if (fitsTurned(box, photo, turn)) return box;
    const Point middle{photo.width / 2.0, photo.height / 2.0};
    const auto shrunkAt = [&](Point centre) {
        const auto at = [&](double scale) { return scaledAboutCentre(box, centre, scale); };
        return at(largestShare([&](double t) { return fitsTurned(at(t), photo, turn); }));
    };
    const double least = leastCropShare * std::max(photo.width, photo.height);
    const auto isEnough = [&](const Box& candidate) {
        return std::max(candidate.width, candidate.height) >= least && isStorable(candidate, photo);
    };
    const Box shrunk = shrunkAt(box.centre());
    if (isEnough(shrunk)) return shrunk;
    // The same shape in the middle of the photo fits best; stay as near to where it was as can be.
    const Box inside = shrunkAt(middle);
    if (isEnough(inside)) return fittedTowards(inside, box, photo, turn);
    // Too thin for that on a photo that is itself a strip: the shape has to give.
    const double width = leastKept * photo.width, height = leastKept * photo.height;
    return fittedTowards(
        Box::around(middle, width, height),
        Box::around(box.centre(), std::max(box.width, width), std::max(box.height, height)), photo,
        turn);
}

Box largestBox(double ratio, Point centre, PixelSize photo, double turn) {
    const double w = photo.width, h = photo.height;
    const bool tall = w / ratio > h;
    const double width = tall ? h * ratio : w, height = tall ? h : w / ratio;
    const double x = std::min(w - width, std::max(centre.x - width / 2, 0.0));
    const double y = std::min(h - height, std::max(centre.y - height / 2, 0.0));
    return shrunkToFit({x, y, width, height}, photo, turn);
}

} // namespace kelvaro
