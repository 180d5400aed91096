#include "export/ExportLayout.h"
#include "platform/imaging/ReferenceRenderer.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace kelvaro {
namespace {

ExportSettings with(int longEdge, double percent) {
    ExportSettings settings;
    settings.resize = longEdge > 0;
    settings.longEdge = longEdge;
    settings.border = percent > 0;
    settings.borderPercent = percent;
    return settings;
}

PixelSize finalSize(PixelSize photo, const ExportSettings& settings) {
    const PixelSize size = resizedTo(photo, settings);
    const int m = borderPx(size, settings);
    return {size.width + 2 * m, size.height + 2 * m};
}

TEST(LayoutTest, TheLongEdgeIncludesTheBorder) {
    EXPECT_EQ(finalSize({6000, 4000}, with(3000, 2)).width, 3000);
    EXPECT_EQ(finalSize({6000, 4000}, with(3000, 0)), (PixelSize{3000, 2000}));
    EXPECT_EQ(finalSize({4000, 6000}, with(3000, 0)), (PixelSize{2000, 3000}));
    EXPECT_EQ(finalSize({2000, 1000}, with(3000, 0)), (PixelSize{2000, 1000})); // never enlarged
    EXPECT_EQ(finalSize({1000, 700}, with(0, 10)), (PixelSize{1200, 900}));
    EXPECT_EQ(resizedTo({20000, 3}, with(256, 0)), (PixelSize{256, 1}));
    // Where no whole number fits with a whole margin, a pixel or two may stay unused.
    for (int edge = 256; edge < 4000; edge += 7)
        for (const double percent : {1.0, 2.5, 20.0}) {
            const int longer = finalSize({6000, 4000}, with(edge, percent)).width;
            EXPECT_LE(longer, edge);
            EXPECT_GE(longer, edge - 2);
        }
}

TEST(LayoutTest, TheBorderIsOpaqueWhiteOnAllSides) {
    const auto settings = with(0, 10);
    const Image photo = cropped(constantColour({0, 0, 0, 0.0F}), {5, 7, 40, 20}); // transparent
    const Image picture = bordered(photo, settings);
    ASSERT_EQ(picture.extent(), (PixelRect{0, 0, 48, 28}));
    const auto drawn = makeReferenceRenderer()->renderRaster(
        bordered(cropped(constantColour({0, 0.5F, 0, 1}), {0, 0, 40, 20}), settings),
        picture.extent());
    for (int row = 0; row < 28; ++row)
        for (int x = 0; x < 48; ++x) {
            const bool isInside = x >= 4 && x < 44 && row >= 4 && row < 24;
            ASSERT_EQ(drawn->row(0, row)[x], isInside ? 0 : 1) << x << " " << row;
        }
    EXPECT_EQ(bordered(photo, with(0, 0)), photo);
}

} // namespace
} // namespace kelvaro
