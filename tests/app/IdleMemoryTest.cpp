#include "app/IdleMemory.h"

#include "app/LaterByHand.h"
#include "render/RenderStage.h"

namespace kelvaro {
namespace {

class IdleMemoryTest : public testing::Test {
protected:
    IdleMemoryTest() {
        for (const char* name : {"a.jpg", "b.jpg", "c.jpg"})
            photos.push_back(stage.jpeg(name, test::picture({300, 200}, test::landscape)));
        idle = std::make_unique<IdleMemory>(
            IdleMemory::Parts{stage.sessions, openPhoto, view, selection, stage.manual, stage.loop,
                              later.asked(), [this] { ++returned; }},
            IdleMemory::Limits{bytesOfOne * 2, bytesOfOne});
    }
    // As the canvas does with the open photo and its neighbours.
    void decode(const std::filesystem::path& photo) {
        ViewRequest request;
        request.fit = PixelSize{300, 300};
        ASSERT_TRUE((*stage.sessions.session(photo))->render(request, {}, nullptr));
    }
    void openAll() {
        openPhoto.set(photos[0].string());
        for (const auto& photo : photos)
            decode(photo);
    }
    void pass(double seconds) {
        later.pass(seconds, [&] { stage.loop.runPosted(); });
    }
    bool isKept(const std::filesystem::path& photo) const {
        return stage.sessions.presentAsItIs(photo) != nullptr;
    }

    static constexpr std::size_t bytesOfOne = 200'000;
    test::RenderStage stage;
    LaterByHand later{stage.manual};
    Published<std::optional<PhotoUrl>> openPhoto;
    Published<std::shared_ptr<const LibraryView>> view;
    Published<PhotoSet> selection;
    std::vector<std::filesystem::path> photos;
    int returned = 0;
    std::unique_ptr<IdleMemory> idle;
};

TEST_F(IdleMemoryTest, KeepsThePhotoThatWasOpenForAWhileAndTheOthersNot) {
    openAll(); // the neighbours were used after it
    pass(1000);
    EXPECT_EQ(stage.sessions.count(), 3u);
    EXPECT_EQ(returned, 0);

    openPhoto.set(std::nullopt);
    pass(0);
    EXPECT_EQ(stage.sessions.count(), 1u);
    EXPECT_TRUE(isKept(photos[0]));
    EXPECT_EQ(returned, 0); // the hand may go straight back
    pass(6);
    EXPECT_EQ(returned, 1);
    pass(50);
    EXPECT_TRUE(isKept(photos[0]));
    pass(10);
    EXPECT_EQ(stage.sessions.count(), 0u);
    EXPECT_EQ(returned, 2);
    EXPECT_EQ(later.waiting(), 0u); // and sleeps until something is asked for
}

TEST_F(IdleMemoryTest, LeavesAPhotoAloneThatIsOpenAgain) {
    openAll();
    openPhoto.set(std::nullopt);
    openPhoto.set(photos[1].string()); // before the job's turn came
    pass(200);
    EXPECT_EQ(stage.sessions.count(), 3u);
    EXPECT_EQ(returned, 0);
}

TEST_F(IdleMemoryTest, KeepsLessInTheGridThanInTheEditor) {
    for (const auto& photo : photos)
        decode(photo);
    stage.sessions.trim();
    EXPECT_EQ(stage.sessions.count(), 1u);
    openPhoto.set(photos[0].string());
    for (const auto& photo : photos)
        decode(photo);
    stage.sessions.trim();
    EXPECT_EQ(stage.sessions.count(), 2u);
}

TEST_F(IdleMemoryTest, ReturnsWhatASearchNeededOnceTheHandRests) {
    for (int key = 0; key < 10; ++key) {
        view.set(nullptr);
        selection.set({});
        pass(1);
    }
    EXPECT_EQ(returned, 0);
    EXPECT_EQ(later.waiting(), 1u); // not one for each
    pass(6);
    EXPECT_EQ(returned, 1);
    pass(30);
    EXPECT_EQ(returned, 1);
    view.set(nullptr);
    pass(6);
    EXPECT_EQ(returned, 2);
}

TEST_F(IdleMemoryTest, ReturnsSomeNowAndThenWhileTheHandNeverRests) {
    for (int second = 0; second < 60; ++second) {
        view.set(nullptr);
        pass(1);
    }
    EXPECT_GE(returned, 2);
    EXPECT_LE(returned, 3);
}

TEST_F(IdleMemoryTest, EndsWithJobsStillWaiting) {
    openAll();
    openPhoto.set(std::nullopt);
    idle.reset();
    pass(1000);
    EXPECT_EQ(returned, 0);
}

} // namespace
} // namespace kelvaro
