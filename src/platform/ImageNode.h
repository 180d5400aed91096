// What an Image handle points at: one operation of the lazy graph, with its inputs. Renderers and
// tests walk it; everybody else uses the functions of platform/Image.h.
#pragma once

#include "platform/Image.h"

#include <variant>

namespace kelvaro {

struct SourceOperation {
    std::shared_ptr<const PixelSource> source;
};
struct ConstantOperation {
    std::array<float, 4> value; // premultiplied
};
struct KernelOperation {
    const Kernel* kernel;
    std::vector<double> uniforms;
};
struct ColourMatrixOperation {
    Matrix3 rows;
};
// Output position → input position, per axis: in = origin + (out − outputOrigin) / scale.
struct LanczosOperation {
    double scaleX, scaleY;
    Point inputOrigin, outputOrigin;
    bool operator==(const LanczosOperation&) const = default;
};
struct BoxBlurOperation {
    int radius;
};
struct ClampOperation {};
struct CropOperation {};
struct TranslateOperation {
    int dx, dy;
};
struct AffineOperation {
    AffineTransform inverse; // from output to input coordinates
    Sampling sampling;
};
struct StretchOperation {};
struct OverOperation {};
struct MaximumOperation {};

using Operation = std::variant<SourceOperation, ConstantOperation, KernelOperation,
                               ColourMatrixOperation, LanczosOperation, BoxBlurOperation,
                               ClampOperation, CropOperation, TranslateOperation, AffineOperation,
                               StretchOperation, OverOperation, MaximumOperation>;

struct ImageNode {
    Operation operation;
    std::vector<Image> inputs;
    PixelRect extent;
    bool hasAlpha = false; // false: opaque everywhere inside the extent
};

// The name of a node's operation: "source", "lanczos", … or the kernel's name.
const char* operationName(const ImageNode& node);

} // namespace kelvaro
