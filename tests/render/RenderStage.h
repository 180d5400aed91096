// What render tests need around them: real readers and renderers, a folder of small photos, a clock
// that stands still, memory that runs short on demand, and the main thread in the test's hand.
#pragma once

#include "base/MainLoop.h"
#include "fakes/FakeMemory.h"
#include "fakes/ManualClock.h"
#include "fakes/TemporaryFolder.h"
#include "platform/codecs/CodecImageFiles.h"
#include "platform/imaging/TiledRenderer.h"
#include "platform/raw/CameraRawEngine.h"
#include "platform/raw/SyntheticDng.h"
#include "platform/system/PosixFileSystem.h"
#include "render/PhotoSessionCache.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvaro::test {

using Colour = std::array<double, 3>; // display values 0 … 1

inline Bitmap picture(PixelSize size, const std::function<Colour(double x, double y)>& at) {
    Bitmap bitmap(size, 3, SampleType::u8);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const Colour colour = at((x + 0.5) / size.width, (y + 0.5) / size.height);
            for (std::size_t c = 0; c < 3; ++c)
                bitmap.row<std::uint8_t>(y)[3 * x + int(c)] =
                    std::uint8_t(std::lround(colour[c] * 255));
        }
    return bitmap;
}

// Smooth, and different in each corner.
inline Colour landscape(double x, double y) {
    return {0.2 + 0.6 * x, 0.3 + 0.4 * y, 0.7 - 0.5 * x * y};
}

struct RenderStage {
    // The engine's clock is `manual` where no other one is given.
    explicit RenderStage(const Clock* engineClock = nullptr)
        : engine(*renderer, *renderer, engineClock ? *engineClock : manual, loop, memory,
                 std::make_unique<Perf>(true, true,
                                        [this](const std::string& line) {
                                            lines.with([&](auto& all) { all.push_back(line); });
                                        })),
          analyses(files, folder / "analyses", *renderer, {}),
          sessions(engine, parts(), std::size_t(1) << 30) {}

    PhotoSession::Parts parts() { return {files, *reader, raw, brushes, analyses}; }

    std::filesystem::path jpeg(const std::string& name, const Bitmap& pixels,
                               OutputSpace space = OutputSpace::sRGB) {
        auto file = files.create(folder / name).value();
        EXPECT_TRUE(writer->encode(pixels, {FileFormat::jpeg, 0.95, space}, *file));
        EXPECT_TRUE(file->commit());
        return folder / name;
    }
    // A RAW photo of the landscape, with an embedded picture of it where `preview` has a size.
    std::filesystem::path dng(const std::string& name, PixelSize size, PixelSize preview = {}) {
        SyntheticDng file;
        file.width = size.width;
        file.height = size.height;
        file.active = {0, 0, size.height, size.width};
        file.crop = {0, 0, size.width, size.height};
        file.scene = [size](int row, int column, int channel) {
            const Colour colour = landscape(double(column) / size.width, double(row) / size.height);
            return 0.5 * std::pow(colour[std::size_t(channel)], 2.2);
        };
        if (preview.width > 0) {
            const auto bytes = readFile(jpeg(name + ".jpg", picture(preview, landscape)));
            std::filesystem::remove(folder / (name + ".jpg"));
            for (const char c : bytes)
                file.secondJpeg.push_back(std::byte(c));
        }
        const auto bytes = file.bytes();
        writeFile(folder / name, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
        return folder / name;
    }
    std::shared_ptr<PhotoSession> session(const std::filesystem::path& photo) {
        return sessions.separate(photo).value();
    }

    ManualClock manual;
    TemporaryFolder folder;
    PosixFileSystem files;
    std::unique_ptr<ImageReader> reader = makeImageReader();
    std::unique_ptr<ImageWriter> writer = makeImageWriter();
    CameraRawEngine raw{makeImageReader()};
    std::unique_ptr<Renderer> renderer = makeTiledRenderer();
    BrushRaster brushes;
    FakeMemory memory;
    MainLoop loop;
    Locked<std::vector<std::string>> lines; // of the timing log
    RenderEngine engine;
    AnalysisCache analyses;
    PhotoSessionCache sessions;
};

inline bool equalPixels(const Bitmap& a, const Bitmap& b) {
    return a.size == b.size && a.channels == b.channels &&
           std::equal(a.samples.get(), a.samples.get() + a.bytes(), b.samples.get());
}

// The largest difference of two 8-bit pictures of one size.
inline int worstDifference(const Bitmap& a, const Bitmap& b) {
    if (a.size != b.size || a.channels != b.channels) return 256;
    int worst = 0;
    for (int y = 0; y < a.size.height; ++y)
        for (std::size_t i = 0; i < a.rowBytes(); ++i)
            worst = std::max(
                worst, std::abs(int(a.row<std::uint8_t>(y)[i]) - int(b.row<std::uint8_t>(y)[i])));
    return worst;
}

} // namespace kelvaro::test
