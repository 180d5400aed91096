#include "app/SelectionPrewarm.h"

#include "app/LaterByHand.h"
#include "render/RenderStage.h"

namespace kelvaro {
namespace {

class SelectionPrewarmTest : public testing::Test {
protected:
    Photo photo(const char* name) {
        Photo photo;
        photo.url = stage.jpeg(name, test::picture({300, 200}, test::landscape)).string();
        return photo;
    }
    // Whether the canvas would find the photo drawn.
    bool isReady(const Photo& photo, const Adjustments& edit) const {
        const auto session = stage.sessions.presentAsItIs(photo.url);
        if (!session) return false;
        ViewRequest request;
        request.edit = edit;
        request.fit = SelectionPrewarm::usualCanvas;
        request.keepAlpha = true;
        return session->takePrepared(request).has_value();
    }

    test::RenderStage stage;
    LaterByHand later{stage.manual};
    SelectionPrewarm prewarm{stage.sessions, later.asked()};
    static constexpr double restSeconds = 0.3;
};

TEST_F(SelectionPrewarmTest, DrawsThePhotoWithItsEditOnceTheSelectionRests) {
    const Photo chosen = photo("a.jpg");
    Adjustments edit;
    edit.exposure = 1;
    prewarm.prewarm(chosen, edit);
    later.pass(restSeconds / 2);
    EXPECT_EQ(stage.sessions.count(), 0u);
    later.pass(restSeconds);
    EXPECT_TRUE(isReady(chosen, edit));
}

TEST_F(SelectionPrewarmTest, PassesOverWhatArrowKeysRunThrough) {
    const std::vector<Photo> passed{photo("a.jpg"), photo("b.jpg"), photo("c.jpg")};
    for (const Photo& each : passed) {
        prewarm.prewarm(each, {});
        later.pass(restSeconds / 3);
    }
    later.pass(restSeconds);
    EXPECT_EQ(stage.sessions.count(), 1u);
    EXPECT_TRUE(isReady(passed.back(), {}));
}

TEST_F(SelectionPrewarmTest, DoesNothingOnceCancelledOrGone) {
    prewarm.prewarm(photo("a.jpg"), {});
    prewarm.cancelPrewarm();
    later.pass(1);
    EXPECT_EQ(stage.sessions.count(), 0u);
    {
        SelectionPrewarm ended(stage.sessions, later.asked());
        ended.prewarm(photo("b.jpg"), {});
    }
    later.pass(1);
    EXPECT_EQ(stage.sessions.count(), 0u);
}

TEST_F(SelectionPrewarmTest, ForgetsPhotosThatAreGoneAndBearsThoseThatAreNoMore) {
    const Photo chosen = photo("a.jpg"), other = photo("b.jpg");
    for (const Photo& each : {chosen, other}) {
        prewarm.prewarm(each, {});
        later.pass(1);
    }
    prewarm.forget({chosen.url});
    EXPECT_EQ(stage.sessions.count(), 1u);
    EXPECT_TRUE(isReady(other, {}));

    std::filesystem::remove(chosen.url);
    prewarm.prewarm(chosen, {});
    later.pass(1);
    EXPECT_EQ(stage.sessions.count(), 1u);
}

} // namespace
} // namespace kelvaro
