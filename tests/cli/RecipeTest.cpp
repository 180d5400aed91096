// Sidecars through the command line: what is shown, written, kept, backed up and removed.
#include "cli/CliRunner.h"

#include <nlohmann/json.hpp>

namespace kelvaro {
namespace {

using namespace test;

struct Recipe : testing::Test {
    TemporaryFolder folder;
    fs::path photo = copyOfSample(".jpg", folder.path());
    fs::path sidecar = folder.path() / ".tarnwell" / (photo.filename().string() + ".json");
    const std::string original = contentOf(photo);

    Outcome recipe(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"recipe", photo.string()});
        return cli(std::move(arguments));
    }
    nlohmann::json stored() { return nlohmann::json::parse(contentOf(sidecar)); }
    ~Recipe() override { EXPECT_EQ(contentOf(photo), original); }
};

TEST_F(Recipe, SetsShowsAndClears) {
    EXPECT_EQ(recipe({}).out, "no edit\n");
    EXPECT_EQ(recipe({"--set", "exposure=1.5", "--set", "shadows=400"}).code, 0);
    EXPECT_EQ(stored()["exposure"], 1.5);
    EXPECT_EQ(stored()["shadows"], 150); // into its range
    EXPECT_EQ(stored()["processVersion"], 12);
    EXPECT_NE(recipe({}).out.find("exposure        1.5\n"), std::string::npos);
    EXPECT_EQ(nlohmann::json::parse(recipe({"--json"}).out)["exposure"], 1.5);
    EXPECT_EQ(recipe({"--clear", "--set", "grain=20"}).code, 0);
    EXPECT_EQ(stored()["exposure"], 0);
    EXPECT_EQ(recipe({"--set", "grain=0"}).code, 0);
    EXPECT_FALSE(fs::exists(sidecar)); // an edit set back to nothing
}

TEST_F(Recipe, OldSidecarIsBackedUpAndUnknownKeysSurvive) {
    const std::string old = R"({"processVersion": 3, "blackPoint": 20, "stars": {"of": [5, "x"]}})";
    writeFile(sidecar, old);
    EXPECT_EQ(recipe({"--set", "contrast=10"}).code, 0);
    EXPECT_EQ(contentOf(sidecar.string() + ".v3-backup"), old);
    EXPECT_EQ(stored()["black"], -20);
    EXPECT_EQ(stored()["stars"], nlohmann::json::parse(R"({"of": [5, "x"]})"));
    EXPECT_EQ(recipe({"--clear"}).code, 0);
    EXPECT_FALSE(fs::exists(sidecar));
    EXPECT_EQ(contentOf(sidecar.string() + ".v3-backup"), old);
}

TEST_F(Recipe, CopyKeepsTheTargetsOwnCrop) {
    const fs::path other = copyOfSample(".png", folder.path());
    EXPECT_EQ(cli({"recipe", other.string(), "--set", "exposure=1", "--set", "cropLeft=0.3"}).code,
              0);
    EXPECT_EQ(recipe({"--set", "cropTop=0.1"}).code, 0);
    EXPECT_EQ(recipe({"--copy-from", other.string()}).code, 0);
    EXPECT_EQ(stored()["exposure"], 1);
    EXPECT_EQ(stored()["cropTop"], 0.1);
    EXPECT_EQ(stored()["cropLeft"], 0);
}

TEST_F(Recipe, UnreadableEditsAreNeitherUsedNorOverwritten) {
    const struct {
        const char *content, *sentence;
    } cases[] = {
        {R"({"processVersion": 13})", "This edit needs a newer Kelvaro."},
        {R"({"processVersion": 1.3e1})", "This edit needs a newer Kelvaro."},
        {R"({"exposure": 1e400})", "Adjustment must be finite."},
        {R"({"exposure": "bright"})", ""},
        {R"({"exposure": true})", ""},
        {R"([1, 2])", ""},
        {R"({"exposure": 1)", ""},
        {"", ""},
    };
    const fs::path picture = folder.path() / "out.png";
    for (const auto& c : cases) {
        writeFile(sidecar, c.content);
        for (const auto& outcome :
             {recipe({"--set", "exposure=1"}), recipe({"--clear"}), recipe({}),
              cli({"develop", photo.string(), "-o", picture.string()})}) {
            EXPECT_EQ(outcome.code, 1) << c.content;
            expectOneSentence(outcome, c.sentence);
        }
        EXPECT_EQ(contentOf(sidecar), c.content);
        EXPECT_FALSE(fs::exists(picture));
    }
    // It may be left aside, though.
    EXPECT_EQ(cli({"develop", photo.string(), "-o", picture.string(), "--no-sidecar", "--long-edge",
                   "64"})
                  .code,
              0);
}

TEST_F(Recipe, WrongUse) {
    for (const char* setting : {"exposure", "exposure=bright", "colour=1", "=1", "exposure=nan",
                                "exposure=1e400", "Exposure=1"}) {
        const Outcome outcome = recipe({"--set", setting});
        EXPECT_EQ(outcome.code, 2) << setting;
        EXPECT_FALSE(outcome.err.empty());
        EXPECT_FALSE(fs::exists(sidecar));
    }
    EXPECT_EQ(cli({}).code, 2);
    EXPECT_EQ(cli({"recipe"}).code, 2);
    EXPECT_EQ(cli({"unheard-of"}).code, 2);
    for (const char* command : {"develop", "recipe", "info"}) {
        const Outcome help = cli({command, "--help"});
        EXPECT_EQ(help.code, 0);
        EXPECT_NE(help.out.find(command), std::string::npos);
    }
    const Outcome missing = cli({"recipe", (folder.path() / "none.jpg").string()});
    EXPECT_EQ(missing.code, 1);
    expectOneSentence(missing, "none.jpg");
}

} // namespace
} // namespace kelvaro
