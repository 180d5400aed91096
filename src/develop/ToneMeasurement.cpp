#include "develop/ToneMeasurement.h"

#include "develop/Guides.h"
#include "develop/MaskShapes.h"
#include "develop/SceneTone.h"
#include "develop/kernels/Kernels.h"

#include <algorithm>
#include <utility>

namespace kelvaro {

namespace {

// One measurement in progress. Each step leaves alone what is there already.
class Measuring {
public:
    Measuring(ToneMeasurement& found, const Image& photo, PhotoDomain domain, Renderer& renderer,
              const Cancellation* cancellation)
        : found_(found),
          photo_(photo),
          domain_(domain),
          renderer_(renderer),
          cancellation_(cancellation) {}

    Result<void> run(ToneNeeds needs) {
        Result<void> done = bothReductions(needs);
        if (done && needs.small) done = small();
        if (done && needs.guide) done = guide();
        if (done && needs.sceneGuide) done = sceneGuide();
        if (done && needs.levels) done = levels();
        if (done && needs.haze) done = haze();
        return done;
    }

private:
    // Fills `kept` with what `make` returns unless it is filled.
    template<class Make>
    Result<void> once(Image& kept, Make make) {
        if (kept) return {};
        Result<Image> made = make();
        if (!made) return fail(std::move(made).error());
        kept = std::move(*made);
        return {};
    }

    // A bitmap is reduced as it is and in scene light. Where both are needed, one walk over the
    // photo makes them.
    Result<void> bothReductions(const ToneNeeds& needs) {
        const bool display = needs.small || needs.haze || (needs.guide && !found_.guide);
        const bool scene =
            (needs.sceneGuide && !found_.sceneGuide) || (needs.levels && !found_.levels);
        if (domain_ == PhotoDomain::sceneLinear || !display || !scene || found_.small ||
            found_.sceneSmall)
            return {};
        const Image reduced = reducedForAnalysis(photo_);
        auto drawn = renderer_.renderRasters({reduced, reducedForAnalysis(scenePhoto())},
                                             reduced.extent(), cancellation_);
        if (!drawn) return fail(std::move(drawn).error());
        found_.small = imageFrom(std::move(drawn->front()));
        found_.sceneSmall = imageFrom(std::move(drawn->back()));
        return {};
    }

    Image scenePhoto() const { return applyKernel(kernel::bitmapToScene(), {photo_}, {}); }

    Result<void> small() {
        return once(found_.small, [&] {
            return materialised(reducedForAnalysis(photo_), renderer_, cancellation_);
        });
    }

    Result<void> sceneSmall() {
        if (domain_ == PhotoDomain::sceneLinear) {
            auto done = small();
            if (done) found_.sceneSmall = found_.small;
            return done;
        }
        return once(found_.sceneSmall, [&] {
            return materialised(reducedForAnalysis(scenePhoto()), renderer_, cancellation_);
        });
    }

    Result<void> guide() {
        if (found_.guide) return {};
        if (auto done = small(); !done) return done;
        return once(found_.guide,
                    [&] { return toneGuide(found_.small, renderer_, cancellation_); });
    }

    Result<void> sceneGuide() {
        if (found_.sceneGuide) return {};
        if (auto done = sceneSmall(); !done) return done;
        return once(found_.sceneGuide, [&] {
            return kelvaro::sceneGuide(found_.sceneSmall, renderer_, cancellation_);
        });
    }

    Result<void> levels() {
        if (found_.levels) return {};
        if (auto done = sceneSmall(); !done) return done;
        auto pixels = drawn(found_.sceneSmall);
        if (!pixels) return fail(std::move(pixels).error());
        found_.levels = measuredLevels(std::as_const(*pixels).view());
        return {};
    }

    Result<void> haze() {
        if (found_.hazeSought) return {};
        if (auto done = small(); !done) return done;
        auto pixels = drawn(found_.small);
        if (!pixels) return fail(std::move(pixels).error());
        const ConstTileView view = std::as_const(*pixels).view();
        auto air = measuredAirlight(view);
        // The fit uses the airlight that the kernel will get.
        if (air && domain_ == PhotoDomain::displayLinear) air = normalisedAirlight(*air);
        if (air) found_.haze = HazeModel{*air, imageFrom(fittedHazeMap(view, *air))};
        found_.hazeSought = true;
        return {};
    }

    Result<Raster> drawn(const Image& image) {
        return renderer_.renderRaster(image, image.extent(), cancellation_);
    }

    ToneMeasurement& found_;
    const Image& photo_;
    PhotoDomain domain_;
    Renderer& renderer_;
    const Cancellation* cancellation_;
};

std::size_t bytesOf(const Image& image) {
    constexpr std::size_t kPixelBytes = 4 * sizeof(float);
    if (!image) return 0;
    return std::size_t(image.extent().width) * std::size_t(image.extent().height) * kPixelBytes;
}

} // namespace

ToneNeeds ToneNeeds::of(const Adjustments& edit) {
    ToneNeeds needs;
    needs.guide = edit.clarity != 0 || edit.brightness != 0 ||
                  std::any_of(edit.masks.begin(), edit.masks.end(), [](const LocalMask& mask) {
                      return mask.clarity != 0 && hasEffect(mask);
                  });
    needs.sceneGuide = movesRegions(edit);
    needs.levels = curvesTone(edit);
    needs.haze = edit.dehaze != 0;
    return needs;
}

ToneNeeds ToneNeeds::onCapture() const {
    ToneNeeds needs = *this;
    needs.small = guide;
    needs.guide = false;
    return needs;
}

bool ToneMeasurement::covers(const ToneNeeds& needs) const {
    return (small || !needs.small) && (guide || !needs.guide) &&
           (sceneGuide || !needs.sceneGuide) && (levels || !needs.levels) &&
           (hazeSought || !needs.haze);
}

std::size_t ToneMeasurement::bytes() const {
    const std::size_t scene = sceneSmall == small ? 0 : bytesOf(sceneSmall);
    return bytesOf(small) + scene + bytesOf(guide) + bytesOf(sceneGuide) +
           (haze ? bytesOf(haze->hazeMap) : 0);
}

Result<ToneMeasurement> measured(ToneMeasurement known, const Image& photo, PhotoDomain domain,
                                 ToneNeeds needs, Renderer& renderer,
                                 const Cancellation* cancellation) {
    if (!photo || photo.extent().isEmpty()) return known;
    auto done = Measuring(known, photo, domain, renderer, cancellation).run(needs);
    if (!done) return fail(std::move(done).error());
    return known;
}

ToneMaps toneMapsOf(const ToneMeasurement& measurement, const Adjustments& edit,
                    double shiftStops) {
    ToneMaps maps;
    maps.guide = measurement.guide;
    maps.sceneGuide = measurement.sceneGuide;
    if (measurement.haze) {
        maps.haze = measurement.haze->hazeMap;
        maps.airlight = measurement.haze->airlight;
    }
    if (measurement.levels)
        maps.endpoints = toneEndpoints(*measurement.levels, shiftStops, edit.shadows / 100,
                                       edit.highlights / 100);
    return maps;
}

} // namespace kelvaro
