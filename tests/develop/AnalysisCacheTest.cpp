#include "develop/AnalysisCache.h"

#include "develop/AnalysisFile.h"
#include "develop/Pictures.h"
#include "develop/Recipes.h"
#include "develop/ToneAnalysis.h"
#include "platform/imaging/ReferenceRenderer.h"
#include "platform/system/PosixFileSystem.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <thread>

namespace kelvaro {
namespace {

class AnalysisCacheTest : public testing::Test {
protected:
    void SetUp() override {
        std::string name = (std::filesystem::temp_directory_path() / "kelvaro-XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder_ = std::filesystem::path(name) / "Analyses";
    }
    void TearDown() override { std::filesystem::remove_all(folder_.parent_path()); }

    std::unique_ptr<AnalysisCache> cache(AnalysisCache::Limits limits = {},
                                         std::string version = "7") {
        return std::make_unique<AnalysisCache>(files_, folder_, *renderer_, limits, version);
    }
    ImageSource photo(const std::string& url, const std::string& identity = "1", bool raw = false) {
        const PixelSize size{40, 30};
        RawProperties properties;
        properties.size = size;
        return raw ? rawSource(url, identity, test::testPicture(size, 9), properties)
                   : bitmapSource(url, identity, test::testPicture(size, 1), size);
    }
    ImageSource measuredPhoto(const std::string& url, const std::string& identity = "1",
                              bool raw = false) {
        const ImageSource source = photo(url, identity, raw);
        EXPECT_TRUE(toneMaps(source, test::everything(), *renderer_, nullptr));
        return source;
    }
    static ToneMeasurement knownOf(const ImageSource& source) {
        return source.isRaw() ? source.rawToneAnalysis->known() : source.analysis->known();
    }
    bool recalls(AnalysisCache& cache, const ImageSource& source) {
        cache.recall(source);
        return knownOf(source).levels.has_value();
    }
    std::vector<std::filesystem::path> storedFiles() const {
        std::vector<std::filesystem::path> paths;
        if (std::filesystem::exists(folder_))
            for (const auto& entry : std::filesystem::directory_iterator(folder_))
                paths.push_back(entry.path());
        return paths;
    }
    void write(const std::filesystem::path& path, const std::string& content) {
        std::ofstream(path, std::ios::binary) << content;
    }

    std::filesystem::path folder_;
    PosixFileSystem files_;
    std::unique_ptr<Renderer> renderer_ = makeReferenceRenderer();
};

TEST_F(AnalysisCacheTest, SurvivesTheProgram) {
    for (const bool raw : {false, true}) {
        const ImageSource first = measuredPhoto("/photos/a", "1", raw);
        {
            const auto before = cache();
            before->remember(first);
            before->waitForWrites();
        }
        const auto after = cache();
        const ImageSource again = photo("/photos/a", "1", raw);
        after->recall(again);
        const ToneMeasurement old = knownOf(first), found = knownOf(again);
        EXPECT_EQ(found.levels, old.levels);
        ASSERT_TRUE(found.haze && found.sceneGuide);
        EXPECT_EQ(found.haze->airlight, old.haze->airlight);
        const std::pair<Image, Image> images[] = {{found.sceneGuide, old.sceneGuide},
                                                  {found.haze->hazeMap, old.haze->hazeMap},
                                                  raw ? std::pair{found.small, old.small}
                                                      : std::pair{found.guide, old.guide}};
        for (const auto& [image, expected] : images)
            EXPECT_EQ(test::worstDifference(test::drawn(*renderer_, image),
                                            test::drawn(*renderer_, expected))
                          .worst,
                      0);
        // Nothing is measured again, and nothing that was read is written again.
        EXPECT_TRUE(toneMaps(again, test::everything(), *renderer_, nullptr));
        const auto files = storedFiles();
        std::filesystem::remove(files.front());
        after->remember(again);
        after->waitForWrites();
        EXPECT_EQ(storedFiles().size(), files.size() - 1);
        std::filesystem::remove_all(folder_);
    }
}

TEST_F(AnalysisCacheTest, OtherPhotosStatesAndVersionsAreNotFound) {
    {
        const auto before = cache();
        before->remember(measuredPhoto("/photos/a"));
        before->waitForWrites();
        EXPECT_TRUE(recalls(*before, photo("/photos/a")));
        EXPECT_FALSE(recalls(*before, photo("/photos/b")));
        EXPECT_FALSE(recalls(*before, photo("/photos/a", "2")));
        EXPECT_FALSE(recalls(*before, photo("/photos/a", "1", true)));
    }
    EXPECT_TRUE(recalls(*cache(), photo("/photos/a")));
    EXPECT_FALSE(recalls(*cache({}, "8"), photo("/photos/a")));
}

TEST_F(AnalysisCacheTest, MemoryIsBoundedByBytesAndDropsTheOldest) {
    const ImageSource a = measuredPhoto("/a"), b = measuredPhoto("/b"), c = measuredPhoto("/c");
    const std::size_t each = knownOf(a).bytes();
    const auto small = cache({.memoryBytes = 2 * each});
    small->remember(a);
    small->remember(b);
    EXPECT_TRUE(recalls(*small, photo("/a"))); // b is now the older one
    small->remember(c);
    small->waitForWrites();
    EXPECT_LE(small->memoryBytes(), 2 * each);
    std::filesystem::remove_all(folder_);
    EXPECT_TRUE(recalls(*small, photo("/a")));
    EXPECT_TRUE(recalls(*small, photo("/c")));
    EXPECT_FALSE(recalls(*small, photo("/b")));
    small->releaseMemory();
    EXPECT_EQ(small->memoryBytes(), 0u);
    EXPECT_FALSE(recalls(*small, photo("/a")));
}

TEST_F(AnalysisCacheTest, DamagedAndForeignFilesAreMadeAgain) {
    const auto first = cache();
    first->remember(measuredPhoto("/a"));
    first->waitForWrites();
    ASSERT_EQ(storedFiles().size(), 1u);
    const auto path = storedFiles().front();
    std::ifstream stream(path, std::ios::binary);
    const std::string good((std::istreambuf_iterator<char>(stream)), {});
    ASSERT_TRUE(recalls(*cache(), photo("/a")));

    std::mt19937 random(5);
    std::vector<std::string> bad{"",
                                 "x",
                                 good.substr(0, good.size() / 2),
                                 good + "x",
                                 std::string(good.size(), '\0'),
                                 std::string(40 << 20, 'k')};
    for (int i = 0; i < 60; ++i) {
        std::string flipped = good;
        flipped[random() % good.size()] ^= char(1 << random() % 8);
        bad.push_back(flipped);
    }
    for (const std::string& content : bad) {
        write(path, content);
        EXPECT_FALSE(recalls(*cache(), photo("/a"))) << content.size();
    }
    const auto again = cache();
    again->remember(measuredPhoto("/a"));
    again->waitForWrites();
    EXPECT_TRUE(recalls(*cache(), photo("/a")));
}

TEST_F(AnalysisCacheTest, TheFolderIsBoundedAndSweptOfUnfinishedFiles) {
    const auto first = cache();
    first->remember(measuredPhoto("/0"));
    first->waitForWrites();
    const auto size = std::int64_t(std::filesystem::file_size(storedFiles().front()));
    const auto dead = folder_ / (".0.analysis.kelvaro-abcdef");
    const auto alive = folder_ / (".1.analysis.kelvaro-abcdef");
    const auto strange = folder_ / "notes.txt";
    for (const auto& path : {dead, alive, strange})
        write(path, "x");
    std::filesystem::last_write_time(dead, std::filesystem::file_time_type::clock::now() -
                                               std::chrono::hours(48));
    const auto bounded = cache({.memoryBytes = 0, .diskBytes = 3 * size + 10});
    for (int i = 1; i < 6; ++i) {
        bounded->remember(measuredPhoto(std::string(1, '/').append(std::to_string(i))));
        bounded->waitForWrites();
    }
    EXPECT_EQ(storedFiles().size(), 5u); // three of ours, the unfinished one and the notes
    EXPECT_FALSE(std::filesystem::exists(dead));
    EXPECT_TRUE(std::filesystem::exists(alive) && std::filesystem::exists(strange));
    EXPECT_TRUE(recalls(*bounded, photo("/5")));
    EXPECT_FALSE(recalls(*bounded, photo("/0")));
}

// Two programs on one folder: whatever a reader finds is whole.
TEST_F(AnalysisCacheTest, SeveralProgramsShareTheFolder) {
    std::vector<ImageSource> photos;
    for (int i = 0; i < 4; ++i)
        photos.push_back(measuredPhoto(std::string(1, '/').append(std::to_string(i))));
    const auto program = [&] {
        for (int round = 0; round < 5; ++round) {
            const auto mine = cache({.memoryBytes = 0, .diskBytes = 80'000});
            for (const ImageSource& source : photos) {
                mine->remember(source);
                const ImageSource again = photo(source.url.native());
                mine->recall(again);
                const auto levels = knownOf(again).levels;
                EXPECT_TRUE(!levels || levels == knownOf(source).levels);
            }
            mine->waitForWrites();
        }
    };
    std::thread other(program);
    program();
    other.join();
}

TEST_F(AnalysisCacheTest, AnUnusableFolderIsSilent) {
    write(folder_, "a file where the folder should be");
    const auto nowhere = cache();
    nowhere->remember(measuredPhoto("/a"));
    nowhere->waitForWrites();
    EXPECT_TRUE(recalls(*nowhere, photo("/a"))); // from memory
    std::filesystem::remove(folder_);
}

TEST(AnalysisFile, RefusesOtherLayoutsAndNumbers) {
    StoredAnalysis analysis;
    analysis.images.emplace(AnalysisImage::guide, test::rasterOf({3, 2}, false, [](int x, int y) {
                                return test::Pixel{float(x), float(y), 0.5f, 1};
                            }));
    auto file = encodedAnalysis(analysis, "7", "key");
    ASSERT_TRUE(decodedAnalysis(file, "7", "key"));
    EXPECT_FALSE(decodedAnalysis(file, "7", "kez"));
    EXPECT_FALSE(decodedAnalysis(file, "77", "key"));
    // Changes under a correct checksum: the layout's numbers, and a pixel that is no number.
    const auto with = [&](std::size_t fromEnd, auto value) {
        auto changed = file;
        std::memcpy(changed.data() + changed.size() - fromEnd, &value, sizeof value);
        const auto sum = checksum(std::span(changed).first(changed.size() - 8));
        std::memcpy(changed.data() + changed.size() - 8, &sum, 8);
        return decodedAnalysis(changed, "7", "key").has_value();
    };
    const std::size_t pixels = 8 + 3 * 2 * 16;
    EXPECT_TRUE(with(pixels, 1.0f));
    EXPECT_FALSE(with(pixels, std::nanf("")));
    EXPECT_FALSE(with(pixels + 4, std::uint32_t(64)));  // bits per pixel
    EXPECT_FALSE(with(pixels + 8, std::uint32_t(16)));  // bits per component
    EXPECT_FALSE(with(pixels + 12, std::uint32_t(1)));  // height: bytes are left over
    EXPECT_FALSE(with(pixels + 16, ~std::uint32_t(0))); // width
    EXPECT_FALSE(with(pixels + 20, std::uint32_t(9)));  // role
    analysis.levels = ToneLevels{std::nan(""), 1};
    EXPECT_FALSE(decodedAnalysis(encodedAnalysis(analysis, "7", "key"), "7", "key"));
}

} // namespace
} // namespace kelvaro
