// Photos of every kind through the command line into every format: sizes, recipes, spaces, and
// originals that stay as they are.
#include "cli/CliRunner.h"
#include "platform/codecs/CodecImageFiles.h"

#include <nlohmann/json.hpp>

#include <cmath>

namespace kelvaro {
namespace {

using namespace test;

struct Develop : testing::Test {
    TemporaryFolder folder;
    fs::path picture(const std::string& name) { return folder.path() / name; }

    static DecodedBitmap decoded(const fs::path& file) {
        auto result = makeImageReader()->decode(file);
        EXPECT_TRUE(result.has_value()) << file << ": " << result.error().message;
        return std::move(result).value();
    }
    static PixelSize sizeOf(const fs::path& file) { return decoded(file).pixels.size; }
};

Outcome develop(const fs::path& photo, const fs::path& target,
                std::vector<std::string> options = {}) {
    options.insert(options.begin(), {"develop", photo.string(), "-o", target.string()});
    return cli(std::move(options));
}

TEST_F(Develop, EveryKindIntoEveryFormatAndOriginalsStay) {
    const auto before = snapshot(samples());
    for (const char* kind : {".dng", ".jpg", ".png", ".tif", ".heic"})
        for (const char* format : {"jpg", "png", "tif", "heic"}) {
            const fs::path target = picture(std::string(kind + 1) + "." + format);
            const Outcome outcome = develop(sample(kind), target, {"--long-edge", "240"});
            ASSERT_EQ(outcome.code, 0) << kind << format << ": " << outcome.err;
            EXPECT_EQ(outcome.err, "");
            const PixelSize size = sizeOf(target);
            EXPECT_EQ(std::max(size.width, size.height), 240) << target;
        }
    EXPECT_EQ(snapshot(samples()), before);
    for (const auto& entry : fs::directory_iterator(folder.path()))
        EXPECT_FALSE(entry.path().filename().string().starts_with('.')) << entry.path();
}

TEST_F(Develop, UprightAndCropped) {
    const fs::path photo = sample(".png");
    const PixelSize full = sizeOf(photo);
    ASSERT_EQ(
        develop(photo, picture("crop.png"), {"--set", "cropLeft=0.25", "--set", "cropTop=0.5"})
            .code,
        0);
    const PixelSize cropped = sizeOf(picture("crop.png"));
    EXPECT_NEAR(cropped.width, full.width * 0.75, 1);
    EXPECT_NEAR(cropped.height, full.height * 0.5, 1);
    ASSERT_EQ(develop(photo, picture("turned.png"), {"--set", "straighten=3"}).code, 0);
    EXPECT_EQ(sizeOf(picture("turned.png")), full);
    ASSERT_EQ(develop(photo, picture("large.png"), {"--long-edge", "99999"}).code, 0);
    EXPECT_EQ(sizeOf(picture("large.png")), full); // never enlarged
}

// An unedited 16-bit PNG in sRGB comes out with the very samples that went in.
TEST_F(Develop, UneditedBitmapsKeepTheirSamples) {
    const DecodedBitmap in = decoded(sample(".png"));
    ASSERT_EQ(develop(sample(".png"), picture("same.png")).code, 0);
    const DecodedBitmap out = decoded(picture("same.png"));
    ASSERT_EQ(in.pixels.type, SampleType::u16);
    ASSERT_EQ(out.pixels.bytes(), in.pixels.bytes());
    int worst = 0;
    for (int y = 0; y < in.pixels.size.height; ++y)
        for (int i = 0; i < in.pixels.size.width * in.pixels.channels; ++i)
            worst = std::max(worst, std::abs(int(in.pixels.row<std::uint16_t>(y)[i]) -
                                             int(out.pixels.row<std::uint16_t>(y)[i])));
    EXPECT_LE(worst, 1); // the curve's polynomial may cross a rounding threshold
}

double meanGreen(const DecodedBitmap& picture) {
    double sum = 0;
    const auto& pixels = picture.pixels;
    for (int y = 0; y < pixels.size.height; ++y)
        for (int x = 0; x < pixels.size.width; ++x)
            sum += (*picture.colour.tone[1])[pixels.row<std::uint16_t>(y)[x * pixels.channels + 1]];
    return sum / (double(pixels.size.width) * pixels.size.height);
}

TEST_F(Develop, RecipesComeFromSidecarFileAndOptions) {
    const fs::path photo = copyOfSample(".tif", folder.path());
    const auto green = [&](std::vector<std::string> options) {
        options.insert(options.end(), {"--long-edge", "200"});
        const Outcome outcome = develop(photo, picture("out.png"), std::move(options));
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        return meanGreen(decoded(picture("out.png")));
    };
    const double plain = green({});
    ASSERT_EQ(cli({"recipe", photo.string(), "--set", "exposure=-1"}).code, 0);
    writeFile(picture("recipe.json"), R"({"exposure": -2})");
    const double own = green({}), left = green({"--no-sidecar"});
    const double file = green({"--recipe", picture("recipe.json").string()});
    const double set = green({"--set", "exposure=-3"});
    EXPECT_EQ(left, plain);
    EXPECT_LT(own, plain * 0.7);
    EXPECT_LT(file, own * 0.7);
    EXPECT_LT(set, file * 0.7);
    EXPECT_EQ(develop(photo, picture("x.png"),
                      {"--no-sidecar", "--recipe", picture("recipe.json").string()})
                  .code,
              2);
}

// An ellipse and a stroke, each two stops darker, and a gradient that is switched off.
TEST_F(Develop, MasksFromARecipeFile) {
    writeFile(picture("masks.json"), R"({"masks": [
        {"exposure": -2, "components": [{"kind": "radial", "mode": "add", "feather": 0,
            "start": {"x": 0.25, "y": 0.2}, "end": {"x": 0.1, "y": 0.1}}]},
        {"exposure": -2, "components": [{"kind": "brush", "mode": "add", "strokes": [
            {"points": [{"x": 0.7, "y": 0.3}, {"x": 0.8, "y": 0.3}], "radius": 0.06,
             "feather": 0, "flow": 100, "erase": false}]}]},
        {"exposure": -2, "enabled": false, "components": [{"kind": "linear", "mode": "add",
            "start": {"x": 0, "y": 1}, "end": {"x": 0, "y": 2}}]}]})");
    const auto linear = [&](const std::string& name, std::vector<std::string> options) {
        options.insert(options.end(), {"--linear", "--long-edge", "200"});
        const Outcome outcome = develop(sample(".png"), picture(name), std::move(options));
        EXPECT_EQ(outcome.code, 0) << outcome.err;
        return decoded(picture(name));
    };
    const DecodedBitmap plain = linear("plain.tif", {});
    const DecodedBitmap masked = linear("masked.tif", {"--recipe", picture("masks.json").string()});
    const PixelSize size = plain.pixels.size;
    const auto ratioAt = [&](double x, double y) { // of the longer side, from the lower left
        const int column = int(x * 200), row = size.height - 1 - int(y * 200);
        const int at = column * plain.pixels.channels + 1;
        return masked.pixels.row<float>(row)[at] / plain.pixels.row<float>(row)[at];
    };
    EXPECT_NEAR(ratioAt(0.25, 0.2), 0.25, 0.01);
    EXPECT_NEAR(ratioAt(0.75, 0.3), 0.25, 0.01);
    EXPECT_NEAR(ratioAt(0.5, 0.2), 1, 0.01);
    EXPECT_NEAR(ratioAt(0.25, 0.4), 1, 0.01);
}

