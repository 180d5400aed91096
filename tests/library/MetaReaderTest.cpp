// Reading many files: everything arrives once, what is remembered is not read again, and a reader
// can be stopped.
#include "library/MetaReader.h"
#include "fakes/TemporaryFolder.h"
#include "library/LibrarySamples.h"
#include "platform/cache/SqliteMetaCache.h"

#include <gtest/gtest.h>

#include <atomic>
#include <map>

namespace kelvaro {
namespace {

using namespace test;

// Tells the length of the file name as ISO; files called "bad…" fail.
class NameReader final : public PropertyReader {
public:
    Result<PhotoProperties> read(const std::filesystem::path& path) override {
        ++reads;
        const std::string name = path.filename().string();
        if (name.starts_with("bad")) return fail(FailureKind::malformed, "bad");
        PhotoProperties properties;
        properties.exif.set("ISOSpeedRatings", std::int64_t(name.size()));
        return properties;
    }
    PhotoColour readColour(const std::filesystem::path&) override { return {}; }
    std::atomic<int> reads{0};
};

struct MetaReading : testing::Test {
    TemporaryFolder folder;
    std::unique_ptr<TextRules> rules = makeIcuTextRules("en");
    std::unique_ptr<LocalCalendar> calendar = makeIcuCalendar("UTC");
    NameReader properties;
    SqliteMetaCache cache{folder / "deep/meta.sqlite"};
    MetaReader reader{properties, &cache, *calendar};

    FolderPhotos photos(int count, std::int64_t size = 1000) {
        std::vector<Photo> list;
        for (int i = 0; i < count; ++i)
            list.push_back(photoAt("/p/" + std::string(i % 7 == 3 ? "bad" : "n\xFF") +
                                       std::to_string(i) + ".jpg",
                                   utc(2020, 1, 1), size));
        return FolderListing::make("/p", list, *rules);
    }
    std::map<PhotoUrl, SharedMeta> readAll(const FolderPhotos& listing, MetaReader::Plan plan) {
        std::map<PhotoUrl, SharedMeta> all;
        reader.read(listing->folder(), listing->photos(), plan, Cancellation(),
                    [&](const PhotoMetas& batch) {
                        EXPECT_LE(batch.size(), plan.batch);
                        for (const auto& [url, meta] : batch)
                            EXPECT_TRUE(all.emplace(url, meta).second) << url;
                    });
        return all;
    }
};

TEST_F(MetaReading, EverythingArrivesOnceAndIsRemembered) {
    for (const auto& plan : {MetaReader::Plan{1, 1000}, {2, 1}, {4, 7}, {8, 64}}) {
        const FolderPhotos listing = photos(100, plan.threads);
        const auto all = readAll(listing, plan);
        ASSERT_EQ(all.size(), 100u);
        std::size_t readable = 0;
        for (const auto& [url, meta] : all) {
            ASSERT_EQ(meta == nullptr, fileNameOf(url).starts_with("bad")) << url;
            readable += meta != nullptr;
            if (meta) {
                EXPECT_EQ(meta->iso, int(fileNameOf(url).size()));
            }
        }
        const int reads = properties.reads;
        const PhotoMetas cached = reader.remembered(*listing).photos;
        EXPECT_EQ(cached.size(), readable);
        for (const auto& [url, meta] : cached)
            EXPECT_EQ(*meta, *all.at(url));
        EXPECT_EQ(properties.reads, reads);
        EXPECT_TRUE(reader.remembered(*photos(100, 4711)).photos.empty()); // the files have changed
    }
}

TEST_F(MetaReading, GoneFilesAreKnownUntilForgotten) {
    readAll(photos(3), {1, 64});
    const PhotoMetas gone = reader.remembered(*photos(1)).gone;
    ASSERT_EQ(gone.size(), 2u);
    EXPECT_EQ(gone[0].second->size, 1000);
    reader.forget("/p", std::vector<std::string>{std::string(fileNameOf(gone[0].first))});
    EXPECT_EQ(reader.remembered(*photos(1)).gone.size(), 1u);
}

TEST_F(MetaReading, StopsBetweenFiles) {
    const FolderPhotos listing = photos(500);
    Cancellation cancellation;
    std::size_t delivered = 0;
    reader.read("/p", listing->photos(), {2, 10}, cancellation, [&](const PhotoMetas& batch) {
        delivered += batch.size();
        cancellation.cancel();
    });
    EXPECT_GE(delivered, 10u);
    EXPECT_LE(delivered, 20u); // the batch that the other thread was at
    MetaReader without(properties, nullptr, *calendar);
    EXPECT_TRUE(without.remembered(*listing).photos.empty());
    EXPECT_TRUE(without.readOne(listing->photos().back()));
}

} // namespace
} // namespace kelvaro
