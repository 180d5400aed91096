// The output spaces of the pipeline: names, matrices and profiles.
#include "develop/Pipeline.h"

namespace kelvaro {

namespace {

using Rows = std::array<std::array<float, 3>, 3>;

constexpr Rows kIdentity{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
// Linear sRGB to linear Display P3; the gamut kernels hold the same rows.
constexpr Rows kToDisplayP3{{{0.8224621f, 0.1775380f, 0},
                             {0.0331941f, 0.9668058f, 0},
                             {0.0170827f, 0.0723974f, 0.9105199f}}};

} // namespace

std::string_view Pipeline::rawValue(OutputSpace space) {
    return space == OutputSpace::sRGB ? "sRGB" : "displayP3";
}

std::optional<Pipeline::OutputSpace> Pipeline::outputSpace(std::string_view rawValue) {
    for (const OutputSpace space : allOutputSpaces)
        if (Pipeline::rawValue(space) == rawValue) return space;
    return std::nullopt;
}

BitmapFormat Pipeline::bitmapFormat(OutputSpace space, SampleType type) {
    BitmapFormat format;
    format.type = type;
    format.curve = type == SampleType::f32 ? TransferCurve::linear : TransferCurve::sRGB;
    format.toTarget = space == OutputSpace::sRGB ? kIdentity : kToDisplayP3;
    return format;
}

kelvaro::OutputSpace Pipeline::profile(OutputSpace space) {
    return space == OutputSpace::sRGB ? kelvaro::OutputSpace::sRGB
                                      : kelvaro::OutputSpace::displayP3;
}

} // namespace kelvaro
