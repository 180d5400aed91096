#include "render/SessionWork.h"

#include "base/Require.h"
#include "develop/PaintedArea.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace kelvaro {

namespace {

// What rendering a frame of a gesture may take, so that it is on the screen after 20 ms: enlarging
// a coarse one and copying it there takes 5 to 8.
constexpr double kFrameSeconds = 0.0115;
// What is painted should be seen within 33 ms. A part needs no enlarging and comes as sharp as the
// rest.
constexpr double kPartSeconds = 0.022;
// Settled, which takes several times as long, where there is enough time to follow a quick hand.
constexpr double kSettledPartSeconds = 0.012;
constexpr double kClearlyFaster = 0.7;              // of that, before frames become finer again
constexpr std::chrono::milliseconds kHandRests(30); // without a newer request of the gesture
constexpr int kCoarsest = 4;
constexpr std::size_t kMostDrawn = 4; // views that a part may be laid over
// Device pixels beside what was painted that resampling may carry it to: three lobes of the
// reduction and two pixels of turning.
constexpr int kPartMargin = 6;
constexpr double kHistogramSeconds = 0.08;         // between histograms of a gesture
constexpr std::int64_t kHistogramPixels = 300'000; // that are counted then
constexpr int kHistogramSide = 768; // of the picture that is counted where the view is a part

bool hasOverlay(const ViewRequest& request) {
    return request.clipping || request.maskOverlay.mask || request.maskOverlay.all;
}

bool coversPicture(const RenderedView& view) {
    return view.rect.x <= 0 && view.rect.y <= 0 && view.rect.right() >= view.pictureSize.width &&
           view.rect.top() >= view.pictureSize.height;
}

} // namespace

RenderSession::Work::~Work() {
    close();
    preparing_->cancel();
}

void RenderSession::Work::open(const std::filesystem::path& photo, OpenedCallback opened) {
    KELVARO_REQUIRE(engine_.mainThread().isCurrent());
    close();
    const auto open = std::make_shared<Open>();
    open->photo = photo;
    front_->opened = std::move(opened);
    front_->open = open;
    engine_.canvasOpened();
    rendering_.post([this, open] { runOpen(open); });
}

void RenderSession::Work::close() {
    if (front_->open) {
        front_->open->cancellation->cancel();
        engine_.canvasClosed();
    }
    if (front_->newest) {
        front_->newest->cancellation->cancel();
        front_->newest->refinement->cancel();
    }
    front_->open = nullptr;
    front_->opened = nullptr;
    front_->newest = nullptr;
    front_->callbacks.clear();
    drawn_.with([](std::vector<Drawn>& drawn) { drawn.clear(); });
    newest_.with([](AskedPointer& newest) { newest = nullptr; });
    waiting_.with([](AskedPointer& waiting) { waiting = nullptr; });
}

void RenderSession::Work::render(ViewRequest request, ViewCallback callback) {
    KELVARO_REQUIRE(engine_.mainThread().isCurrent() && front_->open);
    if (request.interactive) engine_.work().noteInput();
    const auto asked = std::make_shared<Asked>();
    asked->open = front_->open;
    asked->request = std::move(request);
    asked->number = ++front_->lastNumber;
    front_->callbacks[asked->number] = std::move(callback);
    asked->when = engine_.clock().monotonicSeconds();
    const AskedPointer before = std::exchange(front_->newest, asked);
    newest_.with([&](AskedPointer& newest) { newest = asked; });
    waiting_.with([&](AskedPointer& waiting) { waiting = asked; });
    // A frame of a gesture is short and worth showing; anything else would only be in the way.
    if (before) before->refinement->cancel();
    if (before && !before->request.interactive) {
        before->cancellation->cancel();
        front_->callbacks.erase(before->number);
    }
    rendering_.post([this] { runRender(); });
}

