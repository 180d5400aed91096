#include "render/RenderStage.h"

#include "develop/CropGeometry.h"
#include "develop/ToneAnalysis.h"

#include <random>

namespace kelvaro::test {
namespace {

ViewRequest fitting(int side, Adjustments edit = {}) {
    ViewRequest request;
    request.fit = PixelSize{side, side};
    request.edit = std::move(edit);
    return request;
}

// Each line changes the request before; then these steps have run in all.
TEST(PhotoSession, RunsOnlyWhatDependsOnTheChange) {
    RenderStage stage;
    const auto session = stage.session(stage.dng("photo.dng", {256, 192}));
    ViewRequest request = fitting(100);
    struct Step {
        const char* name;
        std::function<void()> change;
        PhotoSession::Counts expected; // decodes, reductions, RAW stages, renders
    };
    const Step steps[] = {
        {"first", [] {}, {1, 1, 0, 1}},
        {"again: the RAW stage is worth keeping", [] {}, {1, 1, 1, 2}},
        {"colour", [&] { request.edit.saturation = 50; }, {1, 1, 1, 3}},
        {"clarity", [&] { request.edit.clarity = 30; }, {1, 1, 1, 4}},
        {"crop",
         [&] {
             request.edit.cropLeft = 0.5;
             request.fit = PixelSize{50, 1000};
         },
         {1, 1, 1, 5}},
        {"clipping", [&] { request.clipping = true; }, {1, 1, 1, 6}},
        {"exposure", [&] { request.edit.exposure = 1; }, {1, 1, 1, 7}},
        {"another exposure", [&] { request.edit.exposure = 1.1; }, {1, 1, 1, 8}},
        {"and colour", [&] { request.edit.saturation = 20; }, {1, 1, 2, 9}},
        {"sharpness", [&] { request.edit.sharpness = 40; }, {2, 2, 2, 10}},
        {"full size", [&] { request.fit.reset(); }, {3, 2, 2, 11}},
        {"back to less",
         [&] {
             request.fit = PixelSize{50, 1000};
         },
         {3, 3, 2, 12}},
    };
    for (const Step& step : steps) {
        step.change();
        const auto view = session->render(request, {}, nullptr);
        ASSERT_TRUE(view) << step.name;
        EXPECT_TRUE(view->isFinal) << step.name;
        const auto counts = session->counts();
        EXPECT_EQ(counts.decodes, step.expected.decodes) << step.name;
        EXPECT_EQ(counts.reductions, step.expected.reductions) << step.name;
        EXPECT_EQ(counts.rawStages, step.expected.rawStages) << step.name;
        EXPECT_EQ(counts.renders, step.expected.renders) << step.name;
    }
}

// Lamps in the dark: reduced before they are developed, their light would spill over.
TEST(PhotoSession, SettledViewsHaveTheLightOfTheDevelopedPicture) {
    RenderStage stage;
    SyntheticDng dng;
    dng.width = 512, dng.height = 384;
    dng.active = {0, 0, 384, 512};
    dng.crop = {0, 0, 512, 384};
    dng.exposureStops = 3;
    dng.scene = [](int row, int column, int) {
        return row / 6 % 3 == 0 && column / 6 % 3 == 0 ? 0.35 : 0.004;
    };
    const auto bytes = dng.bytes();
    writeFile(stage.folder / "lamps.dng",
              {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    const auto session = stage.session(stage.folder / "lamps.dng");
    const auto linear = [](double v) { // sRGB
        return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
    };
    const auto meanLight = [&](const ViewRequest& request, bool isSettled) {
        const auto view = session->render(request, {1, 1, isSettled}, nullptr).value();
        EXPECT_EQ(view.isSettled, isSettled);
        double sum = 0;
        for (int y = 0; y < view.pixels->size.height; ++y)
            for (std::size_t i = 0; i < view.pixels->rowBytes(); ++i)
                sum += linear(view.pixels->row<std::uint8_t>(y)[i] / 255.0);
        return sum / double(view.pixels->bytes());
    };
    for (const int side : {100, 200, 300}) {
        const double quick = meanLight(fitting(side), false);
        const double settled = meanLight(fitting(side), true);
        ViewRequest all;
        const double whole = meanLight(all, true);
        // Reduced far, edges like these ring, and what is darker than black is cut.
        EXPECT_NEAR(settled / whole, 1, side < 512 / 3 ? 0.12 : 0.03) << side;
        // The first comes from a decode at half size, which is averaged as it is.
        EXPECT_NEAR(quick / whole, 1, side == 100 ? 0.5 : 0.03) << side;
    }
}

// Black and white stripes that a dark edit takes apart: what settling changes of one view is what
// it changes of the next.
TEST(PhotoSession, ViewsLikeASettledOneComeWithWhatSettlingChanged) {
    RenderStage stage;
    const auto photo = stage.jpeg("stripes.jpg", picture({600, 400}, [](double x, double y) {
                                      const bool lit = int(x * 200) % 3 == 0 || y < 0.3;
                                      return lit ? Colour{0.9, 0.8, 0.7} : Colour{0.05, 0.06, 0.1};
                                  }));
    const auto session = stage.session(photo), fresh = stage.session(photo);
    const auto request = [](double exposure) {
        Adjustments edit;
        edit.contrast = 60;
        edit.exposure = exposure;
        return fitting(150, edit);
    };
    const auto drawn = [](PhotoSession& by, const ViewRequest& asked, bool isSettled) {
        return by.render(asked, {1, 1, isSettled}, nullptr).value();
    };
    (void)drawn(*fresh, request(0), true); // the same decode for all
    const RenderedView settled = drawn(*session, request(0), true);
    session->noteSettled(request(0), settled, nullptr);
    EXPECT_EQ(worstDifference(*drawn(*session, request(0), false).pixels, *settled.pixels), 0);
    EXPECT_GT(worstDifference(*drawn(*fresh, request(0), false).pixels, *settled.pixels), 8);
    EXPECT_LE(worstDifference(*drawn(*session, request(0.04), false).pixels,
                              *drawn(*fresh, request(0.04), true).pixels),
              3); // each of the three views is rounded
    // Another crop, another size, and a part of the view: what belongs to them, and no more.
    ViewRequest cropped = request(0), larger = request(0);
    cropped.edit.cropLeft = 0.1;
    larger.fit = PixelSize{160, 160};
    for (const ViewRequest& other : {cropped, larger})
        EXPECT_EQ(worstDifference(*drawn(*session, other, false).pixels,
                                  *drawn(*fresh, other, false).pixels),
                  0);
    const RenderedView part =
        session->render(request(0), {1, 1, false, PixelRect{20, 30, 40, 25}}, nullptr).value();
    EXPECT_EQ(part.rect, (PixelRect{20, 30, 40, 25}));
    for (int row = 0; row < 25; ++row)
        EXPECT_TRUE(std::equal(part.pixels->row<std::uint8_t>(row),
                               part.pixels->row<std::uint8_t>(row) + 3 * 40,
                               settled.pixels->row<std::uint8_t>(100 - 55 + row) + 3 * 20))
            << row;
    // An edit that moves everything is drawn as it is.
    EXPECT_LE(worstDifference(*drawn(*session, request(-4), false).pixels,
                              *drawn(*fresh, request(-4), false).pixels),
              1);
    session->shed(false);
    EXPECT_EQ(worstDifference(*drawn(*session, request(0), false).pixels,
                              *drawn(*fresh, request(0), false).pixels),
              0);
}

// What a thumbnail shows is what the developed photo does, at a fraction of the pixels.
TEST(PhotoSession, ASketchLooksLikeTheView) {
    RenderStage stage;
    const auto photo = stage.dng("photo.dng", {2400, 1600});
    Adjustments toned, cropped;
    toned.exposure = 0.4;
    toned.contrast = toned.shadows = toned.clarity = toned.dehaze = 25;
    cropped.cropLeft = cropped.cropTop = 0.3;
    cropped.straighten = 5;
    for (const auto& [side, edit] : {std::pair(320, Adjustments()), std::pair(320, toned),
                                     std::pair(560, toned), std::pair(160, cropped)}) {
        const auto request = fitting(side, edit);
        const auto session = stage.session(photo);
        const auto sketch = session->sketch(request, nullptr);
        ASSERT_TRUE(sketch) << sketch.error().message;
        EXPECT_EQ(session->counts(), PhotoSession::Counts()); // nothing to keep was made
        const auto view = session->render(request, {}, nullptr);
        ASSERT_TRUE(view);
        EXPECT_LE(worstDifference(*sketch->pixels, *view->pixels), 2) << side;
        stage.analyses.releaseMemory();
        stage.analyses.waitForWrites();
        std::filesystem::remove_all(stage.folder / "analyses");
    }
    // More than a sketch is good for, and other than RAW files.
    const auto session = stage.session(photo);
    EXPECT_EQ(session->sketch(fitting(1000), nullptr)->pixels->size, (PixelSize{1000, 667}));
    EXPECT_EQ(session->counts().decodes, 1);
    const auto jpeg = stage.jpeg("photo.jpg", picture({400, 300}, landscape));
    EXPECT_EQ(stage.session(jpeg)->sketch(fitting(100), nullptr)->pixels->size,
              (PixelSize{100, 75}));
    Cancellation cancelled;
    cancelled.cancel();
    EXPECT_EQ(stage.session(photo)->sketch(fitting(320), &cancelled).error().kind,
              FailureKind::cancelled);
}

// A part at full size before the whole is decoded: the same pixels.
TEST(PhotoSession, AGlimpseIsThePartOfTheFullDecode) {
    RenderStage stage;
    const auto photo = stage.dng("photo.dng", {640, 480});
    for (const double scale : {1.0, 0.7}) {
        ViewRequest request;
        request.edit.exposure = 0.5;
        request.edit.contrast = request.edit.shadows = 25;
        request.scale = scale;
        request.rect = PixelRect{100, 110, 160, 120};
        const auto session = stage.session(photo);
        const auto glimpsed = [&](const ViewRequest& asked) {
            const auto found = session->glimpse(asked, nullptr);
            EXPECT_TRUE(found);
            return found ? *found : std::nullopt;
        };
        EXPECT_FALSE(glimpsed(request)); // nothing tells how bright the photo is
        ASSERT_TRUE(session->render(request, {1, 0.5}, nullptr));
        const auto part = glimpsed(request);
        ASSERT_TRUE(part);
        EXPECT_EQ(part->isFinal, scale == 1);
        EXPECT_EQ(session->counts().decodes, 1);
        ViewRequest whole = request;
        whole.rect.reset();
        EXPECT_FALSE(glimpsed(whole));
        const auto full = session->render(request, {}, nullptr);
        ASSERT_TRUE(full);
        EXPECT_EQ(part->rect, full->rect);
        EXPECT_LE(worstDifference(*part->pixels, *full->pixels), scale == 1 ? 0 : 1);
        EXPECT_FALSE(glimpsed(request)); // the whole is there
    }
}

TEST(PhotoSession, WhatIsKeptChangesNoPixel) {
    RenderStage stage;
    const auto photo = stage.dng("photo.dng", {256, 192});
    const auto kept = stage.session(photo);
    const std::uint32_t seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    ViewRequest request = fitting(100);
    for (int i = 0; i < 12; ++i) {
        const double value = double(random() % 100);
        switch (random() % 6) {
        case 0:
            request.edit.exposure = value / 50 - 1;
            break;
        case 1:
            request.edit.shadows = value;
            break;
        case 2:
            request.edit.saturation = value;
            break;
        case 3:
            request.edit.straighten = value / 10;
            break;
        case 4:
            request.fit = PixelSize{40 + int(value), 60};
            break;
        default:
            break; // the same again
        }
        const auto view = kept->render(request, {}, nullptr);
        const auto fresh = stage.session(photo)->render(request, {}, nullptr);
        ASSERT_TRUE(view && fresh);
        EXPECT_TRUE(equalPixels(*view->pixels, *fresh->pixels)) << i;
    }
}

// The canvas at 100% and the export's way from photo to samples.
TEST(PhotoSession, FullSizeIsWhatAnExportWrites) {
    RenderStage stage;
    const auto photo = stage.jpeg("photo.jpg", picture({120, 90}, landscape));
    for (const double straighten : {0.0, 4.0}) {
        ViewRequest request;
        request.edit.exposure = 0.5;
        request.edit.contrast = 20;
        request.edit.cropLeft = 0.25;
        request.edit.straighten = straighten;
        const auto view = stage.session(photo)->render(request, {}, nullptr);
        ASSERT_TRUE(view);
        EXPECT_EQ(view->stage, ViewStage::full);

        auto decoded = stage.reader->decode(photo).value();
        const ImageSource source = bitmapSource(
            photo, "x", imageFrom(sourceFrom(std::move(decoded.pixels), std::move(decoded.colour))),
            {120, 90});
        const auto developed =
            developedPhoto(source, request.edit, 1, *stage.renderer, stage.brushes, nullptr);
        const Image image = Pipeline::gamutMapped(
            straightenedAndCropped(developed.value(), request.edit), Pipeline::OutputSpace::sRGB);
        const auto expected = stage.renderer->renderBitmap(
            image, image.extent(),
            Pipeline::bitmapFormat(Pipeline::OutputSpace::sRGB, SampleType::u8));
        EXPECT_LE(worstDifference(*view->pixels, *expected), straighten == 0 ? 0 : 1);
    }
}

TEST(PhotoSession, APartIsThePartOfTheWhole) {
    RenderStage stage;
    const auto session = stage.session(stage.jpeg("photo.jpg", picture({200, 150}, landscape)));
    ViewRequest request;
    request.scale = 0.75; // 150 × 113
    request.edit.vignette = -60;
    const auto whole = session->render(request, {}, nullptr);
    request.rect = PixelRect{-10, 33, 50, 200}; // y up, beyond two edges
    const auto part = session->render(request, {}, nullptr);
    ASSERT_TRUE(whole && part);
    EXPECT_EQ(part->rect, (PixelRect{0, 33, 40, 80}));
    for (int y = 0; y < 80; ++y)
        EXPECT_TRUE(std::equal(part->pixels->row<std::uint8_t>(y),
                               part->pixels->row<std::uint8_t>(y) + 3 * 40,
                               whole->pixels->row<std::uint8_t>(y)))
            << y;
}

// Every stage covers the same rectangle, so that nothing jumps, and shows the same thing there.
TEST(PhotoSession, StagesFallTogether) {
    RenderStage stage;
    const auto photo = stage.dng("photo.dng", {320, 240}, {164, 120}); // of another ratio
    struct Case {
        double left, top, straighten;
        PixelSize fit;
    };
    for (const Case& test : {Case{0, 0, 0, {160, 160}}, Case{0.3, 0.1, 0, {101, 90}},
                             Case{0.2, 0.2, -7, {97, 131}}, Case{0, 0, 0, {4000, 4000}}}) {
        ViewRequest request;
        request.edit.cropLeft = test.left;
        request.edit.cropTop = test.top;
        request.edit.straighten = test.straighten;
        request.fit = test.fit;
        const auto session = stage.session(photo);
        const auto preview = session->preview(request, nullptr);
        ASSERT_TRUE(preview && *preview);
        const auto half = session->render(request, {1, 0.5}, nullptr);
        const auto coarse = session->render(request, {3, 1}, nullptr);
        const auto full = session->render(request, {}, nullptr);
        ASSERT_TRUE(half) << half.error().message;
        ASSERT_TRUE(coarse) << coarse.error().message;
        ASSERT_TRUE(full) << full.error().message;
        const PixelSize size = full->pictureSize;
        EXPECT_EQ(full->rect, (PixelRect{0, 0, size.width, size.height}));
        EXPECT_EQ(full->pixels->size, size);
        EXPECT_EQ(half->rect, full->rect);
        for (const RenderedView* view : {&**preview, &*half, &*coarse}) {
            EXPECT_EQ(view->pictureSize, size);
            EXPECT_LT(view->rect.width - size.width, 8);
            EXPECT_LT(view->rect.height - size.height, 8);
        }
        EXPECT_EQ(coarse->stage, ViewStage::coarse);
        EXPECT_FALSE(coarse->isFinal);
        EXPECT_TRUE(full->isFinal);
        // The same place a third from the left and a quarter from the top.
        const auto at = [&](const RenderedView& view) {
            const double fromTop = (view.rect.top() - size.height * 0.75) / view.rect.height;
            const int x = int(size.width / 3.0 / view.rect.width * view.pixels->size.width),
                      y = int(fromTop * view.pixels->size.height);
            return view.pixels->row<std::uint8_t>(y) + 3 * x;
        };
        for (int c = 0; c < 3; ++c) {
            EXPECT_NEAR(at(*half)[c], at(*full)[c], 6);
            EXPECT_NEAR(at(*coarse)[c], at(*full)[c], 6);
        }
    }
}

TEST(PhotoSession, CancelledWorkLeavesNothingBehind) {
    RenderStage stage;
    const auto session = stage.session(stage.dng("photo.dng", {256, 192}));
    Cancellation cancelled;
    cancelled.cancel();
    EXPECT_EQ(session->render(fitting(100), {}, &cancelled).error().kind, FailureKind::cancelled);
    EXPECT_TRUE(session->render(fitting(100), {}, nullptr));
}

TEST(PhotoSessionCache, BoundedShedAndAwareOfChanges) {
    RenderStage stage;
    const auto first = stage.jpeg("a.jpg", picture({300, 200}, landscape));
    const auto second = stage.jpeg("b.jpg", picture({300, 200}, landscape));
    PhotoSessionCache small(stage.engine, stage.parts(), 300'000); // 180 kB a photo
    for (const auto& photo : {first, second})
        ASSERT_TRUE((*small.session(photo))->render(fitting(300), {}, nullptr));
    EXPECT_EQ(small.count(), 2u);
    small.trim();
    EXPECT_EQ(small.count(), 1u);
    EXPECT_TRUE(small.presentAsItIs(second));

    auto used = *small.session(second);
    stage.memory.report(MemoryPressure::warning);
    stage.loop.runPosted();
    EXPECT_EQ(small.presentAsItIs(second), used); // somebody looks at it
    used.reset();
    stage.memory.report(MemoryPressure::critical);
    stage.loop.runPosted();
    EXPECT_EQ(small.count(), 0u);

    const auto before = *small.session(first);
    stage.jpeg("a.jpg", picture({30, 20}, landscape));
    const auto after = *small.session(first);
    EXPECT_NE(before, after);
    EXPECT_EQ(after->facts(nullptr)->size, (PixelSize{30, 20}));
    EXPECT_EQ(small.session(stage.folder / "none.jpg").error().kind, FailureKind::notFound);
    EXPECT_EQ(small.session(stage.folder / "a.txt").error().kind, FailureKind::unsupported);
}

} // namespace
} // namespace kelvaro::test
