// The fast renderer against the plain one on random graphs: every operation, odd sizes,
// transparency, rectangles that reach outside, and the same bits from any number of threads.
#include "platform/ImageNode.h"
#include "platform/imaging/Pictures.h"
#include "platform/imaging/ReferenceRenderer.h"
#include "platform/imaging/TiledRenderer.h"

namespace kelvaro {
namespace {

using namespace test;

class GraphMaker {
public:
    explicit GraphMaker(unsigned seed) : random_(seed) {}

    Image make() {
        pool_.clear();
        for (int i = 0; i < 2; ++i)
            pool_.push_back(source());
        for (int i = 0, count = whole(2, 6); i < count; ++i)
            pool_.push_back(operation());
        Image last = pool_.back();
        if (last.extent() == kInfiniteExtent) last = cropped(last, {-9, -5, 61, 47});
        return last;
    }

    PixelRect viewOf(const Image& image) {
        const PixelRect e = image.extent();
        switch (whole(0, 2)) {
        case 0:
            return e;
        case 1:
            return outset(e, 3);
        default:
            return {e.x + e.width / 3, e.y + e.height / 4, std::max(1, e.width / 2),
                    std::max(1, e.height / 2)};
        }
    }

private:
    int whole(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }
    double number(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random_);
    }

    Image source() {
        const PixelRect extent{whole(-4, 4), whole(-4, 4), whole(1, 70), whole(1, 40)};
        return imageFrom(noiseRaster(extent, whole(0, 1) == 1, unsigned(random_())));
    }

    Image any() { return pool_[std::size_t(whole(0, int(pool_.size()) - 1))]; }
    Image finite() {
        for (int i = 0; i < 20; ++i)
            if (Image image = any();
                !(image.extent() == kInfiniteExtent) && !image.extent().isEmpty())
                return image;
        return pool_.front();
    }

    Image operation() {
        const Image image = finite();
        switch (whole(0, 11)) {
        case 0:
            return exposureAdjusted(any(), number(-2, 2));
        case 1:
            return temperatureAndTint(any(), {number(2500, 9000), number(-50, 50)}, {6500, 0});
        case 2:
            return lanczosScaled(image, number(0.2, 1.8));
        case 3:
            return lanczosResized(image, {whole(1, 50), whole(1, 50)});
        case 4:
            return boxBlurred(any(), whole(1, 5));
        case 5:
            return clampedToExtent(image);
        case 6: {
            const PixelRect e = image.extent();
            return cropped(image, {e.x + 1, e.y + 1, std::max(1, e.width / 2), e.height});
        }
        case 7:
            return translated(any(), whole(-7, 7), whole(-7, 7));
        case 8: {
            const double angle = number(-0.6, 0.6), c = std::cos(angle), s = std::sin(angle);
            return affine(image, {c, s, -s, c, number(-3, 3), number(-3, 3)}, image.extent(),
                          Sampling(whole(0, 2)));
        }
        case 9:
            return stretched(image, {whole(-3, 3), whole(-3, 3), whole(1, 90), whole(1, 60)});
        case 10:
            return compositedOver(any(), any());
        default:
            return maximum(any(), image);
        }
    }

    std::mt19937 random_;
    std::vector<Image> pool_;
};

TEST(RandomGraph, FastRendererAgreesWithPlainOne) {
    const auto plain = makeReferenceRenderer();
    const auto one = makeTiledRenderer(1), many = makeTiledRenderer(8);
    for (unsigned seed = 1; seed <= 300; ++seed) {
        GraphMaker maker(seed);
        const Image image = maker.make();
        const PixelRect view = maker.viewOf(image);
        if (view.isEmpty() || view.longerSide() > 400) continue;
        const Raster expected = rendered(*plain, image, view);
        const Raster actual = rendered(*one, image, view);
        // Sums of some hundred products in single precision, of values up to about 10.
        ASSERT_LE(worstDifference(actual, expected), 2e-5)
            << "seed " << seed << ", last operation " << operationName(image.node());
        ASSERT_TRUE(sameBits(actual, rendered(*many, image, view))) << "seed " << seed;
    }
}

// Images that are drawn together, share sources and reductions, and appear twice.
TEST(RandomGraph, DrawnTogetherIsDrawnAlone) {
    const auto renderer = makeTiledRenderer(2);
    for (unsigned seed = 1; seed <= 60; ++seed) {
        GraphMaker maker(seed);
        const Image image = maker.make();
        if (image.extent().isEmpty() || image.extent().longerSide() > 300) continue;
        const Image brighter = exposureAdjusted(image, 0.7);
        const std::vector<Image> together{lanczosScaled(image, 0.37), lanczosScaled(brighter, 0.37),
                                          boxBlurred(lanczosScaled(brighter, 0.37), 2), image,
                                          image};
        const PixelRect view = outset(together.front().extent(), 2);
        const auto drawn = renderer->renderRasters(together, view);
        ASSERT_TRUE(drawn && drawn->size() == together.size());
        for (std::size_t i = 0; i < together.size(); ++i)
            ASSERT_TRUE(sameBits((*drawn)[i], rendered(*renderer, together[i], view)))
                << "seed " << seed << ", image " << i;
    }
}

// A large picture is cut into many tiles; every part of it rendered alone is the same.
TEST(RandomGraph, TilesHaveNoSeams) {
    const auto renderer = makeTiledRenderer(2);
    const Image source = imageFrom(noiseRaster({0, 0, 1337, 411}, false, 5));
    const Image small = lanczosScaled(source, 0.13);
    const Image guide =
        stretched(cropped(boxBlurred(clampedToExtent(small), 3), small.extent()), source.extent());
    const Image chain = maximum(exposureAdjusted(source, 0.5), guide);
    const Image turned =
        affine(chain, {0.998, 0.05, -0.05, 0.998, 3, -2}, chain.extent(), Sampling::catmullRom);
    for (const Image& image : {chain, turned, lanczosScaled(chain, 0.6)}) {
        const PixelRect whole = cropped(image, source.extent()).extent();
        const Raster all = rendered(*renderer, image, whole);
        for (const PixelRect part :
             {PixelRect{500, 100, 30, 30}, {511, 15, 3, 3}, {0, 0, 1, 1}, {700, 120, 101, 57}}) {
            const Raster alone = rendered(*renderer, image, part);
            for (int y = part.y; y < part.top(); ++y)
                for (int x = part.x; x < part.right(); ++x)
                    for (int plane = 0; plane < 3; ++plane)
                        ASSERT_NEAR(at(alone, x, y, plane), at(all, x, y, plane), 3e-7)
                            << operationName(image.node()) << " at " << x << ", " << y;
        }
    }
}

} // namespace
} // namespace kelvaro
