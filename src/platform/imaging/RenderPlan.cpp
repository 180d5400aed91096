#include "platform/imaging/RenderPlan.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace kelvaro {

namespace {

// A rectangle moved to the nearest pixels of `extent`, never empty: what edges that repeat read.
PixelRect clampedRect(const PixelRect& rect, const PixelRect& extent) {
    const auto clampInto = [](int v, int low, int high) { return std::clamp(v, low, high - 1); };
    const int x0 = clampInto(rect.x, extent.x, extent.right());
    const int x1 = clampInto(rect.right() - 1, extent.x, extent.right());
    const int y0 = clampInto(rect.y, extent.y, extent.top());
    const int y1 = clampInto(rect.top() - 1, extent.y, extent.top());
    return {x0, y0, x1 - x0 + 1, y1 - y0 + 1};
}

PixelRect lanczosInput(const LanczosOperation& op, const PixelRect& rect, const PixelRect& from) {
    const auto axis = [](double first, double last, double scale, double origin, double outOrigin) {
        const double support = lanczosSupport(scale);
        const double low = origin + (first - outOrigin) / scale - support;
        const double high = origin + (last - outOrigin) / scale + support;
        return std::pair{static_cast<int>(std::floor(low)), static_cast<int>(std::ceil(high))};
    };
    const auto [x0, x1] =
        axis(rect.x, rect.right(), op.scaleX, op.inputOrigin.x, op.outputOrigin.x);
    const auto [y0, y1] = axis(rect.y, rect.top(), op.scaleY, op.inputOrigin.y, op.outputOrigin.y);
    return clampedRect(outset({x0, y0, x1 - x0, y1 - y0}, 1), from);
}

PixelRect affineInput(const AffineOperation& op, const PixelRect& rect, const PixelRect& from) {
    double x0 = INFINITY, y0 = INFINITY, x1 = -INFINITY, y1 = -INFINITY;
    for (int corner = 0; corner < 4; ++corner) {
        const double x = corner & 1 ? rect.right() : rect.x, y = corner & 2 ? rect.top() : rect.y;
        const double u = op.inverse.a * x + op.inverse.c * y + op.inverse.tx;
        const double v = op.inverse.b * x + op.inverse.d * y + op.inverse.ty;
        x0 = std::min(x0, u), x1 = std::max(x1, u), y0 = std::min(y0, v), y1 = std::max(y1, v);
    }
    const double limit = 1 << 29;
    const auto whole = [&](double v) { return static_cast<int>(std::clamp(v, -limit, limit)); };
    const int halo = samplingRadius(op.sampling) + 1;
    const int left = whole(std::floor(x0)) - halo, bottom = whole(std::floor(y0)) - halo;
    const int right = whole(std::ceil(x1)) + halo, top = whole(std::ceil(y1)) + halo;
    return clampedRect({left, bottom, right - left, top - bottom}, from);
}

PixelRect stretchInput(const PixelRect& rect, const PixelRect& over, const PixelRect& from) {
    const double sx = double(from.width) / over.width, sy = double(from.height) / over.height;
    const int x0 = static_cast<int>(std::floor((rect.x - over.x) * sx)) + from.x - 1;
    const int x1 = static_cast<int>(std::ceil((rect.right() - over.x) * sx)) + from.x + 1;
    const int y0 = static_cast<int>(std::floor((rect.y - over.y) * sy)) + from.y - 1;
    const int y1 = static_cast<int>(std::ceil((rect.top() - over.y) * sy)) + from.y + 1;
    return clampedRect({x0, y0, x1 - x0, y1 - y0}, from);
}

// All that the filters read. Positions never decrease, so the first and the last bound it.
PixelRect inputOf(const LanczosTables& tables) {
    const auto reach = [](const FilterTaps& taps) {
        return taps.first.back() + taps.taps - taps.first.front();
    };
    return {tables.columns.first.front(), tables.lines.first.front(), reach(tables.columns),
            reach(tables.lines)};
}

constexpr std::size_t kLongChain = 16; // steps

// A Lanczos step draws its input itself, block by block.
std::size_t plannedInputs(const ImageNode& node) {
    return std::holds_alternative<LanczosOperation>(node.operation) ? 0 : node.inputs.size();
}

// Whether two Lanczos nodes read the same places of inputs that lie alike.
bool sameReduction(const ImageNode& a, const ImageNode& b) {
    const auto* p = std::get_if<LanczosOperation>(&a.operation);
    const auto* q = std::get_if<LanczosOperation>(&b.operation);
    return p && q && *p == *q && a.extent == b.extent &&
           a.inputs[0].extent() == b.inputs[0].extent();
}

} // namespace

