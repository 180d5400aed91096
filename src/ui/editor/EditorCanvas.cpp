// The requests of the canvas; see also EditorCanvasPainting.cpp and EditorCanvasInput.cpp.
#include "ui/editor/EditorCanvas.h"

#include "recipe/RecipeActions.h"
#include "render/ViewGeometry.h"
#include "ui/Texts.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {
namespace {

constexpr int zoomShownMs = 1200;
constexpr qint64 patienceMs = 200; // that a gesture waits for a frame before it asks again
constexpr int restMs = 250;        // without a request of the gesture, until the view is settled

bool isSame(const MaskOverlay& a, const MaskOverlay& b) {
    return a.mask == b.mask && a.all == b.all;
}

Adjustments withoutCrop(const Adjustments& edit) {
    return withPanelReset(edit, AdjustmentSpec::Group::crop);
}

// In the crop tool and for judging colours the photo keeps more air than elsewhere.
constexpr double roomyShare = 0.88;

} // namespace

EditorCanvas::EditorCanvas(const Appearance& appearance, RenderEngine& engine,
                           PhotoSessionCache& sessions, QWidget* parent)
    : QWidget(parent),
      appearance_(appearance),
      engine_(engine),
      session_(engine, sessions),
      before_(engine, sessions) {
    setObjectName("canvas");
    setAccessibleName(words("Photo"));
    setAccessibleDescription(
        words("The wheel zooms, dragging moves, a double click shows full size"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(160, 120);
    grabGesture(Qt::PinchGesture);
    asking_.setSingleShot(true);
    asking_.setInterval(0);
    QObject::connect(&asking_, &QTimer::timeout, this, [this] { send(); });
    resting_.setSingleShot(true);
    resting_.setInterval(restMs);
    QObject::connect(&resting_, &QTimer::timeout, this, [this] { ask(false); });
    zoomShown_.setSingleShot(true);
    zoomShown_.setInterval(zoomShownMs);
    labelsShown_.setSingleShot(true);
    labelsShown_.setInterval(static_cast<int>(SplitView::labelSeconds * 1000));
    for (QTimer* timer : {&zoomShown_, &labelsShown_})
        QObject::connect(timer, &QTimer::timeout, this, [this] { update(); });
    fade_.setStartValue(0.0);
    fade_.setEndValue(1.0);
    growth_.setStartValue(0.0);
    growth_.setEndValue(1.0);
    growth_.setEasingCurve(QEasingCurve::OutCubic);
    for (QVariantAnimation* motion : {&fade_, &growth_}) {
        QObject::connect(motion, &QVariantAnimation::valueChanged, this, [this] { update(); });
        QObject::connect(motion, &QVariantAnimation::finished, this, [this] {
            fading_ = {};
            update();
        });
    }
    session_.setHistogramCallback([this](const Histogram& histogram) {
        if (onHistogram) onHistogram(histogram);
    });
}

EditorCanvas::~EditorCanvas() = default;

void EditorCanvas::showPhoto(const std::filesystem::path& photo, const Adjustments& edit,
                             PixelSize guess, const QImage& standIn) {
    open_ = true;
    factual_ = false;
    edit_ = edit;
    failure_.clear();
    photoSize_ = guess;
    frame_ = standInFrame(standIn, false);
    if (guess.width <= 0 || guess.height <= 0)
        photoSize_ = {standIn.width() * 8, standIn.height() * 8};
    backdrop_ = beforeFrame_ = fading_ = {};
    fade_.stop();
    growth_.stop();
    inFlight_ = again_ = false;
    undisplayed_ = 0;
    view_ = CanvasView{};
    view_ = resized(view_, {double(width()), double(height())}, devicePixelRatioF());
    view_ = withPicture(view_, pictureSize());
    session_.open(photo, [this](const Result<PhotoFacts>& facts) { opened(facts); });
    before_.open(photo);
    update();
    send();
}

void EditorCanvas::close() {
    open_ = false;
    asking_.stop();
    resting_.stop();
    session_.close();
    before_.close();
    frame_ = backdrop_ = fading_ = beforeFrame_ = {};
    update();
}

void EditorCanvas::opened(const Result<PhotoFacts>& facts) {
    if (facts) {
        const bool isKnown = photoSize_ == facts->size;
        photoSize_ = facts->size;
        factual_ = true;
        view_ = withPicture(view_, pictureSize());
        // What was asked for by its fit is on its way and is what is wanted, unless the view is not
        // fitted any more.
        if (!isKnown && (view_.zoom != CanvasView::Zoom::fit || display_.whole)) ask(false);
    } else {
        failure_ = QString::fromStdString(facts.error().message);
    }
    update();
    if (onOpened) onOpened(facts);
}

PixelSize EditorCanvas::pictureSize() const {
    if (photoSize_.width <= 0 || photoSize_.height <= 0) return {};
    ViewRequest request;
    request.edit = edit_;
    request.whole = display_.whole;
    return ViewGeometry::of(request, photoSize_).pictureSize;
}

PixelSize EditorCanvas::fit() const {
    const double ratio = devicePixelRatioF();
    const auto room = [ratio](int side) {
        return std::max(1, static_cast<int>((side - 2 * CanvasView::fitMarginPoints) * ratio));
    };
    return {room(width()), room(height())};
}

CanvasView EditorCanvas::view() const {
    const bool isRoomy = display_.whole || display_.assessment;
    if (!isRoomy || view_.zoom != CanvasView::Zoom::fit) return view_;
    CanvasView roomy = view_;
    roomy.freeScale = view_.scale() * roomyShare;
    roomy.zoom = CanvasView::Zoom::free;
    roomy.centre = {view_.picture.width / 2.0, view_.picture.height / 2.0};
    return roomy;
}

void EditorCanvas::setEdit(const Adjustments& edit, bool interactive) {
    if (!open_) return;
    if (edit == edit_) {
        if (!interactive && interactive_) ask(false); // the hand has let go
        return;
    }
    // The whole photo is only turned and framed anew, which is painted.
    const bool isFrameOnly = display_.whole && withoutCrop(edit) == withoutCrop(edit_);
    edit_ = edit;
    if (isFrameOnly) return update();
    if (const PixelSize size = pictureSize(); size != view_.picture) {
        view_ = withPicture(view_, size);
        beforeFrame_ = {};
    }
    ask(interactive);
}

void EditorCanvas::setDisplay(const CanvasDisplay& display) {
    const bool isOther = display.whole != display_.whole || display.clipping != display_.clipping ||
                         display.assessment != display_.assessment ||
                         !isSame(display.overlay, display_.overlay);
    const bool splitChanged = !(display.split == display_.split);
    if (!isOther && !splitChanged) return;
    const bool startsSplit = showsBefore();
    const bool wholeChanged = display.whole != display_.whole;
    display_ = display;
    if (wholeChanged) {
        view_.zoom = CanvasView::Zoom::fit;
        view_ = withPicture(view_, pictureSize());
        beforeFrame_ = {};
    }
    if (showsBefore() && !startsSplit) labelsShown_.start();
    if (open_ && isOther) ask(false);
    if (open_ && showsBefore()) askBefore();
    update();
}

void EditorCanvas::setScreenProfile(const QColorSpace& profile) {
    profile_ = profile;
    frame_.view = 0; // in other colours: nothing can be laid over it
    if (open_) ask(false);
}

void EditorCanvas::prepare(std::vector<RenderSession::Neighbour> neighbours) {
    session_.prepare(std::move(neighbours));
}

ViewRequest EditorCanvas::requestNow() const {
    ViewRequest request;
    request.edit = edit_;
    request.whole = display_.whole;
    request.clipping = display_.clipping;
    request.maskOverlay = display_.overlay;
    request.keepAlpha = true;
    const CanvasView now = view();
    if (factual_) {
        request.scale = now.scale();
        request.rect = now.visiblePixels();
    } else {
        request.fit = fit();
    }
    return request;
}

void EditorCanvas::ask(bool interactive) {
    if (!open_) return;
    interactive_ = interactive;
    if (!asking_.isActive()) asking_.start();
}

void EditorCanvas::send() {
    asking_.stop();
    if (!open_) return;
    // During a gesture one frame is under way at a time: asking faster than frames come would only
    // copy recipes.
    if (interactive_ && inFlight_ && sinceSent_.elapsed() < patienceMs) {
        again_ = true;
        return;
    }
    again_ = false;
    ViewRequest request = requestNow();
    if (request.rect && request.rect->isEmpty()) return;
    request.interactive = interactive_;
    request.over = frame_.view;
    interactive_ ? resting_.start() : resting_.stop();
    askedByFit_ = request.fit.has_value();
    inFlight_ = true;
    sinceSent_.start();
    frame_.isFinal = false;
    session_.render(std::move(request),
                    [this, whole = display_.whole, asked = ++askedCount_](
                        const Result<RenderedView>& view) { take(view, whole, asked); });
    if (showsBefore()) askBefore();
}

void EditorCanvas::askBefore() {
    if (!factual_) return;
    ViewRequest request = requestNow();
    request.before = true;
    request.clipping = false;
    request.maskOverlay = {};
    if (request.rect && request.rect->isEmpty()) return;
    if (!beforeFrame_.image.isNull() && beforeFrame_.pictureSize == view().scaledPicture() &&
        beforeFrame_.rect == *request.rect)
        return;
    before_.render(std::move(request),
                   [this, whole = display_.whole](const Result<RenderedView>& view) {
                       if (!view || view->stage == ViewStage::preview) return;
                       beforeFrame_ = frameOf(*view, whole, profile_);
                       update();
                   });
}

void EditorCanvas::take(const Result<RenderedView>& view, bool whole, std::uint64_t asked) {
    inFlight_ = false;
    if (!view) {
        failure_ = QString::fromStdString(view.error().message);
        frame_.isFinal = true;
        if (frame_.stage == ViewStage::preview) frame_.image = {};
        return update();
    }
    failure_.clear();
    CanvasFrame next = frameOf(*view, whole, profile_);
    next.asked = asked;
    if (view->over != 0) {
        takePart(next, view->over);
        if (again_) send();
        return;
    }
    // A better stage takes the place of a worse one softly; a hand on a control sees it at once.
    const bool improves = frame_.stage == ViewStage::preview && next.stage != ViewStage::preview;
    if (improves && !frame_.image.isNull() && appearance_.motionMs() > 0 &&
        growth_.state() != QAbstractAnimation::Running) {
        fading_ = frame_;
        fade_.setDuration(appearance_.motionMs());
        fade_.start();
    }
    frame_ = std::move(next);
    if (frame_.coversPicture()) backdrop_ = frame_;
    undisplayed_ = frame_.number;
    update();
    // What was asked for by its fit, before the size was known, may be off by a pixel.
    const bool isOff = factual_ && std::exchange(askedByFit_, false) && frame_.isFinal &&
                       frame_.pictureSize != this->view().scaledPicture();
    if (again_) send();
    if (isOff) ask(false);
}

// Only what changed is drawn and painted.
void EditorCanvas::takePart(const CanvasFrame& part, std::uint64_t over) {
    if (frame_.view != over || frame_.image.isNull()) return ask(interactive_);
    // The picture beneath shares the pixels, which would be copied to write into them.
    const bool isBackdrop = frame_.coversPicture();
    if (isBackdrop) backdrop_ = {};
    const PixelRect changed = lay(part, frame_);
    if (isBackdrop) backdrop_ = frame_;
    undisplayed_ = frame_.number;
    CanvasFrame place = part;
    place.rect = changed;
    place.pictureSize = frame_.pictureSize;
    update(frameInView(place, view()).toAlignedRect().adjusted(-1, -1, 1, 1));
}

} // namespace kelvaro
