#include "export/ExportNames.h"

#include "export/Leftovers.h"
#include "fakes/SeededRandom.h"
#include "fakes/TemporaryFolder.h"
#include "platform/system/PosixFileSystem.h"

#include <gmock/gmock.h>

namespace kelvaro {
namespace {

namespace fs = std::filesystem;

class ExportNamesTest : public testing::Test {
protected:
    ExportNames names(bool replacing, ProtectedPaths kept = {}) {
        return {files, folder.path(), "jpg", replacing, std::move(kept)};
    }
    TemporaryFolder folder;
    PosixFileSystem files;
};

std::string nameOf(const ExportNames::Target& target) {
    return target.url.filename().string() + (target.replaces ? " replaces" : "");
}

TEST_F(ExportNamesTest, NumbersPhotosThatDifferOnlyInCase) {
    auto run = names(false);
    EXPECT_EQ(nameOf(run.next("A")), "A.jpg");
    EXPECT_EQ(nameOf(run.next("a")), "a (2).jpg");
    EXPECT_EQ(nameOf(run.next("A")), "A (3).jpg");
    EXPECT_EQ(nameOf(run.next("Ä")), "Ä.jpg");
    EXPECT_EQ(nameOf(run.next("ä")), "ä (2).jpg");
    EXPECT_EQ(nameOf(run.next("A (2)")), "A (2) (2).jpg"); // its own first choice is taken
    EXPECT_EQ(nameOf(run.next("\xFF\xC3")), "\xFF\xC3.jpg");
}

TEST_F(ExportNamesTest, KeepsWhatStandsThere) {
    writeFile(folder / "A.jpg", "x");
    writeFile(folder / "A (2).jpg", "x");
    EXPECT_EQ(nameOf(names(false).next("A")), "A (3).jpg");
}

TEST_F(ExportNamesTest, ReplacesOnceAndOnlyFiles) {
    writeFile(folder / "A.jpg", "x");
    writeFile(folder / "A (2).jpg", "x");
    auto run = names(true);
    EXPECT_EQ(nameOf(run.next("A")), "A.jpg replaces");
    EXPECT_EQ(nameOf(run.next("A")), "A (2).jpg replaces");
    EXPECT_EQ(nameOf(run.next("A")), "A (3).jpg");
    fs::create_directory(folder / "folder.jpg");
    fs::create_symlink("A.jpg", folder / "link.jpg");
    fs::create_symlink("nowhere", folder / "dangling.jpg");
    for (const std::string name : {"folder", "link", "dangling"})
        EXPECT_EQ(nameOf(run.next(name)), name + " (2).jpg");
}

TEST_F(ExportNamesTest, NeverReplacesProtectedPhotos) {
    writeFile(folder / "A.jpg", "x");
    fs::create_directory_symlink(folder.path(), folder / "alias");
    ExportNames run(files, folder / "alias", "jpg", true, {resolvedPath(folder / "A.jpg")});
    EXPECT_EQ(nameOf(run.next("A")), "A (2).jpg");
}

TEST_F(ExportNamesTest, CutsNamesThatNoDiskTakes) {
    std::string base = "n"; // 255 bytes
    while (base.size() < 255)
        base += "ä";
    auto run = names(false);
    for (int i = 0; i < 3; ++i) {
        const auto target = run.next(base);
        const std::string name = target.url.filename().string();
        EXPECT_LE(name.size(), 255u);
        EXPECT_GE(name.size(), 254u);
        EXPECT_THAT(name,
                    testing::EndsWith(i == 0 ? "ä.jpg" : "ä (" + std::to_string(i + 1) + ").jpg"));
        writeFile(target.url, "x");
        EXPECT_TRUE(fs::exists(target.url));
    }
}

TEST_F(ExportNamesTest, KnowsItsOwnTemporariesOnly) {
    SeededRandom random;
    const std::string own = temporaryExportName(random, "jpg");
    EXPECT_THAT(own, testing::MatchesRegex("\\.kelvaro-export-[0-9A-F-]{36}\\.jpg"));
    EXPECT_TRUE(isTemporaryExportName(own));
    const std::string others[] = {own + "x",
                                  own.substr(1),
                                  "x" + own,
                                  ".kelvaro-export-.jpg",
                                  ".kelvaro-export-" + std::string(36, 'A') + ".jpg",
                                  own.substr(0, own.size() - 3) + "gif"};
    writeFile(folder / own, "half");
    for (const auto& name : others) {
        EXPECT_FALSE(isTemporaryExportName(name)) << name;
        writeFile(folder / name, "kept");
    }
    EXPECT_EQ(removeLeftovers(files, folder.path(), 0), 1u); // nobody writes it
    EXPECT_EQ(namesIn(folder.path()).size(), std::size(others));
}

} // namespace
} // namespace kelvaro