PixelRect inputRequirement(const ImageNode& node, std::size_t index, const PixelRect& rect) {
    const PixelRect& from = node.inputs[index].extent();
    if (const auto* lanczos = std::get_if<LanczosOperation>(&node.operation))
        return lanczosInput(*lanczos, rect, from);
    if (const auto* blur = std::get_if<BoxBlurOperation>(&node.operation))
        return outset(rect, blur->radius);
    if (std::holds_alternative<ClampOperation>(node.operation)) return clampedRect(rect, from);
    if (const auto* move = std::get_if<TranslateOperation>(&node.operation))
        return {rect.x - move->dx, rect.y - move->dy, rect.width, rect.height};
    if (const auto* affine = std::get_if<AffineOperation>(&node.operation))
        return affineInput(*affine, rect, from);
    if (std::holds_alternative<StretchOperation>(node.operation))
        return stretchInput(rect, node.extent, from);
    return rect;
}

RenderPlan::RenderPlan(std::vector<Image> images, const PixelRect& output)
    : images_(std::move(images)) {
    collectSteps();
    countReads();
    prepareStretches(output);
    prepareLanczos(output);
}

// Depth first without recursion, so that a long chain of masks cannot overflow the stack.
void RenderPlan::collectSteps() {
    std::unordered_map<const ImageNode*, std::size_t> finished;
    struct Visit {
        const ImageNode* node;
        std::size_t nextInput = 0;
    };
    std::vector<Visit> open;
    for (auto image = images_.rbegin(); image != images_.rend(); ++image)
        open.push_back({&image->node()});
    while (!open.empty()) {
        Visit& visit = open.back();
        if (finished.contains(visit.node)) {
            open.pop_back();
        } else if (visit.nextInput < plannedInputs(*visit.node)) {
            const ImageNode* input = &visit.node->inputs[visit.nextInput++].node();
            if (!finished.contains(input)) open.push_back({input});
        } else {
            PlanStep step{visit.node, {}, {}, {}, 0, false};
            for (std::size_t i = 0; i < plannedInputs(*visit.node); ++i)
                step.inputs.push_back(finished.at(&visit.node->inputs[i].node()));
            finished.emplace(visit.node, steps_.size());
            steps_.push_back(std::move(step));
            open.pop_back();
        }
    }
    for (const Image& image : images_)
        roots_.push_back(finished.at(&image.node()));
}

// Kernels say what they read; a colour matrix reads all; other operations treat all planes alike.
void RenderPlan::countReads() {
    for (const std::size_t root : roots_)
        steps_[root].planes = 3;
    for (std::size_t i = steps_.size(); i-- > 0;)
        for (std::size_t k = 0; k < steps_[i].inputs.size(); ++k) {
            const Operation& operation = steps_[i].node->operation;
            PlanStep& input = steps_[steps_[i].inputs[k]];
            const auto* kernel = std::get_if<KernelOperation>(&operation);
            const bool matrix = std::holds_alternative<ColourMatrixOperation>(operation);
            const int read = kernel ? kernel->kernel->planes[k] : matrix ? 3 : steps_[i].planes;
            input.planes = std::max(input.planes, read);
            input.feedsKernel = input.feedsKernel || kernel || matrix;
        }
}

void RenderPlan::prepareStretches(const PixelRect& output) {
    const std::vector<PixelRect> needed = requirements(output);
    for (std::size_t i = 0; i < steps_.size(); ++i) {
        const ImageNode& node = *steps_[i].node;
        if (!std::holds_alternative<StretchOperation>(node.operation) || needed[i].isEmpty())
            continue;
        const PixelRect &from = node.inputs[0].extent(), &over = node.extent, &rect = needed[i];
        steps_[i].stretch = std::make_shared<const StretchTables>(StretchTables{
            rect, stretchTaps(from.x, from.width, over.x, over.width, rect.x, rect.width),
            stretchTaps(from.y, from.height, over.y, over.height, rect.y, rect.height)});
    }
}

