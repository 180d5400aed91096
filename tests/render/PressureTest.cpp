#include "base/MainLoop.h"
#include "fakes/FakeMemory.h"
#include "fakes/ManualClock.h"
#include "render/RenderEngine.h"

#include <gtest/gtest.h>

#include <vector>

namespace kelvaro {
namespace {

struct NoRenderer final : Renderer {
    Result<Raster> renderRaster(const Image&, const PixelRect&, const Cancellation*) override {
        return fail(FailureKind::internal, "Nothing is drawn here.");
    }
    Result<std::vector<Raster>> renderRasters(const std::vector<Image>&, const PixelRect&,
                                              const Cancellation*) override {
        return fail(FailureKind::internal, "Nothing is drawn here.");
    }
    Result<Bitmap> renderBitmap(const Image&, const PixelRect&, const BitmapFormat&,
                                const Cancellation*) override {
        return fail(FailureKind::internal, "Nothing is drawn here.");
    }
};

TEST(Pressure, NarrowsTheGateAtOnceAndIsHeardOnTheMainThread) {
    MainLoop loop;
    ManualClock clock;
    FakeMemory memory;
    NoRenderer renderer;
    auto engine = std::make_unique<RenderEngine>(renderer, renderer, clock, loop, memory,
                                                 std::make_unique<Perf>());
    std::vector<MemoryPressure> heard;
    auto first = engine->pressure().observe([&](MemoryPressure event) { heard.push_back(event); });
    int endedHeard = 0;
    {
        const auto ended = engine->pressure().observe([&](MemoryPressure) { ++endedHeard; });
    }
    memory.report(MemoryPressure::warning);
    EXPECT_TRUE(engine->work().state().pressure);
    EXPECT_TRUE(heard.empty());
    memory.report(MemoryPressure::normal);
    EXPECT_FALSE(engine->work().state().pressure);
    loop.runPosted();
    EXPECT_EQ(heard, (std::vector{MemoryPressure::warning, MemoryPressure::normal}));
    EXPECT_EQ(endedHeard, 0);

    memory.report(MemoryPressure::critical);
    engine.reset(); // before the posted job ran
    EXPECT_FALSE(memory.isSubscribed());
    loop.runPosted();
    EXPECT_EQ(heard.size(), 2u);
}

} // namespace
} // namespace kelvaro
