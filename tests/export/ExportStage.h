// An exporter with real services over folders of its own, and small photos to export.
#pragma once

#include "base/MainLoop.h"
#include "export/Exporter.h"
#include "fakes/ManualClock.h"
#include "fakes/SeededRandom.h"
#include "fakes/TemporaryFolder.h"
#include "platform/codecs/CodecImageFiles.h"
#include "platform/imaging/TiledRenderer.h"
#include "platform/metadata/ExifMetadataCopier.h"
#include "platform/metadata/ExifPropertyReader.h"
#include "platform/raw/CameraRawEngine.h"
#include "platform/system/PosixFileSystem.h"

#include <cstring>
#include <gtest/gtest.h>

namespace kelvaro {

// Calls a hook before each write, to change the world in the middle of an export.
class HookedWriter final : public ImageWriter {
public:
    explicit HookedWriter(std::unique_ptr<ImageWriter> real) : real_(std::move(real)) {}
    Result<void> encode(const Bitmap& pixels, const EncodeSettings& settings, PendingFile& file,
                        const Cancellation* cancellation) override {
        return hooked(file, [&] { return real_->encode(pixels, settings, file, cancellation); });
    }
    Result<void> encodeStrips(const StripSource& strips, const EncodeSettings& settings,
                              PendingFile& file, const Cancellation* cancellation) override {
        return hooked(file,
                      [&] { return real_->encodeStrips(strips, settings, file, cancellation); });
    }
    std::function<void()> beforeWrite;
    std::function<void(PendingFile&)> afterWrite;

private:
    template<class Write>
    Result<void> hooked(PendingFile& file, const Write& write) {
        if (beforeWrite) beforeWrite();
        auto written = write();
        if (afterWrite) afterWrite(file);
        return written;
    }
    std::unique_ptr<ImageWriter> real_;
};

class ExportStage : public testing::Test {
protected:
    ExportStage() {
        settings.destination = (folder / "out").string();
        settings.quality = 90;
    }
    // A picture whose grey tells photos apart.
    std::filesystem::path photo(const std::string& name, PixelSize size = {60, 40}, int grey = 90) {
        const auto path = folder.path() / "in" / name;
        std::filesystem::create_directories(path.parent_path());
        Bitmap pixels(size, 3, SampleType::u8);
        std::memset(pixels.samples.get(), grey, pixels.bytes());
        auto file = real.create(path).value();
        const auto format = formatOfExtension(path.extension().string()).value_or(FileFormat::jpeg);
        EXPECT_TRUE(makeImageWriter()->encode(pixels, {format, 0.95, OutputSpace::sRGB}, *file));
        EXPECT_TRUE(file->commit());
        return path;
    }
    ExportParts parts(FileSystem& files) {
        return {files,    random,    *reader, writer, raw,  properties,
                metadata, *renderer, brushes, work,   clock};
    }
    Exporter::State exported(const std::vector<std::filesystem::path>& photos) {
        return exported(photos, real);
    }
    Exporter::State exported(const std::vector<std::filesystem::path>& photos, FileSystem& files) {
        std::vector<ExportJob> jobs;
        for (const auto& path : photos)
            jobs.push_back({path, edit});
        Exporter exporter(parts(files), loop);
        Exporter::Options options;
        options.verifies = verifies;
        options.onPhoto = [this](const auto& outcome) { outcomes.push_back(outcome); };
        EXPECT_TRUE(exporter.start(jobs, settings, protectedPaths, options));
        if (onStart) onStart(exporter);
        EXPECT_TRUE(loop.runUntil([&] { return !exporter.state()->running; }, 60));
        notice = *exporter.notice();
        EXPECT_EQ(work.state().jobs, 0);
        EXPECT_EQ(work.state().bytes, 0);
        return *exporter.state();
    }
    std::set<std::string> outNames() { return namesIn(folder / "out"); }
    int greyOf(const std::filesystem::path& file) {
        const auto read = reader->decode(file);
        return read ? *read->pixels.row<std::uint8_t>(read->pixels.size.height / 2) : -1;
    }

    TemporaryFolder folder;
    PosixFileSystem real;
    SeededRandom random;
    std::unique_ptr<ImageReader> reader = makeImageReader();
    HookedWriter writer{makeImageWriter()};
    CameraRawEngine raw{makeImageReader()};
    ExifPropertyReader properties;
    ExifMetadataCopier metadata;
    std::unique_ptr<Renderer> renderer = makeTiledRenderer();
    BrushRaster brushes;
    ManualClock clock;
    RenderWork work{clock, std::int64_t(8) << 30};
    MainLoop loop;

    ExportSettings settings;
    Adjustments edit;
    ProtectedPaths protectedPaths;
    bool verifies = true;
    std::function<void(Exporter&)> onStart;
    Exporter::Notice notice;
    std::vector<Exporter::PhotoOutcome> outcomes;
};

} // namespace kelvaro
