#include "editor/Preset.h"

#include "editor/MaskList.h"
#include "fakes/FailingFileSystem.h"
#include "fakes/SeededRandom.h"
#include "fakes/TemporaryFolder.h"
#include "platform/system/PosixFileSystem.h"

#include <gtest/gtest.h>

namespace kelvaro {
namespace {

class PresetTest : public testing::Test {
protected:
    TemporaryFolder folder;
    PosixFileSystem files;
    SeededRandom random;
    PresetFolder presets{files, random, folder / "presets"};
};

TEST_F(PresetTest, KeepsNamesValuesAndParts) {
    EXPECT_TRUE(presets.load().presets.empty()); // no folder yet
    Adjustments warm;
    warm.temperature = 20;
    warm.cropLeft = 0.1;
    addMask(warm, MaskComponent::Kind::linear, {600, 400}, random);
    PasteParts parts;
    parts.masks = false;
    ASSERT_TRUE(presets.save("  Warm / evening: 100% ", warm, parts));
    ASSERT_TRUE(presets.save("Ärger", {}, {}));
    const PresetList list = presets.load();
    ASSERT_EQ(list.presets.size(), 2u);
    EXPECT_TRUE(list.problems.empty());
    EXPECT_EQ(list.presets[0].name, "Warm / evening: 100%");
    EXPECT_EQ(list.presets[0].adjustments, warm);
    EXPECT_EQ(list.presets[0].parts, parts);
    Adjustments target;
    target.cropTop = 0.3;
    target.tint = 9;
    const Adjustments result = applied(list.presets[0], target);
    EXPECT_EQ(result.temperature, 20);
    EXPECT_EQ(result.tint, 0); // of the same panel
    EXPECT_EQ(result.cropTop, 0.3);
    EXPECT_EQ(result.cropLeft, 0);
    EXPECT_TRUE(result.masks.empty());
}

TEST_F(PresetTest, ReplacesRenamesAndRemoves) {
    Adjustments edit;
    edit.contrast = 1;
    ASSERT_TRUE(presets.save("A/B", edit, {}));
    edit.contrast = 2;
    ASSERT_TRUE(presets.save("A:B", edit, {})); // the same file name, another preset
    edit.contrast = 3;
    ASSERT_TRUE(presets.save("A/B", edit, {}));
    auto list = presets.load().presets;
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0].adjustments.contrast, 3);
    EXPECT_EQ(list[1].adjustments.contrast, 2);
    ASSERT_TRUE(presets.rename(list[0], "C"));
    ASSERT_TRUE(presets.remove(list[1]));
    ASSERT_TRUE(presets.remove(list[1])); // gone already
    EXPECT_EQ(namesIn(folder / "presets"), std::set<std::string>{"C.json"});
    EXPECT_EQ(presets.save(" \n", edit, {}).error().message, "A preset needs a name.");
}

TEST_F(PresetTest, PassesOverBadFilesWithASentence) {
    writeFile(folder / "presets/plain.json", R"({"exposure": 1})"); // put there by hand
    writeFile(folder / "presets/newer.json", R"({"processVersion": 13})");
    writeFile(folder / "presets/torn.json", R"({"exposure": )");
    writeFile(folder / "presets/list.json", "[]");
    writeFile(folder / "presets/name.json", R"({"presetName": 5})");
    writeFile(folder / "presets/notes.txt", "hello");
    writeFile(folder / "presets/.hidden.json", "{");
    const PresetList list = presets.load();
    ASSERT_EQ(list.presets.size(), 1u);
    EXPECT_EQ(list.presets[0].name, "plain");
    EXPECT_EQ(list.presets[0].parts, PasteParts());
    ASSERT_EQ(list.problems.size(), 4u);
    EXPECT_EQ(list.problems[2],
              "The preset “newer.json” can't be used: This edit needs a newer Kelvaro.");
    FailingFileSystem full(files, {0, FailureKind::diskFull, 10});
    PresetFolder onFullDisk(full, random, folder / "presets");
    EXPECT_FALSE(onFullDisk.save("plain", {}, {}));
    EXPECT_EQ(readFile(folder / "presets/plain.json"), R"({"exposure": 1})");
}

TEST(PresetFileName, IsSafeEverywhere) {
    const struct {
        const char *name, *file;
    } cases[] = {{"Soft light", "Soft light"},
                 {"../../etc/passwd", "-.-..-etc-passwd"},
                 {".hidden", "-hidden"},
                 {"a<b>c|d?", "a-b-c-d-"},
                 {"trailing. .", "trailing"},
                 {"CON", "CON-"},
                 {"lpt1.x", "lpt1.x-"},
                 {"conifer", "conifer"},
                 {"...", "-"},
                 {"", "Preset"},
                 {"日本 ☀", "日本 ☀"}};
    for (const auto& c : cases) {
        EXPECT_EQ(presetFileName(c.name), c.file);
    }
    const std::string longest = presetFileName(std::string(119, 'a') + "é");
    EXPECT_EQ(longest, std::string(119, 'a'));
}

} // namespace
} // namespace kelvaro
