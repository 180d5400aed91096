// Wrong files and wrong targets: one clear sentence, the right exit code, nothing written.
#include "cli/CliRunner.h"

#include <sys/stat.h>

namespace kelvaro {
namespace {

using namespace test;

void expectRefused(const fs::path& photo, const fs::path& folder) {
    const auto before = snapshot(folder);
    const fs::path target = folder / "result.jpg";
    const Outcome outcome = cli({"develop", photo.string(), "-o", target.string()});
    EXPECT_EQ(outcome.code, 1) << photo;
    expectOneSentence(outcome, photo.filename().string());
    EXPECT_EQ(snapshot(folder), before) << photo;
}

TEST(BadInput, PhotosThatAreNone) {
    TemporaryFolder folder;
    const fs::path base = folder.path();
    for (const char* kind : {"jpg", "png", "tif", "heic", "dng", "nef", "cr2"}) {
        const std::string name = std::string("photo.") + kind;
        writeFile(base / "empty" / name, "");
        writeFile(base / "foreign" / name, "This is a letter, not a photo.\n");
        writeFile(base / "zeros" / name, std::string(100'000, '\0'));
        fs::create_directories(base / "folder" / name);
        for (const char* where : {"missing", "empty", "foreign", "zeros", "folder"})
            expectRefused(base / where / name, base);
    }
    ASSERT_EQ(mkfifo((base / "pipe.jpg").c_str(), 0600), 0);
    const Outcome pipe =
        cli({"develop", (base / "pipe.jpg").string(), "-o", (base / "out.jpg").string()});
    EXPECT_EQ(pipe.code, 1);
    expectOneSentence(pipe, "pipe.jpg");
    writeFile(base / "letter.txt", "text");
    const Outcome text = cli({"info", (base / "letter.txt").string()});
    EXPECT_EQ(text.code, 1);
    expectOneSentence(text, "letter.txt");
}

TEST(BadInput, TruncatedPhotos) {
    TemporaryFolder folder;
    for (const char* kind : {".jpg", ".png", ".tif", ".heic", ".dng"}) {
        const std::string whole = contentOf(sample(kind));
        for (const double share : {0.001, 0.1, 0.5, 0.9}) {
            const fs::path photo = folder.path() / (std::string("cut") + kind);
            writeFile(photo, whole.substr(0, std::size_t(double(whole.size()) * share)));
            expectRefused(photo, folder.path());
        }
    }
}

TEST(BadInput, TargetsThatCannotBeWritten) {
    TemporaryFolder folder;
    const fs::path photo = copyOfSample(".jpg", folder.path());
    writeFile(folder.path() / "file", "");
    fs::create_directories(folder.path() / "taken.jpg");
    fs::create_hard_link(photo, folder.path() / "twin.jpg");
    fs::create_symlink(photo, folder.path() / "link.jpg");
    const auto before = snapshot(folder.path());
    const std::string itself = photo.filename().string();
    for (const std::string& name :
         {std::string("nowhere/out.jpg"), std::string("file/out.jpg"), std::string("taken.jpg"),
          std::string("twin.jpg"), std::string("link.jpg"), itself}) {
        const Outcome outcome = cli({"develop", photo.string(), "-o",
                                     (folder.path() / name).string(), "--long-edge", "64"});
        EXPECT_EQ(outcome.code, 1) << name;
        expectOneSentence(outcome, fs::path(name).filename().string());
    }
    EXPECT_EQ(snapshot(folder.path()), before);
    for (const char* name : {"out", "out.gif", "out.dng"})
        EXPECT_EQ(cli({"develop", photo.string(), "-o", (folder.path() / name).string()}).code, 2);
}

TEST(BadInput, OneBadPhotoDoesNotStopTheOthers) {
    const Outcome outcome =
        cli({"info", sample(".jpg").string(), "/nowhere/bad.jpg", sample(".dng").string()});
    EXPECT_EQ(outcome.code, 1);
    expectOneSentence(outcome, "bad.jpg");
    EXPECT_NE(outcome.out.find(sample(".jpg").string()), std::string::npos);
    EXPECT_NE(outcome.out.find(sample(".dng").string()), std::string::npos);
}

} // namespace
} // namespace kelvaro
