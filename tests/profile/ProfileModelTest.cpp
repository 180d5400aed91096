// The profile of a library that changes, and the photos behind its bars.
#include "profile/ProfileModel.h"

#include "library/StoreScene.h"
#include "profile/ProfileSelection.h"
#include "profile/WallTime.h"

namespace kelvaro {
namespace {

class ProfileModelTest : public testing::Test {
protected:
    StoreScene scene;
    LibraryStore& store = scene.open();
    ExportHistory exports{scene.settings};
    std::unique_ptr<ProfileModel> model = make();

    std::unique_ptr<ProfileModel> make() {
        return std::make_unique<ProfileModel>(ProfileModelParts{store, exports, scene.settings,
                                                                scene.clock, *scene.calendar,
                                                                *scene.texts, scene.main});
    }
    PeriodCounts counts() const {
        const auto& profile = *model->profile();
        return profile ? profile->counts : PeriodCounts{-1};
    }
    // Until the model shows these counts.
    void expectCounts(const PeriodCounts& wanted) {
        EXPECT_TRUE(scene.main.runUntil([&] { return counts() == wanted; }, 30))
            << counts().photos << " photos";
    }
};

TEST_F(ProfileModelTest, FollowsALibraryThatIsBeingIndexed) {
    model->follow();
    expectCounts({});
    std::vector<std::string> names;
    for (int i = 0; i < 200; ++i)
        names.push_back("IMG_" + std::to_string(i) + ".jpg");
    for (int i = 0; i < 5; ++i)
        store.addFolder(scene.folder("Trip " + std::to_string(i), names));
    // Meanwhile only numbers that a part of the library can have.
    std::int64_t most = 0;
    const auto watching = model->profile().observe([&] {
        EXPECT_GE(counts().photos, most);
        EXPECT_EQ(counts().photos % 200, 0);
        most = counts().photos;
    });
    expectCounts({.photos = 1000});
    const FolderUrl trip = scene.folder("Trip 0");
    store.setFavorite({trip + "/IMG_7.jpg"}, true);
    expectCounts({.photos = 1000, .favorites = 1});
    Adjustments edit;
    edit.exposure = 1;
    store.setAdjustments(trip + "/IMG_8.jpg", edit);
    exports.add(100, 3);
    expectCounts({.photos = 1000, .favorites = 1, .edits = 1, .exports = 3});
}

TEST_F(ProfileModelTest, RestsUnlessItIsFollowedAndMayEndAnyTime) {
    model->follow();
    expectCounts({});
    model->rest();
    scene.added("Trip", {"a.jpg"});
    EXPECT_EQ(counts(), PeriodCounts{});
    model->follow();
    expectCounts({.photos = 1});
    model->rest();
    model->follow(); // a result is on its way when the model ends
    model.reset();
    scene.settle();
}

TEST_F(ProfileModelTest, KeepsThePeriod) {
    scene.added("Trip", {"a.jpg"});
    model->follow();
    expectCounts({.photos = 1});
    const ProfilePeriod year{ProfilePeriod::Kind::year, 2023};
    model->setPeriod(year); // a photo without a time belongs to no year
    expectCounts({});
    EXPECT_EQ((*model->profile())->period, year);
    EXPECT_EQ(make()->period(), year);
    using Kind = ProfilePeriod::Kind;
    for (const ProfilePeriod& each :
         {ProfilePeriod{Kind::thisMonth}, {Kind::lastMonth}, {Kind::thisYear}, {Kind::allTime}})
        EXPECT_EQ(periodFrom(storedText(each)), each);
    for (const char* nonsense : {"", "0", "-3", "2023 ", "99999999999", "century"})
        EXPECT_EQ(periodFrom(nonsense), ProfilePeriod());
}

TEST(ProfileSelection, HoldsWhatTheBarCounts) {
    const CivilTime today{2024, 6, 1};
    Photo photo;
    std::vector<PhotoMeta> metas;
    for (int i = 0; i < 60; ++i) {
        PhotoMeta meta;
        if (i % 7) meta.takenOnWall = secondsAsUtc({2020 + i % 6, 1 + i % 12, 1 + i % 28, i % 24});
        if (i % 5) meta.aperture = 1.2 * (1 + i % 13);
        meta.camera = "camera " + std::to_string(i % 12);
        metas.push_back(meta);
    }
    ProfileSource source;
    for (const PhotoMeta& meta : metas)
        source.records.push_back(makeShotRecord(photo, &meta, false));
    const auto count = [&](const PhotoRestriction& restriction) {
        return std::count_if(metas.begin(), metas.end(), [&](const PhotoMeta& meta) {
            return restriction.holds(photo, &meta);
        });
    };
    using Kind = ProfilePeriod::Kind;
    for (const ProfilePeriod& period : {ProfilePeriod{Kind::allTime}, {Kind::year, 2023}}) {
        const Profile profile = makeProfile(source, period, today);
        for (const Chart& chart : profile.charts) {
            for (std::size_t bar = 0; bar < chart.bars().size(); ++bar) {
                const auto photos = photosOfBar(chart, bar, period, today);
                EXPECT_EQ(count(*photos), chart.bars()[bar].count) << photos->title;
                EXPECT_FALSE(photos->holds(photo, nullptr)); // not read yet
            }
        }
        for (const auto& [day, photos] : profile.photosByDay)
            EXPECT_EQ(count(*photosOfDay(day, *makeIcuTextRules("en"))), photos);
    }
}

} // namespace
} // namespace kelvaro
