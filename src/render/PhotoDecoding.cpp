// How a session comes by its photo's pixels: opening, decoding as far as a view needs, and the
// camera's own picture.
#include "develop/CropGeometry.h"
#include "develop/Guides.h"
#include "develop/PreparedControls.h"
#include "develop/ToneAnalysis.h"
#include "render/PhotoSession.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kelvaro {

namespace {

constexpr std::int64_t kUnknownPixels = 24'000'000;
constexpr int kSmallestPreviewShare = 8;    // of the view's longer side
constexpr double kLargestSketch = 1.0 / 4;  // of the photo's resolution
constexpr double kLargestGlimpse = 1.0 / 3; // of the photo's pixels

Failure cancelledFailure() {
    return {FailureKind::cancelled, "Opening the photo was cancelled."};
}

PhotoFacts factsOf(const RawProperties& properties) {
    PhotoFacts facts;
    facts.size = properties.size;
    facts.isRaw = true;
    facts.asShotTemperature = properties.asShotTemperature;
    facts.asShotTint = properties.asShotTint;
    facts.supportsSharpness = properties.supportsSharpness;
    facts.defaultSharpness = properties.defaultSharpness;
    return facts;
}

// The camera's picture cut to the sides' ratio of the photo: it may hold more or less of the
// sensor's edge, or lie between black bars, but shows the same middle.
Image cutToRatio(const Image& picture, PixelSize photo) {
    const PixelRect& all = picture.extent();
    const double ratio = double(photo.width) / photo.height;
    const int width = std::clamp(int(std::lround(all.height * ratio)), 1, all.width);
    const int height = std::clamp(int(std::lround(all.width / ratio)), 1, all.height);
    if (width == all.width && height == all.height) return picture;
    const int x = (all.width - width) / 2, y = (all.height - height) / 2;
    return translated(cropped(picture, {x, y, width, height}), -x, -y);
}

// Pixels that the longer side of the whole photo needs, told without knowing its size.
int sideFor(const ViewRequest& request) {
    if (!request.fit) return 0;
    const double kept = request.whole
                            ? 1
                            : std::min(1 - request.edit.cropLeft - request.edit.cropRight,
                                       1 - request.edit.cropTop - request.edit.cropBottom);
    const double side = std::max(request.fit->width, request.fit->height) / std::max(kept, 0.02);
    return int(std::min(side, 1e6)) + 1;
}

} // namespace

std::int64_t PhotoSession::estimateBytes() const {
    const auto facts = state_.with([](State& state) { return state.facts; });
    const std::int64_t pixels =
        facts ? std::int64_t(facts->size.width) * facts->size.height : kUnknownPixels;
    return renderEstimateBytes(pixels);
}

Result<std::shared_ptr<RawFile>> PhotoSession::openedRaw() {
    if (auto file = state_.with([](State& state) { return state.rawFile; })) return file;
    auto opened = parts_.raw.open(photo_);
    if (!opened) return fail(std::move(opened).error());
    std::shared_ptr<RawFile> file = std::move(*opened);
    return state_.with([&](State& state) {
        // Somebody else may have opened it meanwhile; one is enough.
        if (!state.rawFile) state.rawFile = file;
        if (!state.facts) state.facts = factsOf(file->properties());
        return state.rawFile;
    });
}

Result<PhotoSession::DecodePointer> PhotoSession::decodeFor(const ViewRequest& request, Pass pass,
                                                            const Cancellation* cancellation) {
    if (isRaw_) { // its size tells how much is needed
        auto known = facts(cancellation);
        if (!known) return fail(std::move(known).error());
    }
    const double sharpness = request.shownEdit().sharpness;
    const auto find = [&]() -> std::optional<Result<DecodePointer>> {
        const auto [decode, known] = state_.with(
            [](State& state) { return std::pair(state.decode, state.facts.has_value()); });
        if (known && decode &&
            decode->serves(scaleNeeded(request, pass), sharpness, pass.isSettled))
            return decode;
        return std::nullopt;
    };
    const auto make = [&] { return decode(request, pass, cancellation); };
    auto found = inFlight_.run("decode", cancellation, find, make);
    return found ? std::move(*found) : fail(cancelledFailure());
}