void RenderSession::Work::sample(Point at, int radiusPx, SampleCallback callback) {
    KELVARO_REQUIRE(engine_.mainThread().isCurrent() && front_->open);
    rendering_.post([this, at, radiusPx, open = front_->open, callback = std::move(callback)] {
        auto session = sessionOf(open, false);
        auto area = session ? (*session)->sampled(at, radiusPx, open->cancellation.get())
                            : Result<SampledArea>(fail(std::move(session).error()));
        if (!area && area.error().kind == FailureKind::cancelled) return;
        const auto shared = std::make_shared<Result<SampledArea>>(std::move(area));
        engine_.mainThread().post([front = std::weak_ptr(front_), open, shared, callback] {
            const auto alive = front.lock();
            if (alive && alive->open == open) callback(*shared);
        });
    });
}

void RenderSession::Work::setHistogramCallback(HistogramCallback callback) {
    wantsHistogram_ = bool(callback);
    front_->histogram = std::move(callback);
}

void RenderSession::Work::prepare(std::vector<Neighbour> neighbours) {
    preparing_->cancel();
    preparing_ = std::make_shared<Cancellation>();
    if (neighbours.empty()) return;
    warmup_.post([this, neighbours = std::move(neighbours), cancellation = preparing_] {
        runPrepare(neighbours, cancellation);
    });
}

void RenderSession::Work::waitUntilIdle() {
    for (SerialQueue* queue : {&rendering_, &refinement_, &warmup_, &histograms_, &previews_})
        queue->waitUntilIdle();
}

Result<std::shared_ptr<PhotoSession>> RenderSession::Work::sessionOf(const OpenPointer& open,
                                                                     bool looksAgain) {
    const auto before = open->session.copy();
    if (before && !looksAgain) return before;
    auto session = sessions_.session(open->photo);
    // Where its drive is away, what is there is still shown.
    if (before && (!session || (*session)->identity() == before->identity())) return before;
    if (session) open->session.with([&](auto& kept) { kept = *session; });
    return session;
}

void RenderSession::Work::tellOpened(const OpenPointer& open, Result<PhotoFacts> facts) {
    if (open->isTold.exchange(true)) return;
    engine_.mainThread().post([front = std::weak_ptr(front_), open, facts = std::move(facts)] {
        const auto alive = front.lock();
        if (!alive || alive->open != open) return;
        if (const auto opened = std::exchange(alive->opened, nullptr)) opened(facts);
    });
}

void RenderSession::Work::runOpen(const OpenPointer& open) {
    auto session = sessionOf(open, true);
    if (!session) return tellOpened(open, fail(std::move(session).error()));
    // What is known without decoding is told at once; else the first view decodes what it needs,
    // and the facts come with it.
    const bool isWaited = waiting_.with(
        [&](const AskedPointer& waiting) { return waiting && waiting->open == open; });
    if (isWaited && !(*session)->tellsFactsUndecoded()) return;
    tellOpened(open, (*session)->facts(open->cancellation.get()));
}

void RenderSession::Work::runRender() {
    const AskedPointer asked =
        waiting_.with([](AskedPointer& waiting) { return std::exchange(waiting, nullptr); });
    if (!asked) return; // a later request took this one's place, and has been drawn
    // The file may have changed since; not while the hand is on a slider.
    auto session = sessionOf(asked->open, !asked->request.interactive);
    if (!session) return deliver(asked, fail(std::move(session).error()));
    const RenderWork::Interactive urgent(engine_.work());
    step(asked, **session);
    sessions_.trim();
}

