// Graphs whose kernels run in their scalar form: the same text, one float at a time.
#pragma once

#include "platform/ImageNode.h"
#include "platform/Kernel.h"

#include <deque>
#include <map>
#include <memory>

namespace kelvaro::test {

class ScalarForm {
public:
    // The image is drawn while this object lives.
    Image of(const Image& image) {
        const auto found = done_.find(&image.node());
        if (found != done_.end()) return found->second;
        ImageNode node = image.node();
        for (Image& input : node.inputs)
            input = of(input);
        if (auto* operation = std::get_if<KernelOperation>(&node.operation)) {
            Kernel& kernel = kernels_.emplace_back(*operation->kernel);
            kernel.vector = kernel.scalar;
            operation->kernel = &kernel;
        }
        return done_[&image.node()] = Image(std::make_shared<const ImageNode>(std::move(node)));
    }

private:
    std::deque<Kernel> kernels_; // their addresses are in the graph
    std::map<const ImageNode*, Image> done_;
};

} // namespace kelvaro::test
