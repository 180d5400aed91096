#include "render/PhotoSession.h"

#include "develop/CropGeometry.h"
#include "develop/Guides.h"
#include "develop/SceneSample.h"
#include "develop/ToneAnalysis.h"
#include "platform/PhotoKinds.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kelvaro {

namespace {

// That are drawn: reduced and developed for the view, for a coarse one and for the histogram.
constexpr std::size_t kMostLayers = 6;
constexpr std::size_t kMostWishes = 2; // an edit and the one before it, side by side
// Larger pictures are developed where they are looked at, instead of whole into memory.
constexpr std::int64_t kLargestLayer = 12'000'000; // pixels
constexpr int kSideForFacts = 2048;                // what a view will ask for next
constexpr double kRounding = 1e-3;

std::size_t layerBytes(PixelSize size, bool hasAlpha) {
    return std::size_t(size.width) * std::size_t(size.height) * (hasAlpha ? 4 : 3) * sizeof(float);
}

// Memory that decoded pixels hold. Bitmaps are kept as stored, 3 bytes a pixel for most.
std::size_t decodeBytes(const ImageSource& source) {
    const PixelSize size = source.decoded().extent().size();
    return source.isRaw() ? layerBytes(size, false) : layerBytes(size, false) / 4;
}

// Drops the first of the layers that are drawn, or are not, while there are more than `most`.
template<class Layers>
void dropOverMost(Layers& layers, bool drawn, std::size_t most) {
    const auto counts = [drawn](const auto& layer) { return bool(layer.image) == drawn; };
    while (std::size_t(std::count_if(layers.begin(), layers.end(), counts)) > most)
        layers.erase(std::find_if(layers.begin(), layers.end(), counts));
}

Failure renderFailure(Failure failure) {
    if (failure.kind == FailureKind::cancelled) return failure;
    return {failure.kind, RenderEngine::renderFailedText};
}

} // namespace

PhotoSession::PhotoSession(RenderEngine& engine, Parts parts, std::filesystem::path photo,
                           std::string identity)
    : engine_(engine),
      parts_(parts),
      photo_(std::move(photo)),
      identity_(std::move(identity)),
      isRaw_(photoKind(photo_) == PhotoKind::raw) {}

bool PhotoSession::Decode::serves(double scale, double sharpnessAsked, bool isSettled) const {
    return source.pixelScale >= std::min(scale, 1.0) - kRounding &&
           (!isSettled || settledUpTo >= std::min(scale, 1.0)) &&
           (!source.isRaw() || sharpness == sharpnessAsked);
}

PhotoSession::Counts PhotoSession::counts() const {
    return state_.with([](State& state) { return state.counts; });
}

Result<PhotoFacts> PhotoSession::facts(const Cancellation* cancellation) {
    const auto known = [&] { return state_.with([](State& state) { return state.facts; }); };
    if (auto facts = known()) return *facts;
    if (isRaw_) {
        const auto opened = inFlight_.run("open", cancellation, known, [&]() -> Result<PhotoFacts> {
            auto file = openedRaw();
            if (!file) return fail(std::move(file).error());
            return *known();
        });
        if (!opened) return fail(FailureKind::cancelled, "Opening the photo was cancelled.");
        return *opened;
    }
    ViewRequest request;
    request.fit = PixelSize{kSideForFacts, kSideForFacts};
    auto decoded = decodeFor(request, {}, cancellation);
    if (!decoded) return fail(std::move(decoded).error());
    return *known();
}

double PhotoSession::scaleNeeded(const ViewRequest& request, Pass pass) const {
    const auto facts = state_.with([](State& state) { return state.facts; });
    if (!facts) return 1;
    const double needed = ViewGeometry::of(request, facts->size).neededScale() / pass.coarseness;
    return std::min(needed, pass.enoughScale);
}

double PhotoSession::decodedScale() const {
    const auto decode = state_.with([](State& state) { return state.decode; });
    return decode ? decode->source.pixelScale : 0;
}

bool PhotoSession::isDecodedFor(const ViewRequest& request, Pass pass) const {
    const auto decode = state_.with([](State& state) { return state.decode; });
    return decode && decode->serves(scaleNeeded(request, pass), request.shownEdit().sharpness,
                                    pass.isSettled);
}

