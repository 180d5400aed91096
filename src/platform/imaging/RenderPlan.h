// What a render must compute: the nodes of the graph below one image in an order in which every
// input comes before its users, and, for one output rectangle, the rectangle each node has to
// deliver.
#pragma once

#include "platform/ImageNode.h"

#include <vector>

namespace kelvaro {

struct PlanStep {
    const ImageNode* node;
    std::vector<int> inputs; // indices of earlier steps
};

class RenderPlan {
public:
    explicit RenderPlan(const Image& image);
    const std::vector<PlanStep>& steps() const {
        return steps_;
    } // the last one is the image itself
    // One rectangle per step, inside the node's extent; empty where nothing is needed.
    std::vector<PixelRect> requirements(const PixelRect& output) const;
    // Whether some step reads more of its input than it delivers, so that larger tiles pay.
    bool hasNeighbourhoods() const;

private:
    Image root_; // keeps the nodes alive
    std::vector<PlanStep> steps_;
};

// What `node` reads of input `index` to deliver `rect`; may reach outside the input's extent.
PixelRect inputRequirement(const ImageNode& node, std::size_t index, const PixelRect& rect);

} // namespace kelvaro
