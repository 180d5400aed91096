// A plane of numbers and the window filters that analysis needs on it. Windows are squares of
// 2 radius + 1 whose part outside the plane repeats the edge. Not thread-safe; a plain value.
#pragma once

#include "base/Geometry.h"

#include <cstddef>
#include <vector>

namespace kelvaro {

class ScalarField {
public:
    ScalarField() = default;
    explicit ScalarField(PixelSize size)
        : size_(size), values_(std::size_t(size.width) * std::size_t(size.height)) {}

    PixelSize size() const { return size_; }
    std::size_t count() const { return values_.size(); }
    double& operator[](std::size_t index) { return values_[index]; }
    double operator[](std::size_t index) const { return values_[index]; }
    double* row(int y) { return values_.data() + std::size_t(y) * std::size_t(size_.width); }
    const double* row(int y) const {
        return values_.data() + std::size_t(y) * std::size_t(size_.width);
    }
    std::vector<double>& values() { return values_; }
    const std::vector<double>& values() const { return values_; }

private:
    PixelSize size_;
    std::vector<double> values_; // row by row
};

ScalarField windowMinimum(const ScalarField& field, int radius);
ScalarField windowMaximum(const ScalarField& field, int radius);
ScalarField windowMean(const ScalarField& field, int radius);

} // namespace kelvaro
