#include "develop/PhotoAnalysis.h"

#include <utility>

namespace kelvaro {

namespace {

void fillGaps(ToneMeasurement& known, ToneMeasurement other) {
    if (!known.small) known.small = std::move(other.small);
    if (!known.sceneSmall) known.sceneSmall = std::move(other.sceneSmall);
    if (!known.guide) known.guide = std::move(other.guide);
    if (!known.sceneGuide) known.sceneGuide = std::move(other.sceneGuide);
    if (!known.levels) known.levels = other.levels;
    if (!known.hazeSought) {
        known.hazeSought = other.hazeSought;
        known.haze = std::move(other.haze);
    }
}

// Measures outside the lock, from and into the kept measurement.
Result<ToneMeasurement> partsOf(Locked<ToneMeasurement>& kept, const Image& photo,
                                PhotoDomain domain, ToneNeeds needs, Renderer& renderer,
                                const Cancellation* cancellation) {
    auto found = measured(kept.copy(), photo, domain, needs, renderer, cancellation);
    if (found) kept.with([&](ToneMeasurement& known) { fillGaps(known, *found); });
    return found;
}

} // namespace

RawToneAnalysis::RawToneAnalysis(std::filesystem::path url, std::string identity,
                                 ToneMeasurement known)
    : url_(std::move(url)), identity_(std::move(identity)), known_(std::move(known)) {}

Result<ToneMeasurement> RawToneAnalysis::parts(const Image& linearCapture, ToneNeeds needs,
                                               Renderer& renderer,
                                               const Cancellation* cancellation) {
    return partsOf(known_, linearCapture, PhotoDomain::sceneLinear, needs, renderer, cancellation);
}

void RawToneAnalysis::adopt(ToneMeasurement measurement) {
    known_.with([&](ToneMeasurement& known) { fillGaps(known, std::move(measurement)); });
}

PhotoAnalysis::PhotoAnalysis(std::filesystem::path url, bool isRaw, std::string identity,
                             ToneMeasurement known)
    : url_(std::move(url)),
      isRaw_(isRaw),
      identity_(std::move(identity)),
      known_(std::move(known)) {}

Result<ToneMeasurement> PhotoAnalysis::parts(const Image& bitmap, ToneNeeds needs,
                                             Renderer& renderer, const Cancellation* cancellation) {
    return partsOf(known_, bitmap, PhotoDomain::displayLinear, needs, renderer, cancellation);
}

void PhotoAnalysis::adopt(ToneMeasurement measurement) {
    known_.with([&](ToneMeasurement& known) { fillGaps(known, std::move(measurement)); });
}

Image PhotoAnalysis::developedGuide(const RawParams& params) const {
    const DevelopedGuide last = developed_.copy();
    return last.params == params ? last.guide : Image{};
}

void PhotoAnalysis::keepDevelopedGuide(const RawParams& params, Image guide) {
    developed_.with([&](DevelopedGuide& last) { last = {params, std::move(guide)}; });
}

} // namespace kelvaro
