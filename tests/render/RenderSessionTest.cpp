#include "render/RenderSession.h"

#include "render/RenderStage.h"

#include <cstring>

namespace kelvaro::test {
namespace {

constexpr double kPatience = 20; // seconds

// A second, or another time, passes with every look at the clock, so that every frame is too slow.
class SlowClock final : public Clock {
public:
    explicit SlowClock(double step = 1) : step_(step) {}
    double monotonicSeconds() const override { return seconds_ += step_; }
    double wallSeconds() const override { return seconds_; }

private:
    double step_;
    mutable std::atomic<double> seconds_{1000};
};

ViewRequest fitting(int side) {
    ViewRequest request;
    request.fit = PixelSize{side, side};
    return request;
}

struct Canvas {
    explicit Canvas(RenderStage& on) : stage(on), session(on.engine, on.sessions) {}

    void render(const ViewRequest& request) {
        session.render(request, [this](const Result<RenderedView>& view) {
            if (!view) {
                failures.push_back(view.error());
                return;
            }
            views.push_back(*view);
        });
    }
    bool waitForFinal() {
        return stage.loop.runUntil([&] { return !views.empty() && views.back().isFinal; },
                                   kPatience);
    }
    // Everything that is under way has arrived.
    void settle() {
        session.waitUntilIdle();
        stage.loop.runPosted();
    }

