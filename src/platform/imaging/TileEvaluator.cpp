#include "platform/imaging/TileEvaluator.h"

#include "platform/ImageSpace.h"
#include "platform/imaging/LanczosSums.h"
#include "platform/imaging/RowOperations.h"
#include "platform/imaging/TileOperations.h"
#include "platform/imaging/kernels/Kernels.h"

#include <cstring>

namespace kelvaro {

namespace {

int planeCount(const ConstTileView& view) {
    return view.hasAlpha() ? 4 : 3;
}

// Copies what `in` has of `out`'s rectangle; the rest becomes transparent black.
void copyPadded(const ConstTileView& in, const TileView& out) {
    const PixelRect shared = intersection(in.rect, out.rect);
    const auto width = std::size_t(out.rect.width);
    for (int plane = 0; plane < (out.hasAlpha() ? 4 : 3); ++plane) {
        for (int row = 0; row < out.rect.height; ++row) {
            float* to = out.row(plane, row);
            if (!(shared == out.rect)) std::memset(to, 0, width * sizeof(float));
            const int line = lineOfRow(out.rect, row);
            if (line < shared.y || line >= shared.top()) continue;
            float* begin = to + (shared.x - out.rect.x);
            if (plane == 3 && !in.hasAlpha()) {
                std::fill_n(begin, shared.width, 1.0f);
                continue;
            }
            const float* from = in.row(plane, rowOfLine(in.rect, line)) + (shared.x - in.rect.x);
            std::memcpy(begin, from, std::size_t(shared.width) * sizeof(float));
        }
    }
}

void runKernel(const KernelOperation& op, const ConstTileView* inputs, const TileView& out) {
    KernelRow row{};
    row.count = std::size_t(out.rect.width);
    row.uniforms = op.uniforms.data();
    row.x = out.rect.x + 0.5;
    for (int r = 0; r < out.rect.height; ++r) {
        for (int i = 0; i < op.kernel->inputs; ++i)
            for (int plane = 0; plane < kPlanes; ++plane)
                row.inputs[i][plane] = inputs[i].planes[plane] ? inputs[i].row(plane, r) : nullptr;
        for (int plane = 0; plane < 3; ++plane)
            row.output[plane] = out.row(plane, r);
        row.y = centreOfRow(out.rect, r);
        op.kernel->vector(row);
    }
}

void copyAlpha(const ConstTileView& in, const TileView& out) {
    if (!out.hasAlpha() || out.planes[3] == in.planes[3]) return;
    for (int row = 0; row < out.rect.height; ++row)
        std::memcpy(out.row(3, row), in.row(3, row), std::size_t(out.rect.width) * sizeof(float));
}

void overTile(const ConstTileView& top, const ConstTileView& bottom, const TileView& out) {
    const auto count = std::size_t(out.rect.width);
    for (int plane = 0; plane < planeCount(out); ++plane)
        for (int row = 0; row < out.rect.height; ++row)
            rows::over(out.row(plane, row), top.row(plane, row), top.row(3, row),
                       bottom.row(plane, row), count);
}

void maximumTile(const ConstTileView& a, const ConstTileView& b, const TileView& out) {
    const auto count = std::size_t(out.rect.width);
    for (int plane = 0; plane < planeCount(out); ++plane)
        for (int row = 0; row < out.rect.height; ++row)
            rows::maximum(out.row(plane, row), a.row(plane, row), b.row(plane, row), count);
}

class Evaluation {
public:
    Evaluation(const RenderPlan& plan, const PixelRect& output, TilePool& pool)
        : plan_(plan),
          pool_(pool),
          needed_(plan.requirements(output)),
          tiles_(plan.steps().size()),
          standing_(plan.steps().size()),
          users_(plan.steps().size()) {}

