#include "recipe/RecipeCoding.h"

#include "fakes/SeededRandom.h"
#include "recipe/AdjustmentCatalogue.h"

#include <cmath>
#include <gmock/gmock.h>

namespace kelvaro {
namespace {

constexpr const char* newer = "This edit needs a newer Kelvaro.";
constexpr const char* notFinite = "Adjustment must be finite.";
using testing::HasSubstr;

Result<Adjustments, DecodeFailure> decoded(std::string_view text) {
    SeededRandom random;
    return decodeAdjustments(text, random);
}

Adjustments with(double Adjustments::*field, double value) {
    Adjustments adjustments;
    adjustments.*field = value;
    return adjustments;
}

TEST(DecodeTest, ReadsKnownKeysIntoTheirRanges) {
    using A = Adjustments;
    struct Case {
        const char* text;
        Adjustments expected;
    };
    for (const auto& [text, expected] : {
             Case{"{}", {}},
             Case{R"({"exposure": 9})", with(&A::exposure, 4)},
             Case{R"({"shadows": 150})", with(&A::shadows, 150)},
             Case{R"({"shadows": 151})", with(&A::shadows, 150)},
             Case{R"({"shadows": -101})", with(&A::shadows, -100)},
             Case{R"({"grain": -5})", with(&A::grain, 0)},
             Case{R"({"cropLeft": 1.5, "cropRight": -1})", with(&A::cropLeft, 0.98)},
             Case{R"({"brightness": 30})", with(&A::brightness, 30)},
             Case{R"({"tint": 12345678901234567890123})", with(&A::tint, 100)},
             Case{R"({"tint": -1e308})", with(&A::tint, -100)},
             Case{R"({"tint": 1e-400})", {}},
             Case{R"({"tint": null, "masks": null, "processVersion": null})", {}},
             Case{R"({"tint": 1, "tint": 2})", with(&A::tint, 2)},
             Case{R"({"Tint": 1, "tint ": 2, "future": 1e400})", {}},
             Case{R"({"blackPoint": 20})", with(&A::black, -20)},
             Case{R"({"blackPoint": 500})", with(&A::black, -100)},
             Case{R"({"blackPoint": 0})", {}},
             Case{R"({"black": 5, "blackPoint": 20})", with(&A::black, 5)},
             Case{R"({"black": 5, "blackPoint": 1e400})", with(&A::black, 5)},
             Case{R"({"black": null, "blackPoint": 20})", with(&A::black, -20)},
             Case{R"({"editedAt": "yesterday"})", {}},
             Case{"\xEF\xBB\xBF{\"tint\": 3}", with(&A::tint, 3)},
         }) {
        const auto result = decoded(text);
        ASSERT_TRUE(result) << text << ": " << result.error().message;
        EXPECT_EQ(*result, expected) << text;
        EXPECT_EQ(result->processVersion, 12);
    }
}

TEST(DecodeTest, AcceptsVersionsUpToOursInAnySpelling) {
    for (const char* version :
         {"12", "3", "12.0", "1.2e1", "120e-1", "0", "-4", "-1e400", "null"}) {
        EXPECT_TRUE(decoded(std::string(R"({"processVersion": )") + version + "}")) << version;
    }
}

TEST(DecodeTest, RefusesNewerVersionsInAnySpellingBeforeLookingAtAnythingElse) {
    for (const char* version : {"13", "13.0", "1.3e1", "130e-1", "0.13e2", "99999999999999999999",
                                "18446744073709551629", "1e30", "1e400"}) {
        for (const char* rest : {"", R"(, "exposure": 1e400)", R"(, "exposure": "future")"}) {
            const auto result =
                decoded(std::string(R"({"processVersion": )") + version + rest + "}");
            ASSERT_FALSE(result) << version;
            EXPECT_EQ(result.error().kind, FailureKind::newerVersion) << version << rest;
            EXPECT_EQ(result.error().message, newer);
        }
    }
}

TEST(DecodeTest, NamesTheKeyOfWhatItRefuses) {
    struct Case {
        const char *text, *key, *message;
    };
    for (const auto& [text, key, message] : {
             Case{R"({"exposure": 1e400})", "exposure", notFinite},
             Case{R"({"straighten": -1e400})", "straighten", notFinite},
             Case{R"({"blackPoint": 1e400})", "blackPoint", notFinite},
             Case{R"({"masks": [{"clarity": 1e400}]})", "clarity", notFinite},
             Case{R"({"masks": [{}, {"amount": -1e400}]})", "amount", notFinite},
             Case{R"({"tint": true})", "tint", "The edit's “tint” is not a number."},
             Case{R"({"tint": "5"})", "tint", "The edit's “tint” is not a number."},
             Case{R"({"tint": [5]})", "tint", "The edit's “tint” is not a number."},
             Case{R"({"blackPoint": false})", "blackPoint",
                  "The edit's “blackPoint” is not a number."},
             Case{R"({"processVersion": "13"})", "processVersion",
                  "The edit's “processVersion” is not a number."},
             Case{R"({"processVersion": true})", "processVersion",
                  "The edit's “processVersion” is not a number."},
             Case{R"({"processVersion": 13.5})", "processVersion",
                  "The edit's “processVersion” is not a whole number."},
             Case{R"({"masks": {}})", "masks", "The edit's “masks” is not a list."},
             Case{R"({"masks": [5]})", "masks", "The edit's “masks” is not a list of objects."},
             Case{R"({"masks": [{"name": 5}]})", "name", "The edit's “name” is not a text."},
             Case{R"({"masks": [{"enabled": 1}]})", "enabled",
                  "The edit's “enabled” is not true or false."},
             Case{R"({"masks": [{"components": [{"mode": "add"}]}]})", "kind",
                  "The edit's “kind” is not a kind of shape."},
             Case{R"({"masks": [{"components": [{"kind": "star", "mode": "add"}]}]})", "kind",
                  "The edit's “kind” is not a kind of shape."},
             Case{R"({"masks": [{"components": [{"kind": "brush"}]}]})", "mode",
                  "The edit's “mode” is not a way to combine shapes."},
             Case{R"({"masks": [{"components": [{"kind": "brush", "mode": "add", "start": 3}]}]})",
                  "start", "The edit's “start” is not an object."},
             Case{"[]", "", "The edit isn't a JSON object."},
             Case{"12", "", "The edit isn't a JSON object."},
             Case{"{", "", "The edit isn't valid JSON."},
         }) {
        const auto result = decoded(text);
        ASSERT_FALSE(result) << text;
        EXPECT_EQ(result.error().kind, FailureKind::malformed) << text;
        EXPECT_EQ(result.error().message, message) << text;
        EXPECT_EQ(result.error().key, key) << text;
    }
}

TEST(DecodeMaskTest, TakesDefaultsForWhatIsAbsent) {
    const auto result = decoded(R"({"masks": [{}, {"id": "nonsense"}, {"id": 5}]})");
    ASSERT_TRUE(result);
    ASSERT_EQ(result->masks.size(), 3u);
    for (LocalMask mask : result->masks) {
        EXPECT_NE(mask.id, Uuid());
        mask.id = {};
        EXPECT_EQ(mask, LocalMask());
    }
    EXPECT_NE(result->masks[0].id, result->masks[1].id);
    EXPECT_NE(result->masks[1].id, result->masks[2].id);
}

TEST(DecodeMaskTest, ReadsAndSanitisesShapes) {
    const auto result = decoded(R"({"masks": [{
        "id": "0123abcd-4567-89ef-0011-aabbccddeeff", "name": "Sky", "enabled": false,
        "invert": true, "amount": 250, "exposure": 9, "saturation": -200.5,
        "components": [
          {"kind": "radial", "mode": "subtract", "start": {"x": 9, "y": -7},
           "end": {"x": -0.2}, "angle": 725, "feather": -3, "invert": true},
          {"kind": "linear", "mode": "intersect", "start": {"x": 1e400, "y": 0.5}, "angle": -370},
          {"kind": "brush", "mode": "add", "feather": 250, "strokes": [
            {"points": [{"x": 0.25, "y": 0.5}, {}], "radius": 1e400, "feather": 20, "erase": true},
            {"points": []}, {"radius": 0.5}]}]}]})");
    ASSERT_TRUE(result) << result.error().message;
    const LocalMask& mask = result->masks.at(0);
    EXPECT_EQ(toText(mask.id), "0123ABCD-4567-89EF-0011-AABBCCDDEEFF");
    EXPECT_EQ(mask.name, "Sky");
    EXPECT_FALSE(mask.enabled);
    EXPECT_TRUE(mask.invert);
    EXPECT_EQ(mask.amount, 250);
    EXPECT_EQ(mask.exposure, 9); // finite values of a mask stay as stored
    EXPECT_EQ(mask.saturation, -200.5);
    ASSERT_EQ(mask.components.size(), 3u);

    const MaskComponent &radial = mask.components[0], &linear = mask.components[1],
                        &brush = mask.components[2];
    EXPECT_EQ(radial.kind, MaskComponent::Kind::radial);
    EXPECT_EQ(radial.mode, MaskComponent::Mode::subtract);
    EXPECT_EQ(radial.start, (MaskPoint{5, -4}));
    EXPECT_EQ(radial.end, (MaskPoint{0.2, 0.001}));
    EXPECT_EQ(radial.angle, 5);
    EXPECT_EQ(radial.feather, 0);
    EXPECT_TRUE(radial.invert);
    EXPECT_EQ(linear.kind, MaskComponent::Kind::linear);
    EXPECT_EQ(linear.mode, MaskComponent::Mode::intersect);
    EXPECT_EQ(linear.start, (MaskPoint{0, 0.5}));
    EXPECT_EQ(linear.angle, -10);
    EXPECT_EQ(linear.feather, 50);
    EXPECT_EQ(brush.feather, 100);
    ASSERT_EQ(brush.strokes.size(), 1u);
    EXPECT_EQ(brush.strokes[0],
              (BrushStroke{{{0.25, 0.5}, {0, 0}}, BrushStroke().radius, 20, 100, true}));
}

