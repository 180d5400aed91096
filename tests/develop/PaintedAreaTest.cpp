#include "develop/PaintedArea.h"

#include "develop/BrushRaster.h"
#include "develop/MaskShapes.h"
#include "platform/imaging/TiledRenderer.h"

#include <functional>
#include <gtest/gtest.h>
#include <random>

namespace kelvaro {
namespace {

Adjustments withBrush(std::vector<BrushStroke> strokes) {
    Adjustments edit;
    LocalMask mask;
    mask.id.bytes[0] = 1;
    mask.exposure = 1;
    MaskComponent brush;
    brush.id.bytes[0] = 2;
    brush.strokes = std::move(strokes);
    mask.components.push_back(brush);
    edit.masks.push_back(mask);
    return edit;
}

BrushStroke& lastStroke(Adjustments& edit) {
    return edit.masks[0].components[0].strokes.back();
}

class PaintedArea : public testing::Test {
protected:
    Raster weight(const Adjustments& edit, PixelSize photo) {
        BrushRaster brushes; // nothing is taken over from the other recipe
        const PixelRect all{0, 0, photo.width, photo.height};
        const Image image = overlayWeight(edit.masks, {{}, true}, all, brushes);
        return renderer_->renderRaster(image, all).value();
    }

    std::unique_ptr<Renderer> renderer_ = makeTiledRenderer();
};

TEST_F(PaintedArea, NothingChangesOutside) {
    const std::uint32_t seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto number = [&](double low, double high) {
        return std::uniform_real_distribution(low, high)(random);
    };
    for (const PixelSize photo : {PixelSize{150, 100}, PixelSize{90, 400}}) {
        Adjustments before = withBrush({});
        for (int step = 0; step < 8; ++step) {
            Adjustments after = before;
            if (step % 3 == 0) {
                BrushStroke stroke{{}, number(0, 0.1), number(0, 100), number(20, 100), step == 6};
                after.masks[0].components[0].strokes.push_back(stroke);
            }
            for (int points = 0; points <= step % 4; ++points)
                lastStroke(after).points.push_back({number(-0.2, 1.2), number(-0.2, 1.2)});
            const auto area = paintedArea(before, after, photo);
            ASSERT_TRUE(area) << step;
            EXPECT_TRUE((PixelRect{0, 0, photo.width, photo.height}).contains(*area));
            const Raster was = weight(before, photo), is = weight(after, photo);
            for (int y = 0; y < photo.height; ++y)
                for (int x = 0; x < photo.width; ++x) {
                    if (was.row(0, photo.height - 1 - y)[x] == is.row(0, photo.height - 1 - y)[x])
                        continue;
                    ASSERT_TRUE(area->contains({x, y, 1, 1})) << step << ": " << x << ", " << y;
                }
            before = std::move(after);
        }
    }
}

TEST_F(PaintedArea, IsAsSmallAsThePaint) {
    const PixelSize photo{2048, 1024}; // of the brush's own resolution
    const Adjustments before = withBrush({{{{0.25, 0.25}, {0.5, 0.25}}, 0.01, 0, 100, false}});
    Adjustments after = before;
    EXPECT_EQ(paintedArea(before, after, photo), PixelRect{});
    lastStroke(after).points.push_back({0.5, 0.375});
    // From (1024, 512) to (1024, 768), 20.48 around it, and a few pixels.
    const PixelRect area = paintedArea(before, after, photo).value();
    EXPECT_TRUE(area.contains({1003, 491, 42, 298}));
    EXPECT_TRUE((PixelRect{999, 487, 50, 306}).contains(area));
}

TEST_F(PaintedArea, OtherChangesHaveNone) {
    const Adjustments before = withBrush(
        {{{{0.2, 0.2}, {0.4, 0.3}}, 0.05, 50, 100, false}, {{{0.6, 0.3}}, 0.05, 50, 100, false}});
    const std::pair<const char*, std::function<void(Adjustments&)>> changes[] = {
        {"a slider", [](Adjustments& e) { e.exposure = 0.1; }},
        {"the crop", [](Adjustments& e) { e.cropLeft = 0.1; }},
        {"a control of the mask", [](Adjustments& e) { e.masks[0].saturation = 5; }},
        {"the mask's amount", [](Adjustments& e) { e.masks[0].amount = 99; }},
        {"an inverted shape", [](Adjustments& e) { e.masks[0].components[0].invert = true; }},
        {"a mask more", [](Adjustments& e) { e.masks.push_back(e.masks[0]); }},
        {"a stroke less", [](Adjustments& e) { e.masks[0].components[0].strokes.pop_back(); }},
        {"a point less",
         [](Adjustments& e) { e.masks[0].components[0].strokes[0].points.pop_back(); }},
        {"a point moved",
         [](Adjustments& e) { e.masks[0].components[0].strokes[0].points[1].x = 0.41; }},
        {"another size", [](Adjustments& e) { lastStroke(e).radius = 0.06; }},
        {"an earlier stroke grows",
         [](Adjustments& e) {
             e.masks[0].components[0].strokes[0].points.push_back({0.5, 0.5});
         }},
    };
    for (const auto& [name, change] : changes) {
        Adjustments after = before;
        lastStroke(after).points.push_back({0.7, 0.3}); // painted as well
        change(after);
        EXPECT_FALSE(paintedArea(before, after, {300, 200})) << name;
    }
}

} // namespace
} // namespace kelvaro
