#include "develop/ToneAnalysis.h"

#include "develop/Guides.h"
#include "develop/stages/Stages.h"

#include <utility>

namespace kelvaro {

namespace {

// The airlight as the run's dehaze stage meets it: through the same exposure and white balance.
Result<std::array<double, 3>> airlightOfRun(const std::array<double, 3>& measured,
                                            const Adjustments& edit, WhitePoint asShot,
                                            Renderer& renderer, const Cancellation* cancellation) {
    const Image colour =
        constantColour({float(measured[0]), float(measured[1]), float(measured[2]), 1});
    const Image lit = whiteBalanceStage(exposureStage(colour, edit), edit, asShot);
    const auto drawn = renderer.renderRaster(lit, {0, 0, 1, 1}, cancellation);
    if (!drawn) return fail(drawn.error());
    return std::array{double(drawn->row(0, 0)[0]), double(drawn->row(1, 0)[0]),
                      double(drawn->row(2, 0)[0])};
}

Result<Image> developedGuide(const ImageSource& source, const Adjustments& edit, const Image& small,
                             const ToneMaps& maps, Renderer& renderer,
                             const Cancellation* cancellation) {
    const RawParams params(edit);
    if (Image kept = source.analysis->developedGuide(params)) return kept;
    const Image developed = Pipeline::rawDeveloped(small, {}, source.asShot(), edit, maps);
    auto picture = materialised(developed, renderer, cancellation);
    if (!picture) return picture;
    auto guide = toneGuide(*picture, renderer, cancellation);
    if (guide) source.analysis->keepDevelopedGuide(params, *guide);
    return guide;
}

Result<ToneMaps> rawToneMaps(const ImageSource& source, const Adjustments& edit, ToneNeeds needs,
                             Renderer& renderer, const Cancellation* cancellation) {
    const bool guided = needs.guide;
    needs = needs.onCapture();
    const Image& looked = source.measured ? source.measured : source.linearCapture;
    auto parts = source.rawToneAnalysis->parts(looked, needs, renderer, cancellation);
    if (!parts) return fail(parts.error());
    ToneMaps maps = toneMapsOf(*parts, edit, analysisShift(edit));
    if (maps.haze && needs.haze) {
        auto air = airlightOfRun(maps.airlight, edit, source.asShot(), renderer, cancellation);
        if (!air) return fail(air.error());
        maps.airlight = *air;
    }
    if (guided && parts->small) {
        auto guide = developedGuide(source, edit, parts->small, maps, renderer, cancellation);
        if (!guide) return fail(guide.error());
        maps.guide = *guide;
    }
    return maps;
}

} // namespace

Result<ToneMaps> toneMaps(const ImageSource& source, const Adjustments& edit, Renderer& renderer,
                          const Cancellation* cancellation) {
    return toneMaps(source, edit, ToneNeeds::of(edit), renderer, cancellation);
}

Result<ToneMaps> toneMaps(const ImageSource& source, const Adjustments& edit, ToneNeeds needs,
                          Renderer& renderer, const Cancellation* cancellation) {
    if (source.isRaw()) return rawToneMaps(source, edit, needs, renderer, cancellation);
    auto parts = source.analysis->parts(source.bitmap, needs, renderer, cancellation);
    if (!parts) return fail(parts.error());
    return toneMapsOf(*parts, edit, analysisShift(edit));
}

Result<Image> developedPhoto(const ImageSource& source, const Adjustments& edit, double scale,
                             Renderer& renderer, BrushRaster& brushes,
                             const Cancellation* cancellation, PhaseTimes* times) {
    auto maps = [&] {
        const TimedPhase analysis(times, "analysis");
        return toneMaps(source, edit, renderer, cancellation);
    }();
    if (!maps) return fail(std::move(maps).error());
    return Pipeline(renderer, brushes).developed(source, edit, &*maps, scale);
}

} // namespace kelvaro