// Draws what can be drawn soon, and leaves the rest to the refinement.
void RenderSession::Work::step(const AskedPointer& asked, PhotoSession& session) {
    const Token& photoToken = asked->open->cancellation;
    PhotoSession::Pass pass;
    // What is there will do for now; RAW photos come at half size in a third of the time.
    const double present = session.decodedScale();
    pass.enoughScale = present > 0 ? present : session.tellsFactsUndecoded() ? 0.5 : 1;
    if (!session.isDecodedFor(asked->request, pass) && !asked->open->isPreviewed.exchange(true))
        previews_.post([this, open = asked->open] { runPreview(open); });
    // Another recipe does not make the decode worthless: only another photo ends it.
    if (auto loaded = session.load(asked->request, pass, photoToken.get()); !loaded) {
        tellOpened(asked->open, fail(loaded.error()));
        return deliver(asked, fail(std::move(loaded).error()));
    }
    tellOpened(asked->open, session.facts(photoToken.get()));
    const auto refine = [this, asked] { runRefine(asked); };
    if (auto ready = session.takePrepared(asked->request)) {
        ready->frame = engine_.perf().encoded(0, asked->when);
        ready->isFinal = ready->isFinal && ready->isSettled;
        const bool isFinal = ready->isFinal;
        deliverDrawn(asked, pass, std::move(*ready));
        if (!isFinal && isNewest(asked)) refinement_.post(refine);
        return;
    }
    if (asked->request.interactive) {
        if (drawPart(asked, session)) return;
        pass.coarseness = coarsenessFor(*asked, session);
    } else {
        // The hand has let go of what is on the canvas: only what settles it is missing.
        const auto shown = drawnAs(asked->request.over);
        if (shown && shown->asked->open == asked->open && shown->pass.coarseness == 1 &&
            shown->asked->request.showsSameAs(asked->request)) {
            if (shown->pass.isSettled && drawPart(asked, session)) return; // not even that
            return refinement_.post(refine);
        }
    }
    auto view = timedRender(asked, session, pass, asked->cancellation);
    // In the middle of a gesture nobody looks for what settling changes.
    if (view && !asked->request.interactive) view->isFinal = view->isFinal && view->isSettled;
    const bool isFinal = !view || view->isFinal;
    deliverDrawn(asked, pass, std::move(view));
    if (isFinal || !isNewest(asked)) return;
    if (pass.coarseness > 1 && asked->request.interactive)
        refinement_.postLater(kHandRests, refine);
    else
        refinement_.post(refine);
}

std::optional<RenderSession::Work::Drawn> RenderSession::Work::drawnAs(std::uint64_t number) {
    return drawn_.with([&](const std::vector<Drawn>& drawn) -> std::optional<Drawn> {
        const auto found = std::find_if(drawn.begin(), drawn.end(),
                                        [&](const Drawn& d) { return d.number == number; });
        if (found == drawn.end()) return std::nullopt;
        return *found;
    });
}

// While somebody paints: how to draw what has changed of the view on the canvas, as that was drawn.
// None where that is not all that changed, or where the part would take too long.
std::optional<PhotoSession::Pass> RenderSession::Work::passForPart(const Asked& asked,
                                                                   PhotoSession& session) {
    const ViewRequest& request = asked.request;
    const auto base = drawnAs(request.over);
    if (!base || base->asked->open != asked.open || base->decodedScale != session.decodedScale() ||
        !base->asked->request.looksFromWhere(request))
        return std::nullopt;
    const auto facts = session.facts(nullptr);
    if (!facts) return std::nullopt;
    const auto area = paintedArea(base->asked->request.edit, request.edit, facts->size);
    if (!area) return std::nullopt;
    PhotoSession::Pass pass = base->pass;
    const ViewGeometry geometry = ViewGeometry::of(request, facts->size);
    PixelRect part = shownPart(geometry, *area, kPartMargin * pass.coarseness);
    if (part.isEmpty()) part = {geometry.rect.x, geometry.rect.y, 1, 1}; // an answer all the same
    const double pixels = double(part.width) * part.height / (pass.coarseness * pass.coarseness);
    // The view is settled again when the hand lets go.
    if (pixels * settledSecondsPerPixel_ > kSettledPartSeconds) pass.isSettled = false;
    if (!pass.isSettled && pixels * secondsPerPixel_ > kPartSeconds) return std::nullopt;
    pass.part = part;
    return pass;
}

bool RenderSession::Work::drawPart(const AskedPointer& asked, PhotoSession& session) {
    auto pass = passForPart(*asked, session);
    if (!pass) return false;
    auto view = session.render(asked->request, *pass, asked->cancellation.get());
    if (!view) {
        deliver(asked, std::move(view));
        return true;
    }
    view->frame = engine_.perf().encoded(0, asked->when);
    view->over = asked->request.over;
    pass->part.reset(); // with what is there already it is a whole view
    refinement_.postLater(kHandRests, [this, asked, part = *view] {
        if (!isNewest(asked)) return;
        part.isFinal ? countView(asked, part) : runRefine(asked);
    });
    deliverDrawn(asked, *pass, std::move(view));
    return true;
}