void RenderPlan::prepareLanczos(const PixelRect& output) {
    const std::vector<PixelRect> needed = requirements(output);
    for (std::size_t i = 0; i < steps_.size(); ++i) {
        const auto* op = std::get_if<LanczosOperation>(&steps_[i].node->operation);
        if (!op || needed[i].isEmpty() || steps_[i].lanczos) continue;
        auto group = std::make_shared<LanczosGroup>();
        std::vector<Image> inputs;
        PixelRect rect;
        for (std::size_t k = i; k < steps_.size(); ++k) {
            if (needed[k].isEmpty() || !sameReduction(*steps_[i].node, *steps_[k].node)) continue;
            group->members.push_back(k);
            inputs.push_back(steps_[k].node->inputs[0]);
            rect = bounding(rect, needed[k]);
        }
        const PixelRect& from = inputs.front().extent();
        const FilterAxis across{op->scaleX, op->inputOrigin.x, op->outputOrigin.x, from.x,
                                from.right()};
        const FilterAxis up{op->scaleY, op->inputOrigin.y, op->outputOrigin.y, from.y, from.top()};
        group->tables = {rect, lanczosTaps(across, rect.x, rect.width),
                         lanczosTaps(up, rect.y, rect.height)};
        group->input =
            std::make_shared<const RenderPlan>(std::move(inputs), inputOf(group->tables));
        for (const std::size_t member : group->members)
            steps_[member].lanczos = group;
    }
}

std::vector<PixelRect> RenderPlan::requirements(const PixelRect& output) const {
    std::vector<PixelRect> needed(steps_.size());
    for (const std::size_t root : roots_)
        needed[root] = intersection(output, steps_[root].node->extent);
    for (std::size_t i = steps_.size(); i-- > 0;) {
        if (needed[i].isEmpty()) continue;
        const ImageNode& node = *steps_[i].node;
        for (std::size_t k = 0; k < steps_[i].inputs.size(); ++k) {
            const std::size_t input = steps_[i].inputs[k];
            const PixelRect part =
                intersection(inputRequirement(node, k, needed[i]), node.inputs[k].extent());
            needed[input] = bounding(needed[input], part);
        }
    }
    // A group is drawn at once, so its members deliver the same rectangle.
    for (const PlanStep& step : steps_) {
        if (!step.lanczos) continue;
        PixelRect rect;
        for (const std::size_t member : step.lanczos->members)
            rect = bounding(rect, needed[member]);
        for (const std::size_t member : step.lanczos->members)
            needed[member] = rect;
    }
    return needed;
}

// Wide and low for point-wise chains (their planes stay in the second-level cache), lower for long
// ones, which keep more images; taller where a halo around each tile is computed more than once,
// but enough of them to keep all cores busy.
PixelSize RenderPlan::tileSize(int height) const {
    const bool halo = std::any_of(steps_.begin(), steps_.end(), [](const PlanStep& step) {
        const Operation& operation = step.node->operation;
        return std::holds_alternative<LanczosOperation>(operation) ||
               std::holds_alternative<BoxBlurOperation>(operation) ||
               std::holds_alternative<AffineOperation>(operation);
    });
    return {512, halo                         ? std::clamp((height + 7) / 8, 16, 128)
                 : steps_.size() > kLongChain ? 8
                                              : 16};
}

// Other chains, if short, wait for the memory, which delivers rows fastest.
bool RenderPlan::prefersColumns() const {
    const bool isLong = steps_.size() > kLongChain;
    return std::any_of(steps_.begin(), steps_.end(), [isLong](const PlanStep& step) {
        const auto* op = std::get_if<SourceOperation>(&step.node->operation);
        if (!op) return false;
        return op->source->isMadeInParts() || (isLong && !op->source->standing().planes[0]);
    });
}

// Finished pictures are read where they stand, in whole rows: the memory delivers those fastest.
PixelSize RenderPlan::blockSize(const PixelRect& area) const {
    const bool stands = std::all_of(steps_.begin(), steps_.end(), [](const PlanStep& step) {
        const auto* op = std::get_if<SourceOperation>(&step.node->operation);
        return op && op->source->standing().planes[0];
    });
    return stands ? PixelSize{area.width, 8} : tileSize(area.height);
}

} // namespace kelvaro