TEST(EncodeTest, WritesEveryKeyAndMasksOnlyWhenThereAreAny) {
    const auto plain = encodeAdjustments(with(&Adjustments::cropLeft, 0.1));
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->members().size(), 25u);
    EXPECT_EQ(plain->find("processVersion")->get<json::Number>()->text, "12");
    EXPECT_EQ(plain->find("cropLeft")->get<json::Number>()->text, "0.1");
    for (const auto& spec : storedKeyCatalogue())
        EXPECT_TRUE(plain->find(spec.id)) << spec.id;
    Adjustments masked;
    masked.masks.resize(1);
    EXPECT_TRUE(encodeAdjustments(masked)->find("masks"));
}

TEST(EncodeTest, RefusesWhatReadingWouldRefuseAndMendsTheRest) {
    for (const double value : {NAN, INFINITY, -INFINITY}) {
        Adjustments adjustments = with(&Adjustments::hue, value);
        EXPECT_EQ(encodedText(adjustments).error().message, notFinite);
        adjustments = {};
        adjustments.masks.resize(1);
        adjustments.masks[0].tint = value;
        EXPECT_EQ(encodedText(adjustments).error().message, notFinite);
        adjustments.masks[0].tint = 0;
        adjustments.masks[0].amount = value;
        EXPECT_EQ(encodedText(adjustments).error().message, notFinite);
        adjustments.masks[0].amount = 1;
        adjustments.masks[0].name = "\xFF";
        adjustments.masks[0].components.resize(1);
        adjustments.masks[0].components[0].angle = value;
        adjustments.masks[0].components[0].start.y = value;
        const auto text = encodedText(adjustments);
        ASSERT_TRUE(text);
        EXPECT_EQ(decoded(*text)->masks[0].components[0].angle, 0);
        EXPECT_EQ(decoded(*text)->masks[0].name, "\uFFFD");
    }
}

