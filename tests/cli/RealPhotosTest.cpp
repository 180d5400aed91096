// The photos of a test collection, sound and broken, through `develop` and `info`: sound ones give
// a picture of the right size, broken ones a sentence or a sane picture, none of them a crash, and
// all stay as they are. KELVARO_PHOTOS says where the collection lies.
#include "cli/CliRunner.h"
#include "places/Places.h"
#include "platform/PhotoKinds.h"

#include <chrono>
#include <cstdlib>

namespace kelvaro {
namespace {

using namespace test;

std::vector<fs::path> photosIn(const char* folder) {
    std::vector<fs::path> photos;
    if (fs::is_directory(places::photos() / folder))
        for (const auto& entry : fs::directory_iterator(places::photos() / folder))
            if (entry.is_regular_file()) photos.push_back(entry.path());
    std::sort(photos.begin(), photos.end());
    return photos;
}

struct RealPhotos : testing::Test {
    TemporaryFolder folder;

    void SetUp() override {
        if (!fs::is_directory(places::photos()))
            GTEST_SKIP() << "no photo collection at " << places::photos();
    }
    Outcome develop(const fs::path& photo) {
        return cli({"develop", photo.string(), "-o", (folder.path() / "out.jpg").string(),
                    "--long-edge", "128", "--no-sidecar"});
    }
};

TEST_F(RealPhotos, SoundOnesBecomePictures) {
    for (const char* kind : {"raw", "bitmap"})
        for (const fs::path& photo : photosIn(kind)) {
            if (!photoKind(photo) || photo.string().ends_with(".truth.png")) continue;
            const std::string before = contentOf(photo);
            const Outcome outcome = develop(photo);
            EXPECT_EQ(outcome.code, 0) << photo << ": " << outcome.err;
            EXPECT_EQ(cli({"info", photo.string()}).code, 0) << photo;
            EXPECT_EQ(contentOf(photo), before) << photo;
        }
}

TEST_F(RealPhotos, BrokenOnesNeverCrash) {
    for (const fs::path& photo : photosIn("broken")) {
        const std::string before = contentOf(photo);
        const auto begin = std::chrono::steady_clock::now();
        const Outcome developed = develop(photo), told = cli({"info", photo.string()});
        const auto time = std::chrono::steady_clock::now() - begin;
        for (const Outcome& outcome : {developed, told}) {
            EXPECT_TRUE(outcome.code == 0 || outcome.code == 1)
                << photo << " ended with " << outcome.code << ": " << outcome.err;
            if (outcome.code == 1) expectOneSentence(outcome, photo.filename().string());
            if (outcome.code == 0) {
                EXPECT_EQ(outcome.err, "") << photo;
            }
        }
        EXPECT_LT(time, std::chrono::seconds(60)) << photo;
        EXPECT_EQ(fs::exists(folder.path() / "out.jpg"), developed.code == 0) << photo;
        fs::remove(folder.path() / "out.jpg");
        EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 0) << photo;
        EXPECT_EQ(contentOf(photo), before) << photo;
    }
}

} // namespace
} // namespace kelvaro