TEST_F(Develop, SpacesAndLinearPictures) {
    const fs::path photo = sample(".dng");
    for (const char* space : {"sRGB", "displayP3"}) {
        const fs::path target = picture(std::string(space) + ".tif");
        ASSERT_EQ(develop(photo, target, {"--space", space, "--long-edge", "120"}).code, 0);
        EXPECT_EQ(decoded(target).profileName,
                  space == std::string("sRGB") ? "sRGB" : "Display P3");
    }
    ASSERT_EQ(develop(photo, picture("linear.tif"), {"--linear", "--long-edge", "120"}).code, 0);
    EXPECT_EQ(decoded(picture("linear.tif")).pixels.type, SampleType::f32);
    ASSERT_EQ(develop(photo, picture("scene.tif"), {"--stage", "scene"}).code, 0);
    EXPECT_EQ(decoded(picture("scene.tif")).pixels.type, SampleType::f32);
    EXPECT_EQ(develop(photo, picture("linear.jpg"), {"--linear"}).code, 2);
    EXPECT_EQ(develop(sample(".jpg"), picture("scene2.tif"), {"--stage", "scene"}).code, 1);
    const Outcome timed = develop(photo, picture("t.jpg"), {"--timings", "--long-edge", "99"});
    for (const char* step : {"decode", "analysis", "render", "encode", "total"})
        EXPECT_NE(timed.err.find(step), std::string::npos) << timed.err;
}

// Every part is written whatever the recipe needs, of RAW files and of pictures.
TEST_F(Develop, AnalysisForPeople) {
    for (const char* kind : {".dng", ".jpg"}) {
        const fs::path found = picture(std::string("found") + kind);
        ASSERT_EQ(develop(sample(kind), picture("a.jpg"),
                          {"--long-edge", "99", "--analysis", found.string()})
                      .code,
                  0);
        for (const char* name : {"guide.tif", "scene-guide.tif", "haze.tif"}) {
            const DecodedBitmap map = decoded(found / name);
            EXPECT_EQ(map.pixels.type, SampleType::f32);
            EXPECT_EQ(std::max(map.pixels.size.width, map.pixels.size.height), 512) << name;
        }
        const auto json = nlohmann::json::parse(contentOf(found / "analysis.json"));
        EXPECT_LE(json["levels"]["lo"], -2.5);
        EXPECT_GE(json["levels"]["hi"], 0.5);
        EXPECT_LT(json["endpoints"]["x"], json["endpoints"]["y"]);
        EXPECT_EQ(json["airlight"].size(), 3u);
    }
}

} // namespace
} // namespace kelvaro