    void run(const PixelRect& output, const UseTiles& use) {
        const auto& steps = plan_.steps();
        for (const std::size_t root : plan_.roots())
            ++users_[root];
        for (std::size_t i = 0; i < steps.size(); ++i)
            if (!needed_[i].isEmpty())
                for (const std::size_t input : steps[i].inputs)
                    ++users_[input];
        for (std::size_t i = 0; i < steps.size(); ++i) {
            if (needed_[i].isEmpty()) continue;
            standing_[i] = standing(steps[i], needed_[i]);
            if (tiles_[i].isEmpty() && !standing_[i].planes[0])
                tiles_[i] = evaluate(steps[i], needed_[i]);
            for (const std::size_t input : steps[i].inputs)
                if (--users_[input] == 0) tiles_[input] = Tile();
        }
        std::vector<Tile> padded(plan_.roots().size());
        std::vector<ConstTileView> finished;
        for (std::size_t i = 0; i < padded.size(); ++i)
            finished.push_back(covering(plan_.roots()[i], output, false, padded[i]));
        use(finished);
    }

private:
    // The part of a source's pixels that is needed, where they stand and lie as they must.
    static ConstTileView standing(const PlanStep& step, const PixelRect& rect) {
        const auto* op = std::get_if<SourceOperation>(&step.node->operation);
        if (!op) return {};
        ConstTileView all = op->source->standing();
        const std::ptrdiff_t across = rect.x - all.rect.x;
        if (!all.planes[0] || (step.feedsKernel && across % kRowGroup != 0)) return {};
        ConstTileView part{};
        part.rect = rect;
        part.stride = all.stride;
        const int top = rowOfLine(all.rect, lineOfRow(rect, 0));
        for (int plane = 0; plane < planeCount(all); ++plane)
            part.planes[plane] = all.row(plane, top) + across;
        return part;
    }

    ConstTileView viewOf(std::size_t step) const {
        return standing_[step].planes[0] ? standing_[step] : ConstTileView(tiles_[step].view());
    }

    // What `step` has made over exactly `rect`: the tile itself where it fits, else a copy in
    // `scratch` (transparent outside the image's extent).
    ConstTileView covering(std::size_t step, const PixelRect& rect, bool needsAlpha,
                           Tile& scratch) {
        const ConstTileView made = viewOf(step);
        const bool alpha = needsAlpha || made.hasAlpha() || !made.rect.contains(rect);
        if (made.rect == rect && alpha == made.hasAlpha()) return made;
        scratch = Tile(pool_, rect, alpha);
        copyPadded(made, scratch.view());
        return scratch.view();
    }

    // Whether `step` may write over its first input's tile, or keep it.
    bool isLastUse(std::size_t input) const {
        return users_[input] == 1 && !standing_[input].planes[0];
    }

    Tile evaluate(const PlanStep& step, const PixelRect& rect) {
        return std::visit([&](const auto& op) { return evaluate(step, rect, op); },
                          step.node->operation);
    }

    Tile evaluate(const PlanStep& step, const PixelRect& rect, const SourceOperation& op) {
        Tile out(pool_, rect, step.node->hasAlpha);
        op.source->read(out.view());
        return out;
    }

    Tile evaluate(const PlanStep& step, const PixelRect& rect, const ConstantOperation& op) {
        Tile out(pool_, rect, step.node->hasAlpha);
        for (int plane = 0; plane < planeCount(out.view()); ++plane)
            for (int row = 0; row < rect.height; ++row)
                rows::fill(out.view().row(plane, row), op.value[std::size_t(plane)],
                           std::size_t(rect.width));
        return out;
    }

    Tile evaluate(const PlanStep& step, const PixelRect& rect, const KernelOperation& op) {
        Tile scratch[kMaximumKernelInputs];
        ConstTileView inputs[kMaximumKernelInputs];
        for (std::size_t k = 0; k < step.inputs.size(); ++k)
            inputs[k] = covering(step.inputs[k], rect, false, scratch[k]);
        Tile out;
        if (!step.inputs.empty() && scratch[0].isEmpty() && isLastUse(step.inputs[0]))
            out = std::move(tiles_[step.inputs[0]]); // in place
        else if (!scratch[0].isEmpty())
            out = std::move(scratch[0]);
        else
            out = Tile(pool_, rect, !step.inputs.empty() && inputs[0].hasAlpha());
        runKernel(op, inputs, out.view());
        if (!step.inputs.empty()) copyAlpha(inputs[0], out.view());
        return out;
    }

    Tile evaluate(const PlanStep& step, const PixelRect& rect, const ColourMatrixOperation& op) {
        KernelOperation matrix{&kernel::colourMatrix(), {}};
        for (const auto& row : op.rows)
            matrix.uniforms.insert(matrix.uniforms.end(), row.begin(), row.end());
        return evaluate(step, rect, matrix);
    }

