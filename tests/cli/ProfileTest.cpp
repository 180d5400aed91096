// `profile`: counts, tags and sentences of the sample photos, and periods that cannot be.
#include "cli/CliRunner.h"

#include <nlohmann/json.hpp>

namespace kelvaro {
namespace {

using namespace test;
using nlohmann::json;

json profiled(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"profile", "--json", samples().string()});
    const Outcome outcome = cli(std::move(arguments));
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    return json::parse(outcome.out);
}

TEST(ProfileCommand, TellsTheSamplePhotos) {
    const json list = json::parse(cli({"list", "--json", samples().string()}).out);
    const auto count = [&](auto holds) { return std::count_if(list.begin(), list.end(), holds); };
    const json profile = profiled({});
    EXPECT_EQ(profile["counts"]["photos"], list.size());
    EXPECT_EQ(profile["counts"]["edits"], 0);
    for (const json& chart : profile["charts"]) {
        std::int64_t photos = 0;
        for (const json& bar : chart["bars"])
            photos += bar["photos"].get<std::int64_t>();
        EXPECT_EQ(photos, chart["recorded"]) << chart["title"];
    }
    for (const json& tag : profile["tags"])
        EXPECT_FALSE(tag["reason"].get<std::string>().empty());
    // Days are inclusive on both sides, by the clock of the camera.
    const std::string first = list.front()["meta"]["taken"].get<std::string>().substr(0, 10);
    const auto onFirst = count([&](const json& photo) {
        return photo["meta"]["taken"].get<std::string>().substr(0, 10) == first;
    });
    EXPECT_EQ(profiled({"--from", first, "--to", first})["counts"]["photos"], onFirst);
    EXPECT_EQ(profiled({"--to", "1999-12-31"})["counts"]["photos"], 0);
    EXPECT_EQ(profiled({"--to", "1999-12-31"})["tags"], json::array());
    const Outcome text = cli({"profile", samples().string()});
    EXPECT_EQ(text.code, 0);
    EXPECT_NE(text.out.find(std::to_string(list.size()) + "  photos\n"), std::string::npos);
}

TEST(ProfileCommand, RefusesWhatIsNoPeriodAndNoFolder) {
    for (const char* day : {"2024-02-30", "2024-13-01", "2024-3-9", "yesterday", "2024-03-09x", ""})
        EXPECT_EQ(cli({"profile", samples().string(), "--from", day}).code, 2) << day;
    const Outcome turned =
        cli({"profile", samples().string(), "--from", "2024-03-02", "--to", "2024-03-01"});
    EXPECT_EQ(turned.code, 2);
    expectOneSentence(turned, "--from");
    const Outcome missing = cli({"profile", "/nowhere", samples().string()});
    EXPECT_EQ(missing.code, 1);
    expectOneSentence(missing, "nowhere");
    EXPECT_NE(missing.out.find("photos"), std::string::npos); // the others are told all the same
}

} // namespace
} // namespace kelvaro
