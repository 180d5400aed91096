// Settings on disk, the user's folders and the sandbox.
#include "fakes/TemporaryFolder.h"
#include "platform/system/JsonSettingsStore.h"
#include "platform/system/PosixFileSystem.h"
#include "platform/system/UserEnvironment.h"

#include <gmock/gmock.h>
#include <map>

namespace kelvaro {
namespace {

using List = std::vector<std::string>;

Environment environmentOf(std::map<std::string, std::string> values) {
    return [values = std::move(values)](const char* name) {
        const auto found = values.find(name);
        return found == values.end() ? std::nullopt : std::optional(found->second);
    };
}

TEST(SettingsTest, ValuesComeBackWithTheirTypes) {
    TemporaryFolder root;
    PosixFileSystem files;
    const auto file = root / "config/settings.json";
    {
        JsonSettingsStore settings(files, file);
        settings.set("flag", true);
        settings.set("number", 0.1);
        settings.set("text", std::string("Müller"));
        settings.set("list", List{"/a", "/b"});
        settings.set("gone", 1.0);
        settings.remove("gone");
    }
    JsonSettingsStore settings(files, file);
    EXPECT_EQ(settings.get<bool>("flag"), true);
    EXPECT_EQ(settings.get<double>("number"), 0.1);
    EXPECT_EQ(settings.get<std::string>("text"), "Müller");
    EXPECT_EQ(settings.get<List>("list"), (List{"/a", "/b"}));
    EXPECT_EQ(settings.value("gone"), std::nullopt);
    EXPECT_EQ(settings.get<double>("text"), std::nullopt) << "of another kind";
}

TEST(SettingsTest, TwoProgramsKeepEachOthersSettings) {
    TemporaryFolder root;
    PosixFileSystem files;
    const auto file = root / "settings.json";
    writeFile(file, R"({"unknown": {"kept": [1, 2]}})");
    JsonSettingsStore one(files, file), two(files, file);
    one.set("a", true);
    one.flush();
    two.set("b", true);
    two.flush();
    JsonSettingsStore now(files, file);
    EXPECT_TRUE(now.value("a") && now.value("b"));
    EXPECT_THAT(readFile(file), testing::HasSubstr("\"kept\""));
}

TEST(SettingsTest, ADamagedFileIsSetAside) {
    TemporaryFolder root;
    PosixFileSystem files;
    for (const std::string damage : {"[1]", "{\"a\": tru", ""}) {
        writeFile(root / "settings.json", damage);
        JsonSettingsStore settings(files, root / "settings.json");
        EXPECT_EQ(settings.value("a"), std::nullopt);
        settings.set("a", true);
        settings.flush();
        EXPECT_EQ(readFile(root / "settings.json.damaged"), damage);
        EXPECT_EQ(JsonSettingsStore(files, root / "settings.json").get<bool>("a"), true);
    }
}

TEST(SettingsTest, FoldersFollowTheEnvironment) {
    TemporaryFolder root;
    const std::string home = root.path().string();
    writeFile(root / ".config/user-dirs.dirs",
              "# comment\nXDG_MUSIC_DIR=\"$HOME/M\"\nXDG_PICTURES_DIR=\"$HOME/Bilder\"\n");
    const UserFolders plain =
        userFolders(environmentOf({{"HOME", home}, {"XDG_DATA_HOME", "rel"}}));
    EXPECT_EQ(plain.pictures, home + "/Bilder");
    EXPECT_EQ(plain.settings, home + "/.config/Kelvaro");
    EXPECT_EQ(plain.support, home + "/.local/share/Kelvaro");
    EXPECT_EQ(plain.caches, home + "/.cache/Kelvaro");
    const UserFolders boxed = userFolders(environmentOf(
        {{"HOME", home}, {"XDG_DATA_HOME", "/data"}, {"KELVARO_SANDBOX", "/tmp/box"}}));
    EXPECT_EQ(boxed.support, "/data/Kelvaro/TestSandbox");
}

TEST(SettingsTest, ASandboxBeginsEmptyAndNeverWritesTheUsersSettings) {
    TemporaryFolder root;
    PosixFileSystem files;
    const std::string home = root.path().string();
    const auto own = root / ".config/Kelvaro/settings.json";
    writeFile(own, R"({"folders": ["/mine"], "thumbSize": 99})");
    const std::string before = readFile(own);
    {
        auto boxed =
            openSettings(files, environmentOf({{"HOME", home}, {"KELVARO_SANDBOX", "/t/box/"}}));
        EXPECT_EQ(boxed->get<List>("folders"), List{"/mine"});
        EXPECT_EQ(boxed->value("thumbSize"), std::nullopt);
        boxed->set("folders", List{"/other"});
        boxed->set("thumbSize", 12.0);
        boxed->flush();
    }
    EXPECT_EQ(readFile(own), before);
    EXPECT_TRUE(std::filesystem::exists(root / ".config/Kelvaro/app.kelvaro.mac.sandbox.box.json"));
    auto again = openSettings(
        files, environmentOf(
                   {{"HOME", home}, {"KELVARO_SANDBOX", "box"}, {"KELVARO_TEST_FOLDER", "/test"}}));
    EXPECT_EQ(again->get<List>("folders"), List{"/test"});
    EXPECT_EQ(again->value("thumbSize"), std::nullopt) << "emptied at every start";
    auto unnamed = openSettings(files, environmentOf({{"HOME", home}, {"KELVARO_SANDBOX", ""}}));
    unnamed->flush();
    EXPECT_TRUE(
        std::filesystem::exists(root / ".config/Kelvaro/app.kelvaro.mac.sandbox.default.json"));
    auto normal =
        openSettings(files, environmentOf({{"HOME", home}, {"KELVARO_TEST_FOLDER", "/t"}}));
    EXPECT_EQ(normal->get<List>("folders"), List{"/mine"}) << "only with a sandbox";
}

} // namespace
} // namespace kelvaro
