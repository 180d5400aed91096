// `list` and `info`: the sample photos searched, filtered, sorted and grouped, and the whole panel.
#include "cli/CliRunner.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace kelvaro {
namespace {

using namespace test;
using nlohmann::json;

json listed(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"list", "--json"});
    const Outcome outcome = cli(std::move(arguments));
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    return json::parse(outcome.out);
}

std::vector<std::string> lines(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> all;
    for (std::string line; std::getline(in, line);)
        all.push_back(line);
    return all;
}

TEST(List, SearchesFiltersSortsAndGroups) {
    const std::string folder = samples().string();
    const json all = listed({folder, folder + "/."});
    ASSERT_EQ(all.size(), 10u); // the folder was named twice
    EXPECT_TRUE(std::is_sorted(all.begin(), all.end(), [](const json& a, const json& b) {
        return a["meta"]["taken"] < b["meta"]["taken"];
    }));
    const json first = all[0];
    const auto count = [&](std::vector<std::string> arguments, auto holds) {
        arguments.push_back(folder);
        const json found = listed(arguments);
        EXPECT_TRUE(std::all_of(found.begin(), found.end(), holds)) << arguments[1];
        EXPECT_EQ(found.size(), std::size_t(std::count_if(all.begin(), all.end(), holds)));
        EXPECT_FALSE(found.empty()) << arguments[1];
    };
    const std::string camera = first["meta"]["camera"], lens = first["meta"]["lens"];
    const double focal = first["meta"]["focalLength"];
    const int iso = first["meta"]["iso"];
    count({"--camera", camera}, [&](const json& p) { return p["meta"]["camera"] == camera; });
    count({"--lens", lens}, [&](const json& p) { return p["meta"]["lens"] == lens; });
    count({"--focal", std::to_string(focal)},
          [&](const json& p) { return p["meta"]["focalLength"] == focal; });
    count({"--kind", "raw"}, [](const json& p) { return p["isRaw"] == true; });
    count({"--query", "raw iso " + std::to_string(iso)},
          [&](const json& p) { return p["isRaw"] == true && p["meta"]["iso"] == iso; });

    const auto ascending = lines(cli({"list", "--sort", "size", folder}).out);
    const auto descending = lines(cli({"list", "--sort", "size", "--descending", folder}).out);
    EXPECT_EQ(ascending, std::vector(descending.rbegin(), descending.rend()));
    std::size_t grouped = 0;
    for (const json& group : listed({"--groups", folder})) {
        EXPECT_FALSE(group["title"].get<std::string>().empty());
        grouped += group["photos"].size();
    }
    EXPECT_EQ(grouped, all.size());
}

TEST(List, ScopesReadWhatLiesBesideThePhotos) {
    TemporaryFolder folder;
    const fs::path photo = copyOfSample(".jpg", folder.path());
    copyOfSample(".png", folder.path());
    const std::string place = folder.path().string();
    Outcome none = cli({"list", "--scope", "edited", place});
    EXPECT_EQ(none.out, "");
    EXPECT_EQ(none.err, "No edited photos yet\n");
    EXPECT_EQ(cli({"recipe", photo.string(), "--set", "exposure=1"}).code, 0);
    writeFile(folder.path() / ".tarnwell/favorites.json",
              json::array({photo.filename().string(), "gone.jpg"}).dump());
    for (const char* scope : {"edited", "favorites"}) {
        const json found = listed({"--scope", scope, place});
        ASSERT_EQ(found.size(), 1u) << scope;
        EXPECT_EQ(found[0]["path"], fs::canonical(photo).string());
    }
    EXPECT_EQ(listed({"--query", "edi fav", place}).size(), 1u);
    EXPECT_EQ(lines(cli({"list", "--scope", "edited", "--groups", place}).out)[0], "Today (1)");
    none = cli({"list", "--query", "zzyzx", place});
    EXPECT_EQ(none.err, "No photos match “zzyzx”\n");
}

TEST(List, BadInput) {
    TemporaryFolder folder;
    writeFile(folder.path() / "broken.jpg", "no picture");
    writeFile(folder.path() / "odd\xFF.png", "");
    writeFile(folder.path() / "notes.txt", "");
    writeFile(folder.path() / ".hidden.jpg", "");
    fs::create_directories(folder.path() / "x.jpg");
    ASSERT_EQ(mkfifo((folder.path() / "pipe.jpg").c_str(), 0600), 0);
    fs::create_symlink("loop.jpg", folder.path() / "loop.jpg");
    const Outcome outcome = cli({"list", "--json", folder.path().string(), "/nowhere"});
    EXPECT_EQ(outcome.code, 1);
    expectOneSentence(outcome, "nowhere");
    EXPECT_EQ(json::parse(outcome.out).size(), 2u); // the two files
    EXPECT_EQ(cli({"list"}).code, 2);
    for (const char* wrong : {"--sort=colour", "--scope=some", "--kind=film", "--focal=long"})
        EXPECT_EQ(cli({"list", wrong, folder.path().string()}).code, 2) << wrong;
}

TEST(Info, TellsTheWholePanel) {
    const json info =
        json::parse(cli({"info", "--json", sample(".jpg").string(), sample(".heic").string()}).out);
    ASSERT_EQ(info.size(), 2u);
    for (const json& photo : info) {
        for (const char* key :
             {"aperture", "shutter",    "iso",        "focal",    "focal35",  "bias",
              "camera",   "lens",       "program",    "metering", "flash",    "whiteBalance",
              "taken",    "dimensions", "megapixels", "colour",   "format",   "size",
              "modified", "created",    "software",   "artist",   "copyright"})
            EXPECT_TRUE(photo.contains(key)) << key;
        EXPECT_NE(photo["colour"].get<std::string>().find("8-bit"), std::string::npos);
        EXPECT_GE(photo["panel"].size(), 23u);
    }
    const Outcome text = cli({"info", sample(".dng").string()});
    EXPECT_NE(text.out.find("Digital Negative (DNG)"), std::string::npos) << text.out;
}

} // namespace
} // namespace kelvaro
