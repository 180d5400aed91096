#include "export/ExportSettings.h"
#include "export/SizeNotes.h"

#include <gtest/gtest.h>
#include <map>

namespace kelvaro {
namespace {

const UserFolders kFolders{"/home/u", "/home/u/Pictures", {}, {}, {}};

class MemorySettings final : public SettingsStore {
public:
    std::optional<SettingValue> value(std::string_view key) const override {
        const auto found = values_.find(std::string(key));
        return found == values_.end() ? std::nullopt : std::optional(found->second);
    }
    void set(std::string_view key, SettingValue value) override {
        values_[std::string(key)] = std::move(value);
    }
    void remove(std::string_view key) override { values_.erase(std::string(key)); }
    void flush() override {}

private:
    std::map<std::string, SettingValue> values_;
};

ExportSettings decoded(std::string_view text) {
    return ExportSettings::decoded(text, ExportSettings::defaults(kFolders));
}

TEST(ExportSettingsTest, DefaultsAreTheTables) {
    const auto settings = ExportSettings::load(MemorySettings(), kFolders);
    EXPECT_EQ(settings.format, ExportFormat::jpeg);
    EXPECT_EQ(settings.quality, 85);
    EXPECT_FALSE(settings.resize || settings.border || settings.replaceExisting);
    EXPECT_EQ(settings.borderPercent, 1);
    EXPECT_EQ(settings.dateStamp, DateStamp::Style::none);
    EXPECT_EQ(settings.longEdge, 3000);
    EXPECT_TRUE(settings.includeMetadata);
    EXPECT_EQ(settings.destination, "/home/u/Pictures/Kelvaro Exports");
    EXPECT_EQ(settings.colorSpace, Pipeline::OutputSpace::sRGB);
}

TEST(ExportSettingsTest, KeepsEveryFieldBetweenLaunches) {
    ExportSettings settings;
    settings.format = ExportFormat::png;
    settings.quality = 62.5;
    settings.resize = settings.border = settings.replaceExisting = true;
    settings.borderPercent = 7.25;
    settings.dateStamp = DateStamp::Style::monthDayYear;
    settings.longEdge = 1234;
    settings.includeMetadata = false;
    settings.destination = "/a \"folder\"/ä";
    settings.colorSpace = Pipeline::OutputSpace::displayP3;
    MemorySettings store;
    settings.save(store);
    EXPECT_EQ(ExportSettings::load(store, kFolders), settings);
}

TEST(ExportSettingsTest, RepairsAndFallsBack) {
    for (const char* name : {"\"webp\"", "7", "null", "{}"})
        EXPECT_EQ(decoded(std::string("{\"format\":") + name + "}").format, ExportFormat::jpeg);
    const auto odd = decoded(R"({"colorSpace": true, "dateStamp": "roman", "quality": 40})");
    EXPECT_EQ(odd.quality, 40);
    EXPECT_EQ(odd.colorSpace, Pipeline::OutputSpace::sRGB);
    const std::pair<const char*, double> qualities[] = {{"5", 10},      {"120", 100}, {"1e400", 85},
                                                        {"-1e400", 85}, {"null", 85}, {"33", 33}};
    for (const auto& [text, quality] : qualities)
        EXPECT_EQ(decoded(std::string("{\"quality\":") + text + "}").quality, quality) << text;
    const std::pair<const char*, int> edges[] = {
        {"100", 256}, {"90000", 20000}, {"4000", 4000}, {"4e3", 4000}, {"-7", 256}};
    for (const auto& [text, edge] : edges)
        EXPECT_EQ(decoded(std::string("{\"longEdge\":") + text + "}").longEdge, edge) << text;
    for (const auto& [percent, fraction] : {std::pair("0", 0.01), {"50", 0.2}, {"1e400", 0.0}}) {
        const auto bordered =
            decoded(std::string(R"({"border":true,"borderPercent":)") + percent + "}");
        EXPECT_EQ(bordered.borderFraction(), fraction) << percent;
    }
}

TEST(ExportSettingsTest, OtherFaultsDiscardTheRecord) {
    const auto defaults = ExportSettings::defaults(kFolders);
    for (const char* text :
         {"", "[]", "{", R"({"format":"png","resize":1})", R"({"format":"png","quality":"85"})",
          R"({"format":"png","quality":true})", R"({"format":"png","longEdge":3000.5})",
          R"({"format":"png","longEdge":1e400})", R"({"format":"png","destination":3})"})
        EXPECT_EQ(decoded(text), defaults) << text;
}

TEST(SizeNotesTest, EstimateWhatTheFormatsTake) {
    ExportSettings settings;
    EXPECT_EQ(formatNote(settings, 24), "About 5.9 MB per photo");
    settings.format = ExportFormat::tiff;
    EXPECT_EQ(formatNote(settings, 24), "16-bit, uncompressed: about 144 MB per photo");
    settings.format = ExportFormat::heic;
    EXPECT_EQ(formatNote(settings, 24), "Usually smaller than JPEG at the same quality");
    settings.format = ExportFormat::png;
    EXPECT_EQ(formatNote(settings, 24), "16-bit, lossless: large files");
    // By the table, with 24 megapixels; between its points on the line.
    for (const auto& [quality, megabytes] : {std::pair(10.0, 0.4),
                                             {5.0, 0.4},
                                             {35.0, 1.6},
                                             {60.0, 2.8},
                                             {67.5, 3.6},
                                             {80.0, 5.15},
                                             {90.0, 6.4},
                                             {97.5, 8.95},
                                             {100.0, 11.0},
                                             {101.0, 11.0}})
        EXPECT_NEAR(jpegMegabytes(quality, 24), megabytes, 1e-12) << quality;
}

TEST(SizeNotesTest, CountTheBorderAndTheResize) {
    ExportSettings settings;
    EXPECT_NEAR(outputMegapixels(settings, 24), 24, 1e-9);
    settings.border = true;
    settings.borderPercent = 10; // 6000 × 4000 and 600 on each side
    EXPECT_NEAR(outputMegapixels(settings, 24), 7.2 * 5.2, 1e-9);
    settings.resize = true; // 2500 × 1666.67 and 250 on each side
    EXPECT_NEAR(outputMegapixels(settings, 24), 3000 * (2500.0 * 2 / 3 + 500) / 1e6, 1e-9);
    settings.border = false;
    settings.longEdge = 20000; // never enlarged
    EXPECT_NEAR(outputMegapixels(settings, 24), 24, 1e-9);
}

} // namespace
} // namespace kelvaro