void RenderSession::Work::runRefine(const AskedPointer& asked) {
    if (!isNewest(asked)) return;
    const auto session = asked->open->session.copy();
    const RenderWork::Interactive urgent(engine_.work());
    PhotoSession::Pass pass;
    pass.isSettled = !asked->request.interactive;
    const bool isShown = pass.isSettled && glimpse(asked, *session);
    auto loaded = session->load(asked->request, pass, asked->open->cancellation.get());
    if (isShown) return sessions_.trim(); // the rest is for when the view moves
    if (!loaded) return deliver(asked, fail(std::move(loaded).error()));
    if (!isNewest(asked)) return sessions_.trim();
    auto view = timedRender(asked, *session, pass, asked->refinement);
    deliverDrawn(asked, pass, view);
    if (view && pass.isSettled)
        session->noteSettled(asked->request, *view, asked->refinement.get());
    sessions_.trim();
}

// True when nothing better than what was shown will come.
bool RenderSession::Work::glimpse(const AskedPointer& asked, PhotoSession& session) {
    const double begin = engine_.clock().monotonicSeconds();
    auto view = session.glimpse(asked->request, asked->refinement.get());
    if (!view || !*view) return false; // what is wrong will be told by the decode
    const bool isFinal = (*view)->isFinal;
    const double seconds = engine_.clock().monotonicSeconds() - begin;
    (*view)->frame = engine_.perf().encoded(seconds * 1000, asked->when);
    deliver(asked, std::move(**view));
    return isFinal;
}

Result<RenderedView> RenderSession::Work::timedRender(const AskedPointer& asked,
                                                      PhotoSession& session,
                                                      PhotoSession::Pass pass,
                                                      const Token& cancellation) {
    const double begin = engine_.clock().monotonicSeconds();
    auto view = session.render(asked->request, pass, cancellation.get());
    if (!view) return view;
    const double seconds = engine_.clock().monotonicSeconds() - begin;
    view->frame = engine_.perf().encoded(seconds * 1000, asked->when);
    const PixelSize size = view->pixels->size;
    const double pixels = std::max(1.0, double(size.width) * size.height);
    // A settled view tells nothing of a frame of a gesture.
    std::atomic<double>& known = pass.isSettled ? settledSecondsPerPixel_ : secondsPerPixel_;
    const double before = known;
    known = before > 0 ? (before + seconds / pixels) / 2 : seconds / pixels;
    return view;
}

// As coarse as it must be for the frame to be in time, judged by the frames before; without going
// to and fro within a gesture.
int RenderSession::Work::coarsenessFor(const Asked& asked, PhotoSession& session) {
    const auto facts = session.facts(nullptr);
    if (!facts) return 1;
    const PixelRect rect = ViewGeometry::of(asked.request, facts->size).rect;
    const double seconds = secondsPerPixel_ * double(rect.width) * rect.height;
    const auto isInTime = [seconds](int coarseness, double share) {
        return seconds <= share * kFrameSeconds * coarseness * coarseness;
    };
    int coarseness = coarseness_;
    while (coarseness < kCoarsest && !isInTime(coarseness, 1))
        ++coarseness;
    while (coarseness > 1 && isInTime(coarseness - 1, kClearlyFaster))
        --coarseness;
    coarseness_ = coarseness;
    return coarseness;
}

void RenderSession::Work::runPreview(const OpenPointer& open) {
    const AskedPointer asked = newest_.copy();
    if (!asked || asked->open != open) return;
    const auto session = open->session.copy();
    // Without one, or with a broken one, the photo itself is under way.
    auto view = session->preview(asked->request, asked->cancellation.get());
    if (view && *view) deliver(asked, std::move(**view));
}

