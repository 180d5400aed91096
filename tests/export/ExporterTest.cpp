#include "develop/CropGeometry.h"
#include "develop/PhotoOpening.h"
#include "develop/ToneAnalysis.h"
#include "export/ExportStage.h"
#include "platform/raw/SyntheticDng.h"

#include <cmath>

#include <gmock/gmock.h>

namespace kelvaro {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(ExportStage, WritesEveryFormatWithItsNameSizeAndProfile) {
    for (const ExportFormat format : kExportFormats) {
        settings.format = format;
        settings.colorSpace = Pipeline::OutputSpace::displayP3;
        const auto state = exported({photo("A.png", {300, 200})});
        EXPECT_EQ(state.exported, 1u);
        EXPECT_THAT(state.failures, IsEmpty());
        const auto file = folder / "out" / ("A." + std::string(fileExtension(format)));
        const auto read = reader->decode(file);
        ASSERT_TRUE(read) << file;
        EXPECT_EQ(read->pixels.size, (PixelSize{300, 200}));
        EXPECT_EQ(read->profileName, "Display P3");
        EXPECT_EQ(read->pixels.type, isLossy(format) ? SampleType::u8 : SampleType::u16);
        EXPECT_EQ(read->pixels.channels, 3);
    }
}

TEST_F(ExportStage, ResizesStampsAndBorders) {
    settings.resize = settings.border = true;
    settings.longEdge = 500;
    settings.borderPercent = 10;
    settings.dateStamp = DateStamp::Style::dayMonthYear;
    settings.format = ExportFormat::png;
    EXPECT_EQ(exported({photo("A.png", {900, 600}, 0)}).exported, 1u);
    const auto read = reader->decode(folder / "out/A.png").value();
    EXPECT_LE(read.pixels.size.width, 500);
    EXPECT_GE(read.pixels.size.width, 498);
    EXPECT_EQ(read.pixels.row<std::uint16_t>(0)[0], 65535); // the border
    int gold = 0; // in the lower right quarter of the photo
    for (int y = read.pixels.size.height / 2; y < read.pixels.size.height - 45; ++y)
        for (int x = read.pixels.size.width / 2; x < read.pixels.size.width - 45; ++x) {
            const auto* at = read.pixels.row<std::uint16_t>(y) + 3 * x;
            gold += at[0] > 40000 && at[1] > 20000 && at[1] < at[0] && at[2] < at[1];
        }
    EXPECT_GT(gold, 20);
}

TEST_F(ExportStage, AppliesTheRecipeAndItsCrop) {
    edit.cropLeft = 0.5;
    edit.exposure = 1;
    settings.format = ExportFormat::tiff;
    EXPECT_EQ(exported({photo("A.png", {60, 40}, 60)}).exported, 1u);
    const auto read = reader->decode(folder / "out/A.tif").value();
    EXPECT_EQ(read.pixels.size, (PixelSize{30, 40}));
    EXPECT_GT(*read.pixels.row<std::uint16_t>(0), 70 * 257);
}

// RAW photos are made strip by strip where the export reads them; nobody may see that.
TEST_F(ExportStage, RawPhotosLookAsOnTheScreen) {
    test::SyntheticDng dng;
    dng.width = 640, dng.height = 480;
    dng.active = {0, 0, 480, 640};
    dng.crop = {0, 0, 640, 480};
    dng.scene = [](int row, int column, int channel) {
        return 0.25 + 0.2 * std::sin(row * 0.02 + channel) * std::cos(column * 0.015);
    };
    const auto photo = folder / "A.dng", made = dng.write("export.dng");
    fs::rename(made, photo);
    edit.exposure = 0.3;
    edit.contrast = edit.shadows = edit.clarity = edit.dehaze = 20;
    edit.cropLeft = 0.2;
    settings.format = ExportFormat::tiff;
    ASSERT_EQ(exported({photo}).exported, 1u);
    const auto written = reader->decode(folder / "out/A.tif").value();

    const PhotoOpener keeping{real, *reader, raw};
    const auto source = keeping.open(photo, edit, 1, nullptr).value();
    const auto whole = developedPhoto(source, edit, 1, *renderer, brushes, nullptr).value();
    const Image picture =
        Pipeline::gamutMapped(straightenedAndCropped(whole, edit), Pipeline::OutputSpace::sRGB);
    auto format = Pipeline::bitmapFormat(Pipeline::OutputSpace::sRGB, SampleType::u16);
    format.alpha = BitmapFormat::Alpha::drop;
    const auto shown = renderer->renderBitmap(picture, picture.extent(), format, nullptr).value();
    ASSERT_EQ(shown.size, written.pixels.size);
    int worst = 0; // analyses of half and of all pixels may differ a little
    for (int y = 0; y < shown.size.height; ++y)
        for (int x = 0; x < 3 * shown.size.width; ++x)
            worst = std::max(worst, std::abs(int(shown.row<std::uint16_t>(y)[x]) -
                                             int(written.pixels.row<std::uint16_t>(y)[x])));
    EXPECT_LE(worst, 257);
}

// What was measured of a photo before is not looked at again, unless the edit needs more of it.
TEST_F(ExportStage, AnalysedRawPhotosAreDecodedOnce) {
    test::SyntheticDng dng;
    dng.scene = [](int row, int, int) { return 0.1 + 0.001 * row; };
    const auto photo = dng.write("analysed.dng");
    AnalysisCache analyses(real, folder / "cache", *renderer, {});
    const PhotoOpener opener{real, *reader, raw, true, &analyses};
    edit.contrast = edit.clarity = 20;
    const auto first = opener.open(photo, edit, 1, nullptr).value();
    EXPECT_TRUE(first.measured);
    ASSERT_TRUE(developedPhoto(first, edit, 1, *renderer, brushes, nullptr));
    analyses.remember(first);
    EXPECT_FALSE(opener.open(photo, edit, 1, nullptr).value().measured);
    edit.dehaze = 20;
    EXPECT_TRUE(opener.open(photo, edit, 1, nullptr).value().measured);
}

TEST_F(ExportStage, NamesPhotosInTheirOrderAndReportsEach) {
    const std::vector photos{photo("1/A.jpg", {60, 40}, 30), photo("2/a.png", {60, 40}, 90),
                             photo("3/A.tif", {60, 40}, 150)};
    const auto state = exported(photos);
    EXPECT_EQ(state.done, 3u);
    EXPECT_EQ(state.finishedFolder, folder / "out");
    EXPECT_THAT(outNames(), ElementsAre("A (3).jpg", "A.jpg", "a (2).jpg"));
    EXPECT_NEAR(greyOf(folder / "out/A.jpg"), 30, 2);
    EXPECT_NEAR(greyOf(folder / "out/a (2).jpg"), 90, 2);
    EXPECT_NEAR(greyOf(folder / "out/A (3).jpg"), 150, 2);
    EXPECT_EQ(outcomes.size(), 3u);
    EXPECT_EQ(donePanelTexts(state).title, "3 photos exported");
}

TEST_F(ExportStage, ReplacesOnlyWhereItMay) {
    const auto A = photo("A.jpg", {60, 40}, 30);
    writeFile(folder / "out/A.jpg", "older export");
    EXPECT_EQ(exported({A}).exported, 1u);
    EXPECT_EQ(readFile(folder / "out/A.jpg"), "older export");
    settings.replaceExisting = true;
    EXPECT_EQ(exported({A}).exported, 1u);
    EXPECT_NEAR(greyOf(folder / "out/A.jpg"), 30, 2);
    // Into the library's own folder.
    settings.destination = (folder / "in").string();
    protectedPaths = {resolvedPath(A)};
    const std::string original = readFile(A);
    EXPECT_EQ(exported({A}).exported, 1u);
    EXPECT_EQ(readFile(A), original);
    EXPECT_THAT(namesIn(folder / "in"), ElementsAre("A (2).jpg", "A.jpg"));
    // Even where nobody protected it.
    protectedPaths = {};
    const auto state = exported({A});
    ASSERT_EQ(state.failures.size(), 1u);
    EXPECT_EQ(state.failures[0].message, "The file couldn't be written.");
    EXPECT_EQ(readFile(A), original);
}

TEST_F(ExportStage, LeavesMetadataOutWhenAsked) {
    const auto A = photo("A.jpg");
    for (const bool includes : {true, false}) {
        settings.includeMetadata = includes;
        settings.replaceExisting = true;
        ASSERT_EQ(exported({A}).exported, 1u);
        const auto read = properties.read(folder / "out/A.jpg").value();
        EXPECT_EQ(read.exif.isEmpty(), !includes);
        if (includes) {
            EXPECT_EQ(read.exif.integer("PixelXDimension"), 60);
        }
    }
}

TEST_F(ExportStage, WaitsForTheUsersHand) {
    work.noteInput();
    onStart = [&](Exporter& exporter) {
        EXPECT_FALSE(loop.runUntil([&] { return exporter.state()->done > 0; }, 0.2));
        EXPECT_THAT(outNames(), IsEmpty());
        clock.advance(10);
    };
    EXPECT_EQ(exported({photo("A.jpg")}).exported, 1u);
}

TEST_F(ExportStage, StopsAtOnceAndLeavesNothingHalf) {
    std::vector<fs::path> photos;
    for (int i = 0; i < 12; ++i)
        photos.push_back(photo("A" + std::to_string(i) + ".jpg"));
    bool completed = false;
    Exporter* running = nullptr;
    onStart = [&](Exporter& exporter) { running = &exporter; };
    writer.beforeWrite = [&] {
        loop.post([&] { running->stop([&] { completed = true; }); });
        std::this_thread::yield();
    };
    const auto state = exported(photos);
    EXPECT_TRUE(state.wasCancelled);
    EXPECT_TRUE(completed);
    EXPECT_THAT(state.failures, IsEmpty());
    EXPECT_EQ(state.done, 12u);
    const auto names = outNames();
    EXPECT_EQ(names.size(), state.exported);
    for (const auto& name : names)
        EXPECT_FALSE(name.starts_with(".")) << name;
    EXPECT_EQ(donePanelTexts(state).title,
              "Stopped after " + std::to_string(state.exported) + " of 12 photos");
}

TEST_F(ExportStage, EndsItsRunWithItself) {
    {
        Exporter exporter(parts(real), loop);
        ASSERT_TRUE(exporter.start({{photo("A.jpg"), {}}}, settings, {}));
        EXPECT_FALSE(exporter.start({}, settings, {}));
    }
    loop.runPosted(); // what the run has posted finds nobody
    for (const auto& name : outNames())
        EXPECT_EQ(name, "A.jpg");
}

TEST(ExportTextsTest, AreThePanels) {
    Exporter::State state;
    state.exported = 1;
    EXPECT_EQ(donePanelTexts(state).title, "1 photo exported");
    EXPECT_EQ(donePanelTexts(state).failures, "");
    state.failures.resize(2);
    EXPECT_EQ(donePanelTexts(state).failures, "2 failed");
}

} // namespace
} // namespace kelvaro