    RenderStage& stage;
    RenderSession session;
    std::vector<RenderedView> views;
    std::vector<Failure> failures;
};

TEST(RenderSession, StagesComeInTheirOrder) {
    RenderStage stage;
    const auto photo = stage.dng("photo.dng", {256, 192}, {128, 96});
    Canvas canvas(stage);
    std::optional<PhotoFacts> facts;
    canvas.session.open(photo, [&](const Result<PhotoFacts>& told) { facts = told.value(); });
    canvas.render(fitting(1000)); // full size
    ASSERT_TRUE(canvas.waitForFinal());
    canvas.settle();
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->size, (PixelSize{256, 192}));
    EXPECT_TRUE(facts->isRaw);
    ASSERT_GE(canvas.views.size(), 2u);
    for (std::size_t i = 1; i < canvas.views.size(); ++i)
        EXPECT_LT(canvas.views[i - 1].stage, canvas.views[i].stage);
    EXPECT_EQ(canvas.views.back().stage, ViewStage::full);
    EXPECT_EQ(stage.engine.work().state().urgent, 0);
    // Shown again, everything is there: one view, at once.
    canvas.views.clear();
    canvas.render(fitting(1000));
    canvas.settle();
    ASSERT_EQ(canvas.views.size(), 1u);
    EXPECT_TRUE(canvas.views[0].isFinal);
}

TEST(RenderSession, TheNewestRequestWins) {
    RenderStage stage;
    Canvas canvas(stage);
    canvas.session.open(stage.dng("photo.dng", {256, 192}));
    for (int i = 0; i < 30; ++i) {
        ViewRequest request = fitting(60 + i);
        request.interactive = i % 3 == 0 && i < 20;
        canvas.render(request);
    }
    ASSERT_TRUE(canvas.waitForFinal());
    canvas.settle();
    EXPECT_EQ(canvas.views.back().pictureSize.width, 89);
    for (std::size_t i = 1; i < canvas.views.size(); ++i) // never back
        EXPECT_LE(canvas.views[i - 1].pictureSize.width, canvas.views[i].pictureSize.width);
    EXPECT_TRUE(canvas.failures.empty());
    EXPECT_EQ(stage.engine.work().state().urgent, 0);
}

TEST(RenderSession, GesturesAreCoarseInTimeAndSharpInTheEnd) {
    const SlowClock clock;
    RenderStage stage(&clock);
    Canvas canvas(stage);
    canvas.session.open(stage.jpeg("photo.jpg", picture({200, 150}, landscape)));
    canvas.render(fitting(120));
    ASSERT_TRUE(canvas.waitForFinal());
    canvas.views.clear();
    ViewRequest request = fitting(120);
    request.edit.exposure = 0.3;
    request.interactive = true;
    canvas.render(request);
    ASSERT_TRUE(canvas.waitForFinal());
    ASSERT_EQ(canvas.views.size(), 2u);
    EXPECT_EQ(canvas.views[0].stage, ViewStage::coarse);
    EXPECT_EQ(canvas.views[0].pixels->size, (PixelSize{30, 23})); // a quarter, rounded up
    EXPECT_EQ(canvas.views[1].pixels->size, (PixelSize{120, 90}));
}

// What a canvas makes of a part: the view it had, with the part in its place.
Bitmap laidOver(const RenderedView& base, const RenderedView& part) {
    Bitmap all(base.pixels->size, base.pixels->channels, SampleType::u8);
    std::memcpy(all.samples.get(), base.pixels->samples.get(), all.bytes());
    const int pitch = base.rect.width / base.pixels->size.width;
    const int left = (part.rect.x - base.rect.x) / pitch;
    const int down = (base.rect.top() - part.rect.top()) / pitch;
    for (int y = 0; y < part.pixels->size.height; ++y)
        std::memcpy(all.row<std::uint8_t>(down + y) + left * all.channels,
                    part.pixels->row<std::uint8_t>(y), part.pixels->rowBytes());
    return all;
}

// A brush on its way over the photo, zoomed and turned; what comes is what a whole view would be.
TEST(RenderSession, WhatIsPaintedComesAlone) {
    struct Case {
        const char* name;
        bool isRaw, isSlow;
        double scale, straighten;
        std::optional<PixelRect> rect;
        bool overlay;
    };
    const Case cases[] = {
        {"fitted", false, false, 0.4, 0, {}, false},
        {"a RAW photo with its overlay", true, false, 0.4, 0, {}, true},
        {"turned", true, false, 0.55, 7, {}, false},
        {"a part at full size", false, false, 1, -3, PixelRect{40, 30, 90, 80}, true},
        {"a coarse view", false, true, 0.7, 0, {}, false},
    };
    const SlowClock slow(0.05);
    const ManualClock quick;
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        RenderStage stage(test.isSlow ? static_cast<const Clock*>(&slow) : &quick);
        const auto photo = test.isRaw ? stage.dng("photo.dng", {256, 192})
                                      : stage.jpeg("photo.jpg", picture({256, 192}, landscape));
        ViewRequest request;
        request.scale = test.scale;
        request.rect = test.rect;
        request.edit.straighten = test.straighten;
        request.edit.vignette = -40;
        request.edit.masks.resize(1);
        request.edit.masks[0].exposure = 1;
        request.edit.masks[0].components.resize(1);
        auto& strokes = request.edit.masks[0].components[0].strokes;
        strokes.push_back({{{0.3, 0.3}}, 0.04, 60, 80, false});
        request.maskOverlay.all = test.overlay;
        Canvas canvas(stage);
        canvas.session.open(photo);
        canvas.render(request);
        canvas.settle();
        request.interactive = true;
        RenderedView base = canvas.views.back(); // a settled one
        canvas.views.clear();
        if (test.isSlow) {
            request.edit.exposure = 0.3;
            canvas.render(request);
            canvas.settle();
            base = canvas.views.front();
            ASSERT_EQ(base.stage, ViewStage::coarse);
            canvas.views.clear();
        }
        ASSERT_EQ(base.over, 0u);
        request.over = base.number;
        strokes[0].points.push_back({0.5, 0.4});
        canvas.render(request);
        canvas.settle();
        ASSERT_FALSE(canvas.views.empty());
        const RenderedView part = canvas.views.front();
        ASSERT_EQ(part.over, base.number);
        EXPECT_LT(part.rect.width * part.rect.height, base.rect.width * base.rect.height);
        const PhotoSession::Pass pass{base.rect.width / base.pixels->size.width, 1, !test.isSlow};
        const auto whole = stage.session(photo)->render(request, pass, nullptr);
        ASSERT_TRUE(whole);
        EXPECT_EQ(worstDifference(laidOver(base, part), *whole->pixels), 0);
        // With a control moved as well it is another picture.
        canvas.views.clear();
        request.over = part.number;
        request.edit.contrast = 20;
        strokes[0].points.push_back({0.6, 0.4});
        canvas.render(request);
        canvas.settle();
        ASSERT_FALSE(canvas.views.empty());
        EXPECT_EQ(canvas.views.front().over, 0u);
    }
}

TEST(RenderSession, FailuresAreToldOnceAndAnotherPhotoEndsThem) {
    RenderStage stage;
    writeFile(stage.folder / "broken.jpg", "\xFF\xD8\xFF nothing");
    writeFile(stage.folder / "broken.dng", "II*");
    const auto good = stage.jpeg("good.jpg", picture({60, 40}, landscape));
    for (const char* name : {"missing.jpg", "missing.dng", "broken.jpg", "broken.dng"}) {
        SCOPED_TRACE(name);
        Canvas canvas(stage);
        int told = 0;
        canvas.session.open(stage.folder / name, [&](const Result<PhotoFacts>& facts) {
            ++told;
            EXPECT_FALSE(facts);
        });
        canvas.render(fitting(50));
        canvas.settle();
        EXPECT_EQ(told, 1);
        ASSERT_EQ(canvas.failures.size(), 1u);
        EXPECT_NE(canvas.failures[0].message.find(name), std::string::npos);

        canvas.failures.clear();
        canvas.session.open(stage.folder / name);
        canvas.render(fitting(50));
        canvas.session.open(good);
        canvas.render(fitting(50));
        ASSERT_TRUE(canvas.waitForFinal());
        canvas.settle();
        EXPECT_TRUE(canvas.failures.empty());
    }
}