TEST(StoredVersionTest, IsOneWhereNoneIsStated) {
    struct Case {
        const char* text;
        std::int64_t version;
    };
    for (const auto& [text, version] : {
             Case{"{}", 1},
             Case{R"({"processVersion": null})", 1},
             Case{R"({"processVersion": 3})", 3},
             Case{R"({"processVersion": 1.1e1})", 11},
             Case{R"({"processVersion": -2})", -2},
             Case{R"({"processVersion": -1e300})", 1},
             Case{R"({"processVersion": -1e400})", 1},
         }) {
        EXPECT_EQ(storedVersion(*json::parse(text)->get<json::Object>()), version) << text;
    }
}

TEST(UnknownKeysTest, SurviveInMasksAndComponentsOfTheSameIdentity) {
    SeededRandom random;
    Adjustments adjustments;
    adjustments.masks = {newMask(random), newMask(random)};
    adjustments.masks[0].components = {
        newComponent(MaskComponent::Kind::radial, MaskComponent::Mode::add, random)};
    auto before = *encodeAdjustments(adjustments);
    auto& mask = *(*before.find("masks")->get<json::Array>())[0].get<json::Object>();
    mask.set("colour", {std::string("red")});
    auto& shape = *(*mask.find("components")->get<json::Array>())[0].get<json::Object>();
    shape.set("edge", json::parse("1e400").value());
    before.set("rating", json::number(5));
    before.set("blackPoint", json::number(5));

    std::swap(adjustments.masks[0], adjustments.masks[1]);
    adjustments.masks[1].name = "Sky";
    auto after = *encodeAdjustments(adjustments);
    keepUnknownKeys(after, before);
    EXPECT_EQ(after.find("rating")->get<json::Number>()->value, 5);
    EXPECT_EQ(after.find("blackPoint"), nullptr);
    const auto& masks = *after.find("masks")->get<json::Array>();
    EXPECT_EQ(masks[0].get<json::Object>()->find("colour"), nullptr);
    const auto& kept = *masks[1].get<json::Object>();
    EXPECT_EQ(*kept.find("colour")->get<std::string>(), "red");
    EXPECT_EQ(*kept.find("name")->get<std::string>(), "Sky");
    EXPECT_THAT(json::print(*kept.find("components")), HasSubstr("\"edge\": 1e400"));
    EXPECT_EQ(decodeAdjustments({after}, random).value(), adjustments);

    // Without its masks the edit keeps no trace of them.
    auto bare = *encodeAdjustments(with(&Adjustments::hue, 1));
    keepUnknownKeys(bare, before);
    EXPECT_EQ(bare.find("masks"), nullptr);
}

} // namespace
} // namespace kelvaro
