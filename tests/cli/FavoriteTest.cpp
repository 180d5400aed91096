// `favorite`: marks beside the photos, each folder's file changed once, and what is no photo.
#include "cli/CliRunner.h"

#include <nlohmann/json.hpp>

namespace kelvaro {
namespace {

using namespace test;
using nlohmann::json;

TEST(Favorite, MarksAndUnmarksPhotosOfSeveralFolders) {
    TemporaryFolder root;
    fs::create_directories(root / "a");
    fs::create_directories(root / "b");
    const fs::path jpeg = copyOfSample(".jpg", root / "a"), png = copyOfSample(".png", root / "a"),
                   raw = copyOfSample(".dng", root / "b");
    const auto names = [&](const char* folder) {
        const fs::path file = root / folder / ".tarnwell/favorites.json";
        return fs::exists(file) ? json::parse(readFile(file)) : json();
    };
    const std::string jpegName = jpeg.filename().string(), rawName = raw.filename().string();
    EXPECT_EQ(cli({"favorite", jpeg.string(), png.string(), raw.string()}).code, 0);
    EXPECT_EQ(names("a").size(), 2u);
    EXPECT_EQ(names("b"), json::array({rawName}));
    EXPECT_EQ(cli({"favorite", "--off", png.string(), raw.string()}).code, 0);
    EXPECT_EQ(names("a"), json::array({jpegName}));
    EXPECT_EQ(names("b"), json()) << "without favorites there is no file";
    EXPECT_EQ(cli({"favorite", jpeg.string()}).code, 0) << "it is one already";
    EXPECT_EQ(names("a").size(), 1u);
}

TEST(Favorite, BadInput) {
    TemporaryFolder root;
    const fs::path photo = copyOfSample(".jpg", root.path());
    writeFile(root / "notes.txt", "");
    const Outcome some = cli({"favorite", (root / "none.jpg").string(), photo.string()});
    EXPECT_EQ(some.code, 1);
    expectOneSentence(some, "none.jpg");
    EXPECT_TRUE(fs::exists(root / ".tarnwell/favorites.json")) << "the others are marked";
    for (const fs::path& wrong : {root / "notes.txt", root.path()})
        EXPECT_EQ(cli({"favorite", wrong.string()}).code, 1) << wrong;
    EXPECT_EQ(cli({"favorite"}).code, 2);
    writeFile(root / ".tarnwell/favorites.json", "{\"no\": \"list\"}");
    EXPECT_EQ(cli({"favorite", photo.string()}).code, 1);
    EXPECT_EQ(readFile(root / ".tarnwell/favorites.json"), "{\"no\": \"list\"}");
}

} // namespace
} // namespace kelvaro
