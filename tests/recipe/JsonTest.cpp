#include "recipe/Json.h"

#include <cmath>
#include <gtest/gtest.h>

namespace kelvaro::json {
namespace {

std::string reprinted(std::string_view text) {
    const auto value = parse(text);
    return value ? print(*value) : "refused: " + value.error().message;
}

TEST(JsonTest, PrintsPrettyAndSortedAndKeepsTheTextOfNumbers) {
    EXPECT_EQ(reprinted(R"({"b":[1,{"z":-0.50,"a":1e400}],"a":{},"c":[],"d":null,"B":true})"),
              "{\n"
              "  \"B\": true,\n"
              "  \"a\": {},\n"
              "  \"b\": [\n"
              "    1,\n"
              "    {\n"
              "      \"a\": 1e400,\n"
              "      \"z\": -0.50\n"
              "    }\n"
              "  ],\n"
              "  \"c\": [],\n"
              "  \"d\": null\n"
              "}\n");
    EXPECT_EQ(reprinted("123456789012345678901234567890"), "123456789012345678901234567890\n");
}

TEST(JsonTest, OfARepeatedKeyTheLastValueCounts) {
    EXPECT_EQ(reprinted(R"({"a":1,"b":2,"a":3,"a":4})"), "{\n  \"a\": 4,\n  \"b\": 2\n}\n");
}

TEST(JsonTest, NumbersThatOverflowAreFoundOutsideTextsOnly) {
    const auto value = parse(R"(["1e400", "\"1e400", 1e400, "\\", -1e+400, 1e-400, 2])");
    ASSERT_TRUE(value);
    const auto& items = *value->get<Array>();
    ASSERT_EQ(items.size(), 7u);
    EXPECT_EQ(*items[0].get<std::string>(), "1e400");
    EXPECT_EQ(*items[1].get<std::string>(), "\"1e400");
    EXPECT_EQ(items[2].get<Number>()->value, INFINITY);
    EXPECT_EQ(items[4].get<Number>()->value, -INFINITY);
    EXPECT_EQ(items[5].get<Number>()->value, 0);
    EXPECT_EQ(items[6].get<Number>()->value, 2);
    const std::string digits(400, '9');
    EXPECT_EQ(parse(digits)->get<Number>()->value, INFINITY);
    EXPECT_EQ(parse("0." + digits)->get<Number>()->value, 1);
}

TEST(JsonTest, RefusesWhatIsNoDocument) {
    for (const char* text :
         {"",        " ",        "{",        "[1,]",        "{\"a\"}", "01",     "01e400",
          "1.e400",  ".5",       "-",        "+1",          "1e",      "1e400x", "tru1e400",
          "NaN",     "Infinity", "'a'",      "\"a",         "{a:1}",   "1 2",    "[1e400 1e400]",
          "// 1\n1", "\"\xFF\"", "\"\xC3\"", "\"\\ud800\"", "\"\n\"",  "\"\\"}) {
        const auto value = parse(text);
        ASSERT_FALSE(value) << text;
        EXPECT_EQ(value.error(), (Failure{FailureKind::malformed, "The edit isn't valid JSON."}));
    }
}

TEST(JsonTest, BoundsDepthAndCount) {
    const auto nested = [](std::size_t depth) {
        return std::string(depth, '[') + std::string(depth, ']');
    };
    ASSERT_TRUE(parse(nested(deepestNesting)));
    EXPECT_GT(print(*parse(nested(deepestNesting))).size(), 2 * deepestNesting);
    EXPECT_EQ(parse(nested(deepestNesting + 1)).error().message, "The edit is nested too deeply.");
    EXPECT_FALSE(parse(std::string(10'000'000, '[')));

    std::string many = "[0";
    for (std::size_t i = 0; i < mostValues; ++i)
        many += ",0";
    EXPECT_EQ(parse(many + "]").error().kind, FailureKind::tooLarge);
}

TEST(JsonTest, TextThatIsNotUtf8IsMended) {
    EXPECT_EQ(print({std::string("a\xFF\xC3z")}), "\"a\uFFFD\uFFFDz\"\n");
    EXPECT_EQ(print({std::string("\"\\\n\t\x01ä")}), "\"\\\"\\\\\\n\\t\\u0001ä\"\n");
}

TEST(JsonTest, AddsOnlyMissingMembers) {
    Object object({{"a", number(1)}, {"c", number(3)}});
    object.addMissing({{"b", number(20)}, {"c", number(30)}});
    object.set("d", number(4));
    object.set("a", number(5));
    EXPECT_EQ(print({object}), "{\n  \"a\": 5,\n  \"b\": 20,\n  \"c\": 3,\n  \"d\": 4\n}\n");
    EXPECT_EQ(object.find("e"), nullptr);
}

} // namespace
} // namespace kelvaro::json