Result<RenderedView> PhotoSession::render(const ViewRequest& request, Pass pass,
                                          const Cancellation* cancellation) {
    auto decode = decodeFor(request, pass, cancellation);
    if (!decode) return fail(std::move(decode).error());
    const ImageSource& source = (*decode)->source;
    auto geometry = ViewGeometry::of(request, source.extent.size());
    if (pass.part) geometry.rect = intersection(geometry.rect, *pass.part);
    const double scale = std::min(geometry.neededScale() / pass.coarseness, source.pixelScale);
    const bool isReduced = scale < source.pixelScale - kRounding;
    auto image = pass.isSettled && isReduced ? settled(**decode, request, scale, cancellation)
                                             : developed(**decode, request.shownEdit(), scale,
                                                         pass.part.has_value(), cancellation);
    if (!image) return fail(renderFailure(std::move(image).error()));
    auto view = drawn(*image, request, geometry, pass.coarseness, cancellation);
    if (!view) return view;
    if (!pass.isSettled && isReduced && pass.coarseness == 1)
        settleAlike(**decode, request, pass.part.has_value(), *view);
    const bool sharp = source.pixelScale >= geometry.neededScale() - kRounding;
    view->stage = pass.coarseness > 1                 ? ViewStage::coarse
                  : source.pixelScale < 1 - kRounding ? ViewStage::fit
                                                      : ViewStage::full;
    view->isSettled = pass.isSettled || ((*decode)->settledUpTo >= 1 && !isReduced);
    view->isFinal = pass.coarseness == 1 && sharp;
    state_.with([](State& state) { ++state.counts.renders; });
    return view;
}

Result<void> PhotoSession::load(const ViewRequest& request, Pass pass,
                                const Cancellation* cancellation) {
    auto decode = decodeFor(request, pass, cancellation);
    if (!decode) return fail(std::move(decode).error());
    return {};
}

Result<void> PhotoSession::prepare(const ViewRequest& request, const Cancellation* cancellation) {
    auto decode = decodeFor(request, {}, cancellation);
    if (!decode) return fail(std::move(decode).error());
    const auto geometry = ViewGeometry::of(request, (*decode)->source.extent.size());
    auto image =
        developed(**decode, request.shownEdit(), geometry.neededScale(), false, cancellation);
    if (!image) return fail(renderFailure(std::move(image).error()));
    auto view = render(request, {}, cancellation);
    if (!view) return fail(std::move(view).error());
    state_.with([&](State& state) { state.prepared = Prepared{request, std::move(*view)}; });
    return {};
}

std::optional<RenderedView> PhotoSession::takePrepared(const ViewRequest& request) {
    const auto prepared =
        state_.with([](State& state) { return std::exchange(state.prepared, std::nullopt); });
    if (!prepared || !prepared->request.showsSameAs(request)) return std::nullopt;
    return prepared->view;
}

// The whole photo developed at `scale`, as a lazy image over what is kept.
Result<Image> PhotoSession::developed(const Decode& decode, const Adjustments& edit, double scale,
                                      bool isPart, const Cancellation* cancellation) {
    auto maps = toneMaps(decode.source, edit, engine_.renderer(), cancellation);
    if (!maps) return fail(std::move(maps).error());
    parts_.analyses.remember(decode.source);
    auto input = reduced(decode, scale, cancellation);
    if (!input) return input;
    const double drawnScale = withPixels(decode.source, *input).pixelScale;
    const Pipeline pipeline(engine_.renderer(), parts_.brushes);
    if (!isRaw_) return pipeline.finished(*input, edit, &*maps, false, drawnScale);
    auto raw = rawDeveloped(decode, *input, edit, *maps, isPart, cancellation);
    if (!raw) return raw;
    return pipeline.finished(*raw, edit, &*maps, true, drawnScale);
}

// Nothing of it is kept: the next edit changes all. Colours are brought into the space first, as
// those of a file are before somebody looks at it reduced.
Result<Image> PhotoSession::settled(const Decode& decode, const ViewRequest& request, double scale,
                                    const Cancellation* cancellation) {
    const ImageSource& source = decode.source;
    auto whole = developedPhoto(source, request.shownEdit(), source.pixelScale, engine_.renderer(),
                                parts_.brushes, cancellation);
    if (!whole) return whole;
    parts_.analyses.remember(source);
    return atRenderScale(Pipeline::gamutMapped(*whole, request.space), source, scale);
}

