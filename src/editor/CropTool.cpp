#include "editor/CropTool.h"

#include "editor/CropDrag.h"
#include "editor/PhotoPlacement.h"
#include "editor/Straightening.h"

#include <cmath>

namespace kelvaro {
namespace {

const char* const cropName = "Crop";
const char* const straightenName = "Straighten";

double bearing(Point from, Point to) {
    return std::atan2(to.y - from.y, to.x - from.x);
}

} // namespace

CropTool::CropTool(EditorModel& editor) : editor_(editor) {
    const Box crop = cropBox(editor.edit(), editor.photo().size);
    state_.portrait = crop.height > crop.width;
}

std::optional<double> CropTool::ratio() const {
    return aspectRatio(state_.aspect, state_.portrait, editor_.photo().size);
}

std::optional<Box> CropTool::drawnCrop(const CanvasView& canvas) const {
    if (!editor_.isOpen() || !canvas.isDrawable()) return std::nullopt;
    const Box crop = cropBox(editor_.edit(), editor_.photo().size);
    const Point low = upright(canvas.toView({crop.minX(), crop.minY()}));
    const Point high = upright(canvas.toView({crop.maxX(), crop.maxY()}));
    return Box::between(low.x, low.y, high.x, high.y);
}

std::optional<CropHandle> CropTool::handleAt(Point viewPoint, const CanvasView& canvas) const {
    return cropHandleAt(upright(viewPoint), drawnCrop(canvas));
}

bool CropTool::begin(Point viewPoint, const CanvasView& canvas) {
    const auto drawn = drawnCrop(canvas);
    const auto handle = cropHandleAt(upright(viewPoint), drawn);
    if (!handle) return false;
    const bool rotates = *handle == CropHandle::rotate;
    if (!editor_.beginChange(rotates ? straightenName : cropName)) return false;
    active_ = handle;
    startEdit_ = editor_.edit();
    startRect_ = cropBox(startEdit_, editor_.photo().size);
    startPoint_ = upright(viewPoint);
    startStraighten_ = startEdit_.straighten;
    startBearing_ = bearing(drawn->centre(), startPoint_);
    state_.dragging = true;
    state_.rotating = rotates;
    return true;
}

void CropTool::drag(Point viewPoint, const CanvasView& canvas) {
    const double scale = canvas.pointsPerPixel();
    if (!active_ || !(scale > 0)) return;
    const PixelSize photo = editor_.photo().size;
    const Point pointer = upright(viewPoint);
    Adjustments next;
    if (*active_ == CropHandle::rotate) {
        // About the centre of the crop as it was: a shrinking crop may move, the hand does not.
        const Point centre = upright(canvas.toView(startRect_.centre()));
        const double degrees =
            draggedStraighten(startStraighten_, startBearing_, bearing(centre, pointer));
        next = straightenedTo(startEdit_, degrees, photo);
    } else {
        const Point travel{(pointer.x - startPoint_.x) / scale,
                           (pointer.y - startPoint_.y) / scale};
        next = withCropBox(
            startEdit_,
            draggedCrop(*active_, startRect_, travel, ratio(), photo, turnOf(startEdit_)), photo);
    }
    editor_.change(cropName, [&](Adjustments& edit) { edit = next; });
}

std::optional<std::string> CropTool::end() {
    if (!active_) return std::nullopt;
    const bool rotated = state_.rotating && editor_.edit().straighten != startStraighten_;
    active_.reset();
    state_.dragging = state_.rotating = false;
    editor_.endChange();
    if (!rotated) return std::nullopt;
    return straightenedNotice(editor_.edit().straighten);
}

void CropTool::cancel() {
    if (!active_) return;
    active_.reset();
    state_.dragging = state_.rotating = false;
    editor_.cancelChange();
}

void CropTool::applyRatio(std::string name) {
    const auto wanted = ratio();
    if (!wanted || !editor_.isOpen()) return;
    const PixelSize photo = editor_.photo().size;
    const Adjustments& edit = editor_.edit();
    const Box box = largestBox(*wanted, cropBox(edit, photo).centre(), photo, turnOf(edit));
    editor_.apply(std::move(name), withCropBox(edit, box, photo));
}

bool CropTool::standsUpright() const {
    const auto own = state_.aspect == Aspect::original ? ratio() : std::nullopt;
    return own ? *own < 1 : state_.portrait;
}

void CropTool::setAspect(Aspect aspect) {
    const bool stood = standsUpright();
    state_.aspect = aspect;
    const Box crop = cropBox(editor_.edit(), editor_.photo().size);
    // "Original" is first of all the photo's own shape, whatever was chosen before.
    if (aspect == Aspect::original)
        state_.portrait = false;
    else
        state_.portrait = state_.automatic ? crop.height > crop.width : stood;
    applyRatio(cropName);
}

void CropTool::togglePortrait() {
    state_.portrait = !state_.portrait;
    state_.automatic = false;
    applyRatio(cropName);
}

void CropTool::reset() {
    editor_.resetPanel(AdjustmentSpec::Group::crop);
    state_.portrait = standsUpright();
    state_.aspect = Aspect::free;
    state_.automatic = true;
}

void CropTool::straighten(double degrees) {
    if (!editor_.isOpen()) return;
    editor_.apply(straightenName, straightenedTo(editor_.edit(), degrees, editor_.photo().size));
}

bool CropTool::straightenTyped(std::string_view text) {
    const auto degrees = straightenFromText(text);
    if (degrees) straighten(*degrees);
    return degrees.has_value();
}

std::optional<std::string> CropTool::straightenAlong(Point from, Point to,
                                                     const CanvasView& canvas) {
    const auto place = PhotoPlacement::ofWhole(canvas, editor_.edit(), editor_.photo().size);
    const auto degrees = straightenFromLine(place.toPhoto(from), place.toPhoto(to));
    if (!degrees || editor_.isReadOnly()) return std::nullopt;
    straighten(*degrees);
    return straightenedNotice(editor_.edit().straighten);
}

} // namespace kelvaro