void RenderSession::Work::deliver(const AskedPointer& asked, Result<RenderedView> view) {
    if (!view && view.error().kind == FailureKind::cancelled) return;
    if (view && wantsHistogram_ && view->stage != ViewStage::preview && view->over == 0)
        countView(asked, *view);
    engine_.mainThread().post([front = std::weak_ptr(front_), asked, view = std::move(view)] {
        if (const auto alive = front.lock()) arrive(*alive, asked, view);
    });
}

// Notes how it was drawn, and gives it its number.
void RenderSession::Work::deliverDrawn(const AskedPointer& asked, PhotoSession::Pass pass,
                                       Result<RenderedView> view) {
    if (view) {
        view->number = ++lastView_;
        const double decodedScale = asked->open->session.copy()->decodedScale();
        drawn_.with([&](std::vector<Drawn>& drawn) {
            // What is closed meanwhile is not kept in memory by this.
            if (asked->open->cancellation->isCancelled()) return;
            if (drawn.size() >= kMostDrawn) drawn.erase(drawn.begin());
            drawn.push_back({view->number, asked, pass, decodedScale});
        });
    }
    deliver(asked, std::move(view));
}

void RenderSession::Work::arrive(Front& front, const AskedPointer& asked,
                                 const Result<RenderedView>& view) {
    const auto callback = front.callbacks.find(asked->number);
    if (asked->open != front.open || callback == front.callbacks.end()) return;
    const bool isPreview = view && view->stage == ViewStage::preview;
    if (isPreview && asked->open->isShown) return; // it came too late
    if (!isPreview) asked->open->isShown = true;
    // Frames of a gesture that are older than this one need not come any more.
    front.callbacks.erase(front.callbacks.begin(), callback);
    ViewCallback(callback->second)(view);
}

void RenderSession::Work::countView(const AskedPointer& asked, const RenderedView& view) {
    if (!wantsHistogram_) return;
    // While the hand moves a few a second do: counting and drawing them takes time from frames.
    const double now = engine_.clock().monotonicSeconds();
    if (!view.isFinal && now - countedAt_ < kHistogramSeconds) return;
    countedAt_ = now;
    const bool isWhole = coversPicture(view) && !hasOverlay(asked->request);
    if (view.stage == ViewStage::coarse && !isWhole) return; // the refinement will be counted
    counting_.with([&](std::optional<Counting>& next) { next = Counting{asked, view}; });
    histograms_.post([this] { runHistogram(); });
}

void RenderSession::Work::runHistogram() {
    auto next = counting_.with(
        [](std::optional<Counting>& waiting) { return std::exchange(waiting, std::nullopt); });
    if (!next) return;
    const AskedPointer& asked = next->asked;
    if (!coversPicture(next->view) || hasOverlay(asked->request)) {
        ViewRequest whole = asked->request;
        whole.rect.reset();
        whole.clipping = false;
        whole.maskOverlay = {};
        whole.fit = PixelSize{kHistogramSide, kHistogramSide};
        auto view = asked->open->session.copy()->render(whole, {}, asked->refinement.get());
        if (!view) return;
        next->view = std::move(*view);
    }
    const PixelSize size = next->view.pixels->size;
    const std::int64_t all = std::int64_t(size.width) * size.height;
    const bool isGlance = asked->request.interactive && !next->view.isFinal;
    const int rowStep = isGlance ? int(std::max<std::int64_t>(1, all / kHistogramPixels)) : 1;
    const Histogram histogram = histogramOf(*next->view.pixels, next->view.space, rowStep);
    engine_.mainThread().post([front = std::weak_ptr(front_), open = asked->open, histogram] {
        const auto alive = front.lock();
        if (alive && alive->open == open && alive->histogram) alive->histogram(histogram);
    });
}

void RenderSession::Work::runPrepare(const std::vector<Neighbour>& neighbours,
                                     const Token& cancellation) {
    for (const Neighbour& neighbour : neighbours)
        sessions_.prepare(neighbour.photo, neighbour.edit, neighbour.fit, cancellation.get());
}

} // namespace kelvaro