// Notes a view drawn from reduced pixels, and changes it as the last one like it was by settling.
void PhotoSession::settleAlike(const Decode& decode, const ViewRequest& request, bool isPart,
                               RenderedView& view) {
    const Image& from = decode.source.decoded();
    const auto change = state_.with([&](State& state) {
        if (!isPart) state.reduced = SettlingChange{request, from, view.rect, view.pixels, nullptr};
        return state.settling;
    });
    if (!change || !change->describes(request, from)) return;
    if (auto pixels = change->appliedTo(*view.pixels, view.rect)) view.pixels = std::move(pixels);
}

void PhotoSession::noteSettled(const ViewRequest& request, const RenderedView& settled,
                               const Cancellation* cancellation) {
    const auto decode = state_.with([](State& state) { return state.decode; });
    if (!decode || settled.over != 0) return;
    const ImageSource& source = decode->source;
    const auto geometry = ViewGeometry::of(request, source.extent.size());
    const double scale = geometry.neededScale();
    if (scale >= source.pixelScale - kRounding) return; // nothing was reduced
    const auto before = state_.with([](State& state) { return state.reduced; });
    std::shared_ptr<const Bitmap> reduced;
    if (before && before->from == source.decoded() && before->request.showsSameAs(request)) {
        reduced = before->reduced;
    } else {
        auto image = developed(*decode, request.shownEdit(), scale, false, cancellation);
        if (!image) return;
        auto view = drawn(*image, request, geometry, 1, cancellation);
        if (!view) return;
        reduced = view->pixels;
    }
    if (reduced->bytes() != settled.pixels->bytes()) return;
    state_.with([&](State& state) {
        state.settling =
            SettlingChange{request, source.decoded(), settled.rect, reduced, settled.pixels};
    });
}

Result<Image> PhotoSession::reduced(const Decode& decode, double scale,
                                    const Cancellation* cancellation) {
    const Image& pixels = decode.source.decoded();
    const Image lazy = atViewScale(decode.source, scale);
    const PixelSize size = lazy.extent().size();
    if (lazy == pixels || std::int64_t(size.width) * size.height > kLargestLayer) return lazy;
    const Layer wanted{pixels, size, {}, {}};
    const auto find = [&]() -> std::optional<Result<Image>> {
        if (const auto layer = findLayer(wanted, false)) return layer->image;
        return std::nullopt;
    };
    const auto made = inFlight_.run("reduce", cancellation, find, [&]() -> Result<Image> {
        auto image = materialised(lazy, engine_.renderer(), cancellation);
        if (!image) return image;
        keepLayer({pixels, size, {}, *image});
        state_.with([](State& state) { ++state.counts.reductions; });
        return image;
    });
    return made ? *made : fail(FailureKind::cancelled, "The render was cancelled.");
}

// What the RAW stage makes of `input`. It is drawn once and kept when it is asked for a second
// time: while a control of that stage moves, each frame has another.
Result<Image> PhotoSession::rawDeveloped(const Decode& decode, const Image& input,
                                         const Adjustments& edit, const ToneMaps& maps, bool isPart,
                                         const Cancellation* cancellation) {
    const ImageSource& source = decode.source;
    const PixelSize size = input.extent().size();
    const Image reference =
        source.referenceImage
            ? atRenderScale(source.referenceImage, source, withPixels(source, input).pixelScale)
            : Image{};
    const Image lazy = Pipeline::rawDeveloped(input, reference, source.asShot(), edit, maps);
    if (std::int64_t(size.width) * size.height > kLargestLayer) return lazy;
    const auto layer = findLayer({source.decoded(), size, RawParams(edit), {}}, !isPart);
    if (!layer || (isPart && !layer->image)) return lazy;
    if (layer->image) return layer->image;
    auto image = materialised(lazy, engine_.renderer(), cancellation);
    if (!image) return image;
    keepLayer({source.decoded(), size, RawParams(edit), *image});
    state_.with([](State& state) { ++state.counts.rawStages; });
    return image;
}

