#include "recipe/AdjustmentCatalogue.h"

#include "base/Require.h"
#include "recipe/Adjustments.h"

namespace kelvaro {
namespace {

using Group = AdjustmentSpec::Group;
using Format = AdjustmentSpec::Format;
using Track = AdjustmentSpec::Track;
using A = Adjustments;

// `shadows` may lift further than it lowers, and `grain` has no negative side: both on purpose.
// clang-format off
constexpr std::array sliders{
    AdjustmentSpec{"temperature", "Temperature", &A::temperature, {-150, 150}, Group::whiteBalance, Format::kelvin, Track::temperature},
    AdjustmentSpec{"tint", "Tint", &A::tint, {-100, 100}, Group::whiteBalance, Format::signed_, Track::tint},
    AdjustmentSpec{"blackAndWhite", "Black & White", &A::blackAndWhite, {0, 1}, Group::whiteBalance, Format::toggle, Track::plain},
    AdjustmentSpec{"exposure", "Exposure", &A::exposure, {-4, 4}, Group::basic, Format::ev, Track::plain},
    AdjustmentSpec{"contrast", "Contrast", &A::contrast, {-100, 100}, Group::basic, Format::signed_, Track::plain},
    AdjustmentSpec{"highlights", "Highlights", &A::highlights, {-100, 100}, Group::basic, Format::signed_, Track::plain},
    AdjustmentSpec{"shadows", "Shadows", &A::shadows, {-100, 150}, Group::basic, Format::signed_, Track::plain},
    AdjustmentSpec{"white", "White", &A::white, {-100, 100}, Group::basic, Format::signed_, Track::plain},
    AdjustmentSpec{"black", "Black", &A::black, {-100, 100}, Group::basic, Format::signed_, Track::plain},
    AdjustmentSpec{"hue", "Hue", &A::hue, {-100, 100}, Group::color, Format::signed_, Track::hue},
    AdjustmentSpec{"saturation", "Saturation", &A::saturation, {-100, 100}, Group::color, Format::signed_, Track::saturation},
    AdjustmentSpec{"vibrance", "Vibrance", &A::vibrance, {-100, 100}, Group::color, Format::signed_, Track::vibrance},
    AdjustmentSpec{"sharpness", "Sharpness", &A::sharpness, {-100, 100}, Group::detail, Format::signed_, Track::plain},
    AdjustmentSpec{"clarity", "Clarity", &A::clarity, {-100, 100}, Group::effects, Format::signed_, Track::plain},
    AdjustmentSpec{"dehaze", "Dehaze", &A::dehaze, {-100, 100}, Group::effects, Format::signed_, Track::plain},
    AdjustmentSpec{"vignette", "Vignette", &A::vignette, {-100, 100}, Group::effects, Format::signed_, Track::plain},
    AdjustmentSpec{"grain", "Grain", &A::grain, {0, 100}, Group::effects, Format::signed_, Track::plain},
    AdjustmentSpec{"grainSize", "Grain Size", &A::grainSize, {-100, 100}, Group::effects, Format::signed_, Track::plain},
};

constexpr std::array withoutSlider{
    AdjustmentSpec{"brightness", "Brightness", &A::brightness, {-100, 100}, Group::basic, Format::signed_, Track::plain},
    AdjustmentSpec{"cropLeft", "Crop Left", &A::cropLeft, {0, 0.98}, Group::crop, Format::signed_, Track::plain},
    AdjustmentSpec{"cropRight", "Crop Right", &A::cropRight, {0, 0.98}, Group::crop, Format::signed_, Track::plain},
    AdjustmentSpec{"cropTop", "Crop Top", &A::cropTop, {0, 0.98}, Group::crop, Format::signed_, Track::plain},
    AdjustmentSpec{"cropBottom", "Crop Bottom", &A::cropBottom, {0, 0.98}, Group::crop, Format::signed_, Track::plain},
    AdjustmentSpec{"straighten", "Straighten", &A::straighten, {-45, 45}, Group::crop, Format::signed_, Track::plain},
};
// clang-format on

constexpr auto stored = [] {
    std::array<AdjustmentSpec, sliders.size() + withoutSlider.size()> all{};
    std::copy(sliders.begin(), sliders.end(), all.begin());
    std::copy(withoutSlider.begin(), withoutSlider.end(), all.begin() + sliders.size());
    return all;
}();

// A field without an entry would be neither saved, compared with 0 nor hashed.
static_assert(sizeof(Adjustments) == sizeof(std::int64_t) + stored.size() * sizeof(double) +
                                         sizeof(std::vector<LocalMask>));

// The rows of a panel are neighbours, so that a panel is a part of the list.
static_assert(std::is_sorted(sliders.begin(), sliders.end(),
                             [](const auto& a, const auto& b) { return a.group < b.group; }));

} // namespace

std::span<const AdjustmentSpec> sliderCatalogue() {
    return sliders;
}

std::span<const AdjustmentSpec> sliderCatalogue(Group group) {
    const auto inGroup = [group](const AdjustmentSpec& spec) { return spec.group == group; };
    const auto first = std::find_if(sliders.begin(), sliders.end(), inGroup);
    return {first, std::find_if_not(first, sliders.end(), inGroup)};
}

std::span<const AdjustmentSpec> storedKeyCatalogue() {
    return stored;
}

const AdjustmentSpec* findStoredKey(std::string_view id) {
    const auto found = std::find_if(stored.begin(), stored.end(),
                                    [id](const AdjustmentSpec& spec) { return spec.id == id; });
    return found == stored.end() ? nullptr : &*found;
}

double AdjustmentSpec::value(const Adjustments& adjustments) const {
    KELVARO_REQUIRE(keyPath != nullptr);
    return adjustments.*keyPath;
}

void AdjustmentSpec::setValue(Adjustments& adjustments, double value) const {
    KELVARO_REQUIRE(keyPath != nullptr);
    adjustments.*keyPath = value;
}

std::string_view title(AdjustmentSpec::Group group) {
    static constexpr std::array<std::string_view, AdjustmentSpec::allGroups.size()> titles{
        "White Balance", "Basic", "Hue & Saturation", "Detail", "Effects", "Crop"};
    return titles[static_cast<std::size_t>(group)];
}

} // namespace kelvaro