// With "decode" claimed.
Result<PhotoSession::DecodePointer> PhotoSession::decode(const ViewRequest& request, Pass pass,
                                                         const Cancellation* cancellation) {
    const double begin = engine_.clock().monotonicSeconds();
    const double scale = scaleNeeded(request, pass);
    if (isRaw_) {
        auto file = openedRaw();
        if (!file) return fail(std::move(file).error());
        const RawProperties& properties = (*file)->properties();
        const double sharpness = request.shownEdit().sharpness;
        const double opened = engine_.clock().monotonicSeconds();
        const auto settings = rawSettings(request.shownEdit(), properties, scale, pass.isSettled);
        auto pixels = (*file)->develop(settings, cancellation);
        if (!pixels) return fail(std::move(pixels).error());
        const double now = engine_.clock().monotonicSeconds();
        engine_.perf().rawStage((now - opened) * 1000, (now - begin) * 1000);
        return keepDecode(rawSource(photo_, identity_, imageFrom(std::move(*pixels)), properties),
                          sharpness,
                          settings.reduction == 1 ? 1
                          : settings.fine         ? PreparedControls::settledScale
                                                  : 0);
    }
    DecodeLimits limits;
    const auto facts = state_.with([](State& state) { return state.facts; });
    // Reduced decodes mix encoded samples, which is quick, but darkens fine bright detail.
    if (!pass.isSettled)
        limits.enoughSide =
            facts ? int(std::ceil(std::max(facts->size.width, facts->size.height) * scale))
                  : sideFor(request);
    auto decoded = parts_.reader.decode(photo_, limits, cancellation);
    if (!decoded) return fail(std::move(decoded).error());
    const PixelSize full = decoded->fullSize;
    const Image bitmap =
        imageFrom(sourceFrom(std::move(decoded->pixels), std::move(decoded->colour)));
    return keepDecode(bitmapSource(photo_, identity_, bitmap, full), 0,
                      bitmap.extent().size() == full ? 1 : 0);
}

// Analyses stay those of the first decode, so that the look does not change with a better one.
Result<PhotoSession::DecodePointer> PhotoSession::keepDecode(ImageSource source, double sharpness,
                                                             double settledUpTo) {
    const auto before = state_.with([](State& state) { return state.analysed; });
    if (before) {
        source.analysis = before->analysis;
        source.rawToneAnalysis = before->rawToneAnalysis;
    } else {
        parts_.analyses.recall(source);
    }
    const auto decode =
        std::make_shared<const Decode>(Decode{std::move(source), sharpness, settledUpTo});
    state_.with([&](State& state) {
        if (!state.facts) state.facts.emplace().size = decode->source.extent.size();
        if (!before)
            state.analysed = Analyses{decode->source.analysis, decode->source.rawToneAnalysis};
        state.decode = decode;
        state.layers.clear();
        state.reduced.reset();
        state.settling.reset();
        ++state.counts.decodes;
    });
    return decode;
}

Result<std::optional<RenderedView>> PhotoSession::preview(const ViewRequest& request,
                                                          const Cancellation* cancellation) const {
    using None = std::optional<RenderedView>;
    if (!isRaw_) return None();
    // A file of its own: the session's may be busy decoding.
    auto file = parts_.raw.open(photo_);
    if (!file) return fail(std::move(file).error());
    const PixelSize photo = (*file)->properties().size;
    const auto geometry = ViewGeometry::of(request, photo);
    const int side = int(std::ceil(std::max(photo.width, photo.height) * geometry.neededScale()));
    auto embedded = (*file)->preview(side);
    if (!embedded) return fail(std::move(embedded).error());
    if (!*embedded) return None();
    DecodeLimits limits;
    limits.enoughSide = side;
    auto decoded =
        parts_.reader.decode((*embedded)->bytes, photo_.filename().string(), limits, cancellation);
    if (!decoded) return fail(std::move(decoded).error());
    const Image picture = cutToRatio(
        imageFrom(sourceFrom(std::move(decoded->pixels), std::move(decoded->colour))), photo);
    const int longer = picture.extent().longerSide();
    if (longer * kSmallestPreviewShare < side) return None();
    const int coarseness =
        std::clamp(int(std::lround(double(side) / longer)), 1, kSmallestPreviewShare);

    // An edit is shown as it would act on a finished picture: near enough for the moment.
    const ImageSource source = bitmapSource(photo_, identity_, picture, photo);
    auto developed =
        developedPhoto(source, request.shownEdit(), geometry.neededScale() / coarseness,
                       engine_.renderer(), parts_.brushes, cancellation);
    if (!developed) return fail(std::move(developed).error());
    auto view = drawn(*developed, request, geometry, coarseness, cancellation);
    if (!view) return fail(std::move(view).error());
    return None(std::move(*view));
}

