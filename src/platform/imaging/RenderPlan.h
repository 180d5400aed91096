// What a render must compute: the nodes of the graph below one image in an order in which every
// input comes before its users, and, for one output rectangle, the rectangle each node has to
// deliver.
#pragma once

#include "platform/ImageNode.h"
#include "platform/imaging/Resampling.h"

#include <optional>
#include <vector>

namespace kelvaro {

// The weights of a Lanczos step over all that a render delivers of it, worked out once.
struct LanczosTables {
    PixelRect output;
    FilterTaps columns, lines;
};

struct PlanStep {
    const ImageNode* node;
    std::vector<int> inputs; // indices of earlier steps
    std::optional<LanczosTables> lanczos;
};

class RenderPlan {
public:
    // Planned for tiles of `output`.
    RenderPlan(const Image& image, const PixelRect& output);
    const std::vector<PlanStep>& steps() const {
        return steps_;
    } // the last one is the image itself
    // One rectangle per step, inside the node's extent; empty where nothing is needed.
    std::vector<PixelRect> requirements(const PixelRect& output) const;
    // Whether some step reads more of its input than it delivers, so that larger tiles pay.
    bool hasNeighbourhoods() const;

private:
    void collectSteps();
    void prepareTables(const PixelRect& output);

    Image root_; // keeps the nodes alive
    std::vector<PlanStep> steps_;
};

// What `node` reads of input `index` to deliver `rect`; may reach outside the input's extent.
PixelRect inputRequirement(const ImageNode& node, std::size_t index, const PixelRect& rect);

} // namespace kelvaro