Result<RenderedView> PhotoSession::drawn(const Image& developed, const ViewRequest& request,
                                         const ViewGeometry& geometry, int coarseness,
                                         const Cancellation* cancellation) const {
    Image image =
        Pipeline::gamutMapped(shapedForView(developed, geometry, coarseness), request.space);
    if (request.clipping) image = Pipeline::withClippingShown(image);
    if (request.maskOverlay.mask || request.maskOverlay.all) {
        const Image weight = overlayWeight(request.edit.masks, request.maskOverlay,
                                           developed.extent(), parts_.brushes);
        if (weight)
            image = Pipeline::withMaskShown(image, shapedForView(weight, geometry, coarseness));
    }
    BitmapFormat format = Pipeline::bitmapFormat(request.space, SampleType::u8);
    format.alpha =
        request.keepAlpha ? BitmapFormat::Alpha::straight : BitmapFormat::Alpha::overWhite;
    const CoarseRect rect = coarseRect(geometry, coarseness);
    auto pixels = engine_.renderer().renderBitmap(image, rect.pixels, format, cancellation);
    if (!pixels) return fail(renderFailure(std::move(pixels).error()));
    RenderedView view;
    view.pixels = std::make_shared<const Bitmap>(std::move(*pixels));
    view.rect = rect.covered;
    view.pictureSize = geometry.pictureSize;
    view.scale = geometry.scale;
    view.space = request.space;
    return view;
}

// The layer, moved to the end. One that is not there yet is noted where `noteWish` is set, and
// comes back without an image when it is wished for again.
std::optional<PhotoSession::Layer> PhotoSession::findLayer(const Layer& wanted, bool noteWish) {
    return state_.with([&](State& state) -> std::optional<Layer> {
        auto& layers = state.layers;
        const auto found = std::find_if(layers.begin(), layers.end(), [&](const Layer& layer) {
            return layer.from == wanted.from && layer.size == wanted.size &&
                   layer.raw == wanted.raw;
        });
        if (found != layers.end()) {
            std::rotate(found, found + 1, layers.end());
            return layers.back();
        }
        if (noteWish) layers.push_back(wanted);
        dropOverMost(layers, false, kMostWishes);
        return std::nullopt;
    });
}

void PhotoSession::keepLayer(Layer layer) {
    state_.with([&](State& state) {
        std::erase_if(state.layers, [&](const Layer& other) {
            return other.from == layer.from && other.size == layer.size && other.raw == layer.raw;
        });
        state.layers.push_back(std::move(layer));
        dropOverMost(state.layers, true, kMostLayers);
    });
}

Result<SampledArea> PhotoSession::sampled(Point at, int radiusPx,
                                          const Cancellation* cancellation) {
    const auto decode = decodeFor({}, {1, 0.5}, cancellation);
    if (!decode) return fail(decode.error());
    const ImageSource& source = (*decode)->source;
    const PixelRect all = source.decoded().extent();
    const auto place = [&](double photoPx, int side) {
        const int pixel = static_cast<int>(std::floor(photoPx * source.pixelScale));
        return std::clamp(pixel, 0, std::max(0, side - 1));
    };
    const PixelRect around{place(at.x, all.width) - radiusPx, place(at.y, all.height) - radiusPx,
                           2 * radiusPx + 1, 2 * radiusPx + 1};
    auto pixels = engine_.renderer().renderRaster(sceneAsShot(source), intersection(around, all),
                                                  cancellation);
    if (!pixels) return fail(renderFailure(std::move(pixels).error()));
    const auto level =
        engine_.renderer().renderRaster(sceneClipLevel(source), {0, 0, 1, 1}, cancellation);
    if (!level) return fail(level.error());
    return SampledArea{std::move(*pixels), level->row(0, 0)[0], source.asShot()};
}

void PhotoSession::shed(bool all) {
    state_.with([&](State& state) {
        state.layers.clear();
        state.prepared.reset();
        state.reduced.reset();
        state.settling.reset();
        state.rawFile.reset();
        if (all) state.decode.reset();
    });
}

std::size_t PhotoSession::bytes() const {
    return state_.with([](State& state) {
        std::size_t sum = 0;
        for (const Layer& layer : state.layers)
            if (layer.image) sum += layerBytes(layer.size, layer.image.hasAlpha());
        if (state.decode) sum += decodeBytes(state.decode->source);
        if (state.prepared) sum += state.prepared->view.pixels->bytes();
        if (state.settling) sum += state.settling->bytes();
        // The samples of the sensor, which the open file keeps.
        if (state.rawFile && state.facts)
            sum += 2 * std::size_t(state.facts->size.width) * std::size_t(state.facts->size.height);
        return sum;
    });
}

} // namespace kelvaro
