// One entry of an adjustment catalogue: which field it stands for, how it is called, its range, its
// panel and how its value is shown. Values are in catalogue units (mostly slider units, −100 …
// 100).
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace kelvaro {

struct Adjustments;

struct AdjustmentRange {
    double lower = 0, upper = 0;

    // The lower bound first, then the upper.
    constexpr double clamped(double value) const { return std::min(std::max(value, lower), upper); }
    bool operator==(const AdjustmentRange&) const = default;
};

struct AdjustmentSpec {
    enum class Group { whiteBalance, basic, color, detail, effects, crop };
    enum class Format { signed_, ev, kelvin, toggle };
    enum class Track { plain, temperature, tint, hue, saturation, vibrance };

    static constexpr std::array allGroups{Group::whiteBalance, Group::basic,   Group::color,
                                          Group::detail,       Group::effects, Group::crop};

    std::string_view id; // the field's name and the key under which it is stored
    std::string_view title;
    double Adjustments::*keyPath = nullptr;
    AdjustmentRange range;
    Group group = Group::basic;
    Format format = Format::signed_;
    Track track = Track::plain;

    double value(const Adjustments& adjustments) const;
    // Stores the value unchanged: clamping is the caller's part.
    void setValue(Adjustments& adjustments, double value) const;
};

// The title of the panel that a group stands for.
std::string_view title(AdjustmentSpec::Group group);

} // namespace kelvaro
