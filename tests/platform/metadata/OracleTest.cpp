// Every photo of the folder KELVARO_PHOTOS against what an independent reader says of it
// (oracle.json). Prints each difference; one that is not in the table below is a failure.
#include "places/Places.h"
#include "platform/metadata/ExifPropertyReader.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>

namespace kelvaro {
namespace {

using nlohmann::json;

using places::photos;

struct Allowed {
    const char* file;  // the beginning of the path; "" for all
    const char* field; // "" for all
    const char* reason;
};
const Allowed kAllowed[] = {
    {"bitmap/DSC_0003.JPG", "iso", "in the maker note only; the oracle does not round"},
    {"raw/nikon_d1_christmas.NEF", "iso", "in the maker note only; its second number counts"},
    {"broken/capture_nx_saved.nef", "iso", "in the maker note only; its second number counts"},
    {"raw/Canon PowerShot G2", "shutter", "written as 1/n with whole n"},
    {"raw/canon_eos_d30", "shutter", "written as 1/n with whole n"},
    {"bitmap/Nikon D5000.jpg", "latitude", "seconds are 0/0, degrees and minutes are sound"},
    {"bitmap/Nikon D5000.jpg", "longitude", "seconds are 0/0, degrees and minutes are sound"},
    {"broken/DC0010S.KDC", "", "the oracle files the tags under another directory"},
    {"broken/crop_outside.dng", "size", "the crop is larger than the sensor"},
    {"broken/heif_input_file_is_an_unsupported", "size", "an image sequence, no still picture"},
    {"broken/jpg_bogus_dac_index.jpg", "size", "two frame headers; the first counts"},
    {"broken/jpg_corrupt_jpeg_data_bad_huffman_code", "", "the library refuses the damaged block"},
    {"broken/poc_1530.crw", "", "damaged records, read differently"},
    {"broken/poc_839.rw2", "make", "a number where text belongs"},
    {"broken/tif_ascii_value_for_tag", "software", "an invalid byte, shown as Latin-1"},
    {"broken/tif_can_not_read_tiff_directory.tif", "make", "a directory cut short"},
    {"broken/tif_incorrect_count", "modified", "a damaged entry of the right length"},
};

const Allowed* allowed(const std::string& file, const std::string& field) {
    for (const Allowed& row : kAllowed) {
        if (file.starts_with(row.file) && (!*row.field || field == row.field)) return &row;
    }
    return nullptr;
}

// Which dictionary and key answers which of the oracle's; the first oracle key that is there
// counts.
struct Field {
    const char* name;
    PropertyDictionary PhotoProperties::*dictionary;
    const char* key;
    std::vector<const char*> oracle;
};
const Field kFields[] = {
    {"make", &PhotoProperties::tiff, "Make", {"IFD0:Make", "CanonRaw:Make"}},
    {"model", &PhotoProperties::tiff, "Model", {"IFD0:Model", "CanonRaw:Model"}},
    {"software", &PhotoProperties::tiff, "Software", {"IFD0:Software"}},
    {"artist", &PhotoProperties::tiff, "Artist", {"IFD0:Artist"}},
    {"copyright", &PhotoProperties::tiff, "Copyright", {"IFD0:Copyright"}},
    {"modified", &PhotoProperties::tiff, "DateTime", {"IFD0:ModifyDate"}},
    {"lens", &PhotoProperties::exif, "LensModel", {"ExifIFD:LensModel"}},
    {"taken",
     &PhotoProperties::exif,
     "DateTimeOriginal",
     {"ExifIFD:DateTimeOriginal", "CanonRaw:DateTimeOriginal"}},
    {"offset", &PhotoProperties::exif, "OffsetTimeOriginal", {"ExifIFD:OffsetTimeOriginal"}},
    {"aperture",
     &PhotoProperties::exif,
     "FNumber",
     {"ExifIFD:FNumber", "IFD0:FNumber", "Canon:FNumber"}},
    {"shutter",
     &PhotoProperties::exif,
     "ExposureTime",
     {"ExifIFD:ExposureTime", "IFD0:ExposureTime", "Canon:ExposureTime"}},
    {"iso",
     &PhotoProperties::exif,
     "ISOSpeedRatings",
     {"ExifIFD:ISO", "Composite:ISO", "Nikon:ISO"}},
    {"focal",
     &PhotoProperties::exif,
     "FocalLength",
     {"ExifIFD:FocalLength", "IFD0:FocalLength", "Canon:FocalLength"}},
    {"focal35", &PhotoProperties::exif, "FocalLenIn35mmFilm", {"ExifIFD:FocalLengthIn35mmFormat"}},
    {"bias", &PhotoProperties::exif, "ExposureBiasValue", {"ExifIFD:ExposureCompensation"}},
    {"program", &PhotoProperties::exif, "ExposureProgram", {"ExifIFD:ExposureProgram"}},
    {"metering", &PhotoProperties::exif, "MeteringMode", {"ExifIFD:MeteringMode"}},
    {"flash", &PhotoProperties::exif, "Flash", {"ExifIFD:Flash"}},
    {"balance", &PhotoProperties::exif, "WhiteBalance", {"ExifIFD:WhiteBalance"}},
    {"latitude", &PhotoProperties::gps, "Latitude", {"GPS:GPSLatitude"}},
    {"latitude side", &PhotoProperties::gps, "LatitudeRef", {"GPS:GPSLatitudeRef"}},
    {"longitude", &PhotoProperties::gps, "Longitude", {"GPS:GPSLongitude"}},
    {"longitude side", &PhotoProperties::gps, "LongitudeRef", {"GPS:GPSLongitudeRef"}},
    {"altitude", &PhotoProperties::gps, "Altitude", {"GPS:GPSAltitude"}},
    {"altitude side", &PhotoProperties::gps, "AltitudeRef", {"GPS:GPSAltitudeRef"}},
};

std::string trimmed(std::string text) {
    const auto blank = " \t\r\n";
    text.erase(0, std::min(text.find_first_not_of(blank), text.size()));
    text.erase(text.find_last_not_of(blank) + 1);
    return text;
}

// "" when the oracle has none; numbers are compared as numbers.
std::string oracleText(const json& file, const Field& field, std::optional<double>& number) {
    for (const char* key : field.oracle) {
        if (!file.contains(key)) continue;
        const json& value = file[key];
        if (value.is_number()) {
            number = value.get<double>();
            return value.dump();
        }
        const std::string text =
            trimmed(value.is_string() ? value.get<std::string>() : value.dump());
        if (text == "undef" || text == "inf") return "";
        char* end = nullptr;
        const double first = std::strtod(text.c_str(), &end); // "320 100": the first counts
        if (end != text.c_str() && (*end == 0 || *end == ' ') && *field.name != 'm') number = first;
        return text;
    }
    return "";
}

TEST(Metadata, AgreesWithAnotherReader) {
    const auto folder = photos();
    if (!std::filesystem::exists(folder / "oracle.json")) GTEST_SKIP() << "no photos";
    const json oracle = json::parse(std::ifstream(folder / "oracle.json"));
    ExifPropertyReader reader;
    std::set<const Allowed*> used;
    int compared = 0;
    for (const auto& [path, facts] : oracle.items()) {
        const auto read = reader.read(folder / path);
        if (!read) {
            EXPECT_NE(read.error().message.find(std::filesystem::path(path).filename().string()),
                      std::string::npos);
            EXPECT_EQ(path, "broken/empty_file.cr2");
            continue;
        }
        const auto differs = [&, file = path](const std::string& field, const std::string& ours,
                                              const std::string& theirs) {
            const Allowed* row = allowed(file, field);
            std::printf("%-60s %-14s ours %-24s oracle %-24s %s\n", file.c_str(), field.c_str(),
                        ours.c_str(), theirs.c_str(), row ? row->reason : "");
            if (row) used.insert(row);
            EXPECT_TRUE(row) << file << ": " << field;
        };
        for (const Field& field : kFields) {
            std::optional<double> number;
            const std::string theirs = oracleText(facts, field, number);
            const PropertyDictionary& ours = (*read).*field.dictionary;
            ++compared;
            if (number && !ours.text(field.key)) {
                const auto mine = ours.number(field.key);
                if (!mine || std::abs(*mine - *number) > 1e-6 * std::max(1.0, std::abs(*number))) {
                    differs(field.name, mine ? std::to_string(*mine) : "-", theirs);
                }
                continue;
            }
            const auto text = ours.text(field.key);
            const auto mine = text                     ? *text
                              : ours.number(field.key) ? std::to_string(*ours.number(field.key))
                                                       : "";
            if (mine != theirs) differs(field.name, mine, theirs);
        }
        const int turn = facts.value("IFD0:Orientation", json(1)).is_number()
                             ? facts.value("IFD0:Orientation", 1)
                             : 1;
        int expected = turn >= 1 && turn <= 8 ? turn : 1;
        if (facts.contains("QuickTime:Rotation") && !facts.contains("IFD0:Orientation")) {
            const int angle = facts["QuickTime:Rotation"]; // clockwise, as the container asks
            expected = angle == 90 ? 8 : angle == 180 ? 3 : angle == 270 ? 6 : 1;
        }
        if (read->orientation != expected)
            differs("orientation", std::to_string(read->orientation), std::to_string(expected));
        const std::string size = read->storedSize ? std::to_string(read->storedSize->width) + " " +
                                                        std::to_string(read->storedSize->height)
                                                  : "";
        // The oracle names the stored mosaic of a DNG; its picture is the default crop.
        std::string theirSize = facts.value("Composite:ImageSize", std::string());
        for (const char* key : {"IFD0:DefaultCropSize", "SubIFD:DefaultCropSize"}) {
            theirSize = facts.value(key, theirSize);
        }
        if (size != theirSize) differs("size", size, theirSize);
    }
    for (const Allowed& row : kAllowed) {
        EXPECT_TRUE(used.contains(&row)) << "no longer differs: " << row.file << " " << row.field;
    }
    std::printf("%d values compared\n", compared);
}

} // namespace
} // namespace kelvaro