// Another program writes the photo while it lies on the canvas; then its drive goes.
TEST(RenderSession, ShowsTheFileAsItIsAndThenAsItWas) {
    RenderStage stage;
    const auto photo = stage.jpeg("photo.jpg", picture({60, 40}, landscape));
    Canvas canvas(stage);
    canvas.session.open(photo);
    const auto sizeNow = [&] {
        canvas.views.clear();
        canvas.render(fitting(1000));
        EXPECT_TRUE(canvas.waitForFinal());
        canvas.settle();
        return canvas.views.back().pictureSize;
    };
    EXPECT_EQ(sizeNow(), (PixelSize{60, 40}));
    stage.jpeg("photo.jpg", picture({90, 30}, landscape));
    EXPECT_EQ(sizeNow(), (PixelSize{90, 30}));
    std::filesystem::remove(photo);
    EXPECT_EQ(sizeNow(), (PixelSize{90, 30}));
}

TEST(RenderSession, CountsTheWholePictureWithoutOverlays) {
    RenderStage stage;
    // Left half black, right half white.
    const auto photo = stage.jpeg("photo.jpg", picture({64, 64}, [](double x, double) {
                                      const double v = x < 0.5 ? 0 : 1;
                                      return Colour{v, v, v};
                                  }));
    Canvas canvas(stage);
    std::vector<Histogram> counted;
    canvas.session.setHistogramCallback([&](const Histogram& h) { counted.push_back(h); });
    canvas.session.open(photo);
    ViewRequest request;
    request.clipping = true;
    request.rect = PixelRect{0, 0, 10, 64}; // a part, painted over
    canvas.render(request);
    ASSERT_TRUE(canvas.waitForFinal());
    canvas.settle();
    ASSERT_EQ(counted.size(), 1u);
    EXPECT_EQ(counted[0].pixels, 64u * 64);
    EXPECT_EQ(counted[0].clippedHighlights, 0.5);
    EXPECT_EQ(counted[0].clippedShadows, 0.5);
    EXPECT_EQ(counted[0].luminance[255], 32u * 64);
}

TEST(RenderSession, NeighboursArePreparedOnceItIsQuiet) {
    RenderStage stage;
    const auto photo = stage.dng("photo.dng", {256, 192});
    const auto next = stage.dng("next.dng", {256, 192});
    Canvas canvas(stage);
    canvas.session.open(photo);
    canvas.render(fitting(100));
    ASSERT_TRUE(canvas.waitForFinal());
    canvas.settle(); // the last render has ended before the clock moves on
    stage.manual.advance(2);
    canvas.session.prepare({{stage.folder / "gone.jpg", {}, {100, 100}}, {next, {}, {100, 100}}});
    canvas.settle();
    const auto prepared = stage.sessions.presentAsItIs(next);
    ASSERT_TRUE(prepared);
    EXPECT_EQ(prepared->counts().decodes, 1);
    EXPECT_EQ(stage.engine.work().state().jobs, 0);
    int drawn = prepared->counts().renders;
    for (const bool isPrepared : {true, false}) { // the view is kept for the first look only
        canvas.views.clear();
        canvas.session.open(next);
        ViewRequest request = fitting(100);
        request.keepAlpha = true;
        canvas.render(request);
        ASSERT_TRUE(canvas.waitForFinal());
        // After what needs no decoding comes what is developed before it is reduced.
        ASSERT_EQ(canvas.views.size(), 2u);
        EXPECT_FALSE(canvas.views[0].isSettled);
        EXPECT_EQ(canvas.views[0].pixels->size, canvas.views[1].pixels->size);
        EXPECT_TRUE(canvas.views[1].isSettled);
        EXPECT_EQ(prepared->counts().decodes, 2);
        const int before = std::exchange(drawn, prepared->counts().renders);
        EXPECT_EQ(drawn - before, isPrepared ? 1 : 2);
    }
}

TEST(RenderSession, EndsInTheMiddleOfEverything) {
    RenderStage stage;
    const auto photo = stage.dng("photo.dng", {512, 384}, {256, 192});
    for (int i = 0; i < 5; ++i) {
        Canvas canvas(stage);
        canvas.session.setHistogramCallback([](const Histogram&) {});
        canvas.session.open(photo);
        canvas.render(fitting(1000));
        canvas.session.prepare({{photo, {}, {100, 100}}});
        stage.sessions.forgetAll();
        EXPECT_TRUE(stage.engine.work().state().editing);
    }
    EXPECT_FALSE(stage.engine.work().state().editing);
    stage.loop.runPosted();
    EXPECT_EQ(stage.engine.work().state().urgent, 0);
    EXPECT_EQ(stage.engine.work().state().jobs, 0);
}

} // namespace
} // namespace kelvaro::test