    // Makes the tiles of the whole group; returns the step's own.
    Tile evaluate(const PlanStep& step, const PixelRect& rect, const LanczosOperation&) {
        const LanczosGroup& group = *step.lanczos;
        std::vector<LanczosSums> sums;
        for (const std::size_t member : group.members)
            sums.emplace_back(group.tables, rect, plan_.steps()[member].node->hasAlpha, pool_);
        const PixelRect& area = sums.front().input();
        const PixelSize size = group.input->blockSize(area);
        for (int x = area.x; x < area.right(); x += size.width)
            for (int y = area.y; y < area.top(); y += size.height) {
                const PixelRect block = intersection({x, y, size.width, size.height}, area);
                evaluateTiles(*group.input, block, pool_, [&](const auto& tiles) {
                    for (std::size_t i = 0; i < sums.size(); ++i)
                        sums[i].add(tiles[i]);
                });
            }
        Tile own;
        for (std::size_t i = 0; i < sums.size(); ++i) {
            const PlanStep& member = plan_.steps()[group.members[i]];
            Tile out(pool_, rect, member.node->hasAlpha);
            sums[i].writeTo(out.view());
            (&member == &step ? own : tiles_[group.members[i]]) = std::move(out);
        }
        return own;
    }

    Tile evaluate(const PlanStep& step, const PixelRect& rect, const BoxBlurOperation& op) {
        Tile scratch;
        const ConstTileView in =
            covering(step.inputs[0], outset(rect, op.radius), step.node->hasAlpha, scratch);
        Tile out(pool_, rect, in.hasAlpha());
        boxBlurTile(op.radius, step.planes, in, out.view());
        return out;
    }

    Tile evaluate(const PlanStep& step, const PixelRect& rect, const ClampOperation&) {
        const ConstTileView in = viewOf(step.inputs[0]);
        Tile out(pool_, rect, in.hasAlpha());
        clampTile(in, out.view());
        return out;
    }

    Tile evaluate(const PlanStep& step, const PixelRect& rect, const CropOperation&) {
        Tile scratch;
        covering(step.inputs[0], rect, false, scratch);
        if (!scratch.isEmpty()) return scratch;
        return copyOrMove(step, rect);
    }

    Tile evaluate(const PlanStep& step, const PixelRect& rect, const TranslateOperation& op) {
        ConstTileView moved = viewOf(step.inputs[0]);
        moved.rect.x += op.dx;
        moved.rect.y += op.dy;
        Tile out(pool_, rect, moved.hasAlpha());
        copyPadded(moved, out.view());
        return out;
    }

    Tile evaluate(const PlanStep& step, const PixelRect& rect, const AffineOperation& op) {
        const ConstTileView in = viewOf(step.inputs[0]);
        Tile out(pool_, rect, in.hasAlpha());
        affineTile(op, step.node->inputs[0].extent(), in, out.view());
        return out;
    }

    Tile evaluate(const PlanStep& step, const PixelRect& rect, const StretchOperation&) {
        const ConstTileView in = viewOf(step.inputs[0]);
        Tile out(pool_, rect, in.hasAlpha());
        stretchTile(*step.stretch, step.planes, in, out.view(), pool_);
        return out;
    }

    Tile evaluate(const PlanStep& step, const PixelRect& rect, const OverOperation&) {
        Tile scratch[2];
        const ConstTileView top = covering(step.inputs[0], rect, true, scratch[0]);
        const ConstTileView bottom =
            covering(step.inputs[1], rect, step.node->hasAlpha, scratch[1]);
        Tile out(pool_, rect, bottom.hasAlpha());
        overTile(top, bottom, out.view());
        return out;
    }

    Tile evaluate(const PlanStep& step, const PixelRect& rect, const MaximumOperation&) {
        Tile scratch[2];
        const ConstTileView a = covering(step.inputs[0], rect, step.node->hasAlpha, scratch[0]);
        const ConstTileView b = covering(step.inputs[1], rect, step.node->hasAlpha, scratch[1]);
        Tile out(pool_, rect, step.node->hasAlpha);
        maximumTile(a, b, out.view());
        return out;
    }

    Tile copyOrMove(const PlanStep& step, const PixelRect& rect) {
        if (isLastUse(step.inputs[0])) return std::move(tiles_[step.inputs[0]]);
        const ConstTileView in = viewOf(step.inputs[0]);
        Tile out(pool_, rect, in.hasAlpha());
        copyPadded(in, out.view());
        return out;
    }

    const RenderPlan& plan_;
    TilePool& pool_;
    std::vector<PixelRect> needed_;
    std::vector<Tile> tiles_;
    std::vector<ConstTileView> standing_; // of sources that are read where they are
    std::vector<int> users_;              // steps and roots that still need the tile
};

} // namespace

void evaluateTiles(const RenderPlan& plan, const PixelRect& output, TilePool& pool,
                   const UseTiles& use) {
    Evaluation(plan, output, pool).run(output, use);
}

} // namespace kelvaro
