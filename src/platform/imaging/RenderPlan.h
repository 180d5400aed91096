// What a render must compute: the nodes of the graph below some images in an order in which every
// input comes before its users, and, for one output rectangle, the rectangle each node has to
// deliver.
#pragma once

#include "platform/ImageNode.h"
#include "platform/imaging/Resampling.h"

#include <memory>
#include <optional>
#include <vector>

namespace kelvaro {

class RenderPlan;

// The weights of a Lanczos step over all that a render delivers of it, worked out once.
struct LanczosTables {
    PixelRect output;
    FilterTaps columns, lines;
};

// Lanczos steps of one geometry. They read so much more than they deliver that their inputs are
// drawn in blocks of their own, together, from one plan.
struct LanczosGroup {
    LanczosTables tables;
    std::vector<std::size_t> members; // steps; input->roots() are their inputs in this order
    std::shared_ptr<const RenderPlan> input;
};

// The positions of a stretch over all that a render delivers of it, worked out once.
struct StretchTables {
    PixelRect output;
    LinearTaps columns, lines;
};

struct PlanStep {
    const ImageNode* node;
    std::vector<std::size_t> inputs; // earlier steps; none for Lanczos steps
    std::shared_ptr<const LanczosGroup> lanczos;
    std::shared_ptr<const StretchTables> stretch;
    int planes = 0;           // colour planes that somebody reads, counted from red
    bool feedsKernel = false; // kernels want their rows aligned
};

class RenderPlan {
public:
    // Planned for tiles of `output`, over which all images are drawn.
    RenderPlan(std::vector<Image> images, const PixelRect& output);
    const std::vector<PlanStep>& steps() const { return steps_; }
    // The step that makes each of the images.
    const std::vector<std::size_t>& roots() const { return roots_; }
    // One rectangle per step, inside the node's extent; empty where nothing is needed.
    std::vector<PixelRect> requirements(const PixelRect& output) const;
    // The tiles in which a rectangle of that height is best drawn.
    PixelSize tileSize(int height) const;
    // Whether tiles are taken column by column; else row by row. Sources that make their pixels
    // where they are read may do so in parts that are taller than a tile: each had better be read
    // by one thread, and to its end before the next is begun.
    bool prefersColumns() const;
    // The blocks in which a Lanczos step best draws such an area of its inputs.
    PixelSize blockSize(const PixelRect& area) const;

private:
    void collectSteps();
    void countReads();
    void prepareStretches(const PixelRect& output);
    void prepareLanczos(const PixelRect& output);

    std::vector<Image> images_; // keep the nodes alive
    std::vector<PlanStep> steps_;
    std::vector<std::size_t> roots_;
};

// What `node` reads of input `index` to deliver `rect`; may reach outside the input's extent.
PixelRect inputRequirement(const ImageNode& node, std::size_t index, const PixelRect& rect);

} // namespace kelvaro
