// Properties over recipes made at random; a failure prints the seed that brings it back.
#include "fakes/SeededRandom.h"
#include "recipe/AdjustmentCatalogue.h"
#include "recipe/MaskControls.h"
#include "recipe/RecipeCoding.h"

#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

namespace kelvaro {
namespace {

// Any bit pattern: denormals, infinities and NaN come up too.
rc::Gen<double> anyDouble() {
    return rc::gen::map(rc::gen::arbitrary<std::uint64_t>(), [](std::uint64_t bits) {
        return std::bit_cast<double>(bits * 0x9E3779B97F4A7C15u);
    });
}

rc::Gen<double> coordinate() {
    return rc::gen::oneOf(anyDouble(), rc::gen::map(rc::gen::inRange(-600, 700),
                                                    [](int percent) { return percent / 100.0; }));
}

rc::Gen<double> finite() {
    return rc::gen::suchThat(anyDouble(), [](double v) { return std::isfinite(v); });
}

rc::Gen<Uuid> uuid() {
    return rc::gen::map(rc::gen::arbitrary<std::uint64_t>(), [](std::uint64_t seed) {
        SeededRandom random(seed);
        return randomUuid(random);
    });
}

rc::Gen<MaskPoint> point() {
    return rc::gen::map(rc::gen::pair(coordinate(), coordinate()), [](const auto& xy) {
        return MaskPoint{xy.first, xy.second};
    });
}

rc::Gen<BrushStroke> stroke() {
    return rc::gen::build<BrushStroke>(
        rc::gen::set(&BrushStroke::points, rc::gen::container<std::vector<MaskPoint>>(point())),
        rc::gen::set(&BrushStroke::radius, coordinate()),
        rc::gen::set(&BrushStroke::feather, anyDouble()),
        rc::gen::set(&BrushStroke::flow, anyDouble()), rc::gen::set(&BrushStroke::erase));
}

rc::Gen<MaskComponent> component() {
    using C = MaskComponent;
    return rc::gen::build<C>(
        rc::gen::set(&C::id, uuid()),
        rc::gen::set(&C::kind, rc::gen::element(C::Kind::brush, C::Kind::linear, C::Kind::radial)),
        rc::gen::set(&C::mode,
                     rc::gen::element(C::Mode::add, C::Mode::subtract, C::Mode::intersect)),
        rc::gen::set(&C::invert), rc::gen::set(&C::start, point()), rc::gen::set(&C::end, point()),
        rc::gen::set(&C::angle, anyDouble()), rc::gen::set(&C::feather, anyDouble()),
        rc::gen::set(&C::strokes, rc::gen::container<std::vector<BrushStroke>>(stroke())));
}

// Code points of all lengths, controls and quotes among them, as UTF-8.
std::string utf8(const std::vector<int>& codePoints) {
    std::string text;
    for (const int c : codePoints) {
        if (c < 0x80)
            text += static_cast<char>(c);
        else
            text += c < 0x800 ? "é" : c < 0x10000 ? "漢" : "🌄";
    }
    return text;
}

LocalMask mask() {
    LocalMask made;
    made.id = *uuid();
    made.name = utf8(*rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 0x12000)));
    made.enabled = *rc::gen::arbitrary<bool>();
    made.invert = *rc::gen::arbitrary<bool>();
    made.amount = *finite();
    // Small lists: their nesting matters here, not their length.
    made.components =
        *rc::gen::resize(10, rc::gen::container<std::vector<MaskComponent>>(component()));
    for (const MaskControl& control : maskControlCatalogue())
        made.*control.field = *finite();
    return made;
}

Adjustments recipe() {
    Adjustments made;
    for (const auto& spec : storedKeyCatalogue()) {
        if (*rc::gen::arbitrary<bool>()) spec.setValue(made, spec.range.clamped(*finite()));
    }
    const int masks = *rc::gen::inRange(0, 4);
    for (int i = 0; i < masks; ++i)
        made.masks.push_back(mask());
    return made;
}

Adjustments sanitisedRecipe() {
    Adjustments made = recipe();
    for (LocalMask& local : made.masks)
        local = sanitised(std::move(local));
    return made;
}

RC_GTEST_PROP(RecipeProperty, AnySanitisedRecipeSurvivesItsStoredForm, ()) {
    const Adjustments made = sanitisedRecipe();
    SeededRandom random;
    const auto text = encodedText(made);
    RC_ASSERT(text.has_value());
    const auto read = decodeAdjustments(*text, random);
    RC_ASSERT(read.has_value());
    RC_ASSERT(*read == made);
    RC_ASSERT(std::hash<Adjustments>()(*read) == std::hash<Adjustments>()(made));
    RC_ASSERT(encodedText(*read).value() == *text);
}

RC_GTEST_PROP(RecipeProperty, SanitisingTwiceEqualsOnce, ()) {
    const MaskComponent once = sanitised(*rc::gen::resize(10, component()));
    RC_ASSERT(sanitised(once) == once);
}

RC_GTEST_PROP(RecipeProperty, WritingSanitisesWhatReadingWould, ()) {
    const LocalMask given = mask();
    Adjustments made;
    made.masks = {given};
    SeededRandom random;
    const auto read = decodeAdjustments(encodedText(made).value(), random);
    RC_ASSERT(read.has_value());
    RC_ASSERT(read->masks.at(0) == sanitised(given));
}

RC_GTEST_PROP(RecipeProperty, DamagedTextIsRefusedOrReadIntoARecordThatSurvives, ()) {
    std::string text = encodedText(sanitisedRecipe()).value();
    const int damages = *rc::gen::inRange(1, 6);
    for (int i = 0; i < damages; ++i) {
        const auto at = *rc::gen::inRange<std::size_t>(0, text.size());
        const auto length = *rc::gen::inRange<std::size_t>(0, 12);
        const std::string with = *rc::gen::elementOf(
            std::vector<std::string>{"", "1e400", "null", "true", "\"", "{", "]", ",", "\\", "-",
                                     "13", "\xFF", "[[[[", "e9", " "});
        text.replace(at, length, with);
    }
    SeededRandom random;
    const auto read = decodeAdjustments(text, random);
    RC_CLASSIFY(read.has_value());
    if (!read) {
        RC_ASSERT(!read.error().message.empty());
        return;
    }
    for (const auto& spec : storedKeyCatalogue()) {
        RC_ASSERT(spec.range.clamped(spec.value(*read)) == spec.value(*read));
    }
    RC_ASSERT(decodeAdjustments(encodedText(*read).value(), random).value() == *read);
}

} // namespace
} // namespace kelvaro