Result<std::optional<RenderedView>> PhotoSession::glimpse(const ViewRequest& request,
                                                          const Cancellation* cancellation) {
    using None = std::optional<RenderedView>;
    const auto before = state_.with([](State& state) { return state.decode; });
    const auto known = state_.with([](State& state) { return state.facts; });
    if (!isRaw_ || !before || !known || isDecodedFor(request, {})) return None();
    const auto geometry = ViewGeometry::of(request, known->size);
    const double scale = geometry.neededScale();
    const double shown = double(geometry.rect.width) * geometry.rect.height / (scale * scale);
    if (scale <= 0.5 || shown > kLargestGlimpse * known->size.width * known->size.height)
        return None();
    const auto nothing = [] { return std::optional<Result<None>>(); };
    const auto make = [&]() -> Result<None> {
        auto file = openedRaw();
        if (!file) return fail(std::move(file).error());
        const Adjustments edit = request.shownEdit();
        auto settings = rawSettings(edit, (*file)->properties(), 1);
        settings.streamed = true;
        auto pixels = (*file)->develop(settings, cancellation);
        if (!pixels) return fail(std::move(pixels).error());
        ImageSource source = withPixels(before->source, imageFrom(std::move(*pixels)));
        source.measured = before->source.decoded();
        auto developed =
            developedPhoto(source, edit, scale, engine_.renderer(), parts_.brushes, cancellation);
        if (!developed) return fail(std::move(developed).error());
        auto view = drawn(*developed, request, geometry, 1, cancellation);
        if (!view) return fail(std::move(view).error());
        view->stage = ViewStage::full;
        view->isSettled = view->isFinal = scale == 1;
        return None(std::move(*view));
    };
    auto made = inFlight_.run("decode", cancellation, nothing, make);
    return made ? std::move(*made) : fail(cancelledFailure());
}

// The linear capture at `scale`, without ever being in memory larger than that.
Result<ImageSource> PhotoSession::smallCapture(double scale, const Cancellation* cancellation) {
    const auto nothing = [] { return std::optional<Result<ImageSource>>(); };
    const auto make = [&]() -> Result<ImageSource> {
        auto file = openedRaw();
        if (!file) return fail(std::move(file).error());
        const RawProperties& properties = (*file)->properties();
        const int longer = std::max(properties.size.width, properties.size.height);
        auto pixels = (*file)->develop(
            kelvaro::smallCapture(properties, int(std::ceil(scale * longer))), cancellation);
        if (!pixels) return fail(std::move(pixels).error());
        const ImageSource source =
            rawSource(photo_, identity_, imageFrom(std::move(*pixels)), properties);
        auto small = materialised(atRenderScale(source.linearCapture, source, scale),
                                  engine_.renderer(), cancellation);
        if (!small) return fail(std::move(small).error());
        return withPixels(source, std::move(*small));
    };
    auto made = inFlight_.run("decode", cancellation, nothing, make);
    return made ? std::move(*made) : fail(cancelledFailure());
}

// The analysis measures the same reduction that the view is developed from, at the size that it
// would have reduced the photo to for itself.
Result<RenderedView> PhotoSession::sketch(const ViewRequest& request,
                                          const Cancellation* cancellation) {
    if (!isRaw_) return render(request, {}, cancellation);
    auto known = facts(cancellation);
    if (!known) return fail(std::move(known).error());
    const auto geometry = ViewGeometry::of(request, known->size);
    const double measured =
        double(kAnalysisLongerSide) / std::max(known->size.width, known->size.height);
    const double scale = std::max(measured, geometry.neededScale());
    if (scale > kLargestSketch) return render(request, {}, cancellation);
    auto source = smallCapture(scale, cancellation);
    if (!source) return fail(std::move(source).error());
    parts_.analyses.recall(*source);
    const Adjustments edit = request.shownEdit();
    auto developed = developedPhoto(*source, edit, geometry.neededScale(), engine_.renderer(),
                                    parts_.brushes, cancellation);
    if (!developed) return fail(std::move(developed).error());
    if (scale == measured) parts_.analyses.remember(*source); // as an export measures it
    auto view = drawn(*developed, request, geometry, 1, cancellation);
    if (view) view->stage = ViewStage::fit;
    return view;
}

} // namespace kelvaro
