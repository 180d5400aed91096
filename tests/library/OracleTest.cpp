// The records of every photo in the folder KELVARO_PHOTOS against what an independent reader says
// (oracle.json). Each difference is explained in the table below.
#include "library/LibrarySamples.h"
#include "places/Places.h"
#include "platform/metadata/ExifPropertyReader.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdlib>
#include <fstream>

namespace kelvaro {
namespace {

using namespace test;
using nlohmann::json;

struct Explained {
    const char *file, *field, *reason; // the beginnings of the path and the field's name
};
constexpr Explained kExplained[] = {
    {"bitmap/DSC_0003.JPG", "iso", "in the maker note only; the oracle does not round"},
    {"raw/nikon_d1_christmas.NEF", "iso", "in the maker note only; its second number counts"},
    {"raw/Canon PowerShot G2", "shutter", "written as 1/n with whole n"},
    {"raw/canon_eos_d30", "shutter", "written as 1/n with whole n"},
};

using places::photos;

// The first of the keys that is there; texts are trimmed, and of several numbers the first counts.
std::string told(const json& file, std::initializer_list<const char*> keys) {
    for (const char* key : keys) {
        if (!file.contains(key)) continue;
        const json& value = file[key];
        std::string text = value.is_string() ? value.get<std::string>() : value.dump();
        text.erase(0, text.find_first_not_of(" "));
        text.erase(text.find_last_not_of(" ") + 1);
        return text == "undef" || text == "inf" ? "" : text;
    }
    return "";
}

std::string told(const std::optional<std::string>& text) {
    return text.value_or("");
}

bool sameNumber(const std::string& theirs, std::optional<double> ours) {
    const double number = std::strtod(theirs.c_str(), nullptr);
    if (!ours) return !(number > 0); // a zero counts as not recorded
    return std::abs(number - *ours) <= 1e-6 * std::max(1.0, number);
}

// "2024:03:09 18:30:00" with its offset, as UTC; none for texts that are no date.
std::optional<std::int64_t> utcSeconds(const std::string& text, const std::string& offset) {
    CivilTime t;
    int hours = 0, minutes = 0;
    char sign = '+';
    if (std::sscanf(text.c_str(), "%d:%d:%d %d:%d:%d", &t.year, &t.month, &t.day, &t.hour,
                    &t.minute, &t.second) != 6 ||
        t.year == 0)
        return std::nullopt;
    if (std::sscanf(offset.c_str(), "%c%d:%d", &sign, &hours, &minutes) != 3) hours = minutes = 0;
    const int seconds = (hours * 60 + minutes) * 60;
    return secondsAsUtc(t) - (sign == '-' ? -seconds : seconds);
}

TEST(Oracle, RecordsAgree) {
    const auto folder = photos();
    if (!std::filesystem::exists(folder / "oracle.json")) GTEST_SKIP() << "no photos";
    const json oracle = json::parse(std::ifstream(folder / "oracle.json"));
    ExifPropertyReader reader;
    const auto calendar = makeIcuCalendar("UTC");
    int files = 0;
    for (const auto& [path, facts] : oracle.items()) {
        if (path.starts_with("broken/")) continue; // their dictionaries are compared elsewhere
        const auto properties = reader.read(folder / path);
        ASSERT_TRUE(properties) << path;
        ++files;
        const PhotoMeta meta = makePhotoMeta(*properties, photoAt("/" + path), *calendar);
        const auto check = [&, name = path](const char* field, bool agrees,
                                            const std::string& theirs) {
            for (const Explained& row : kExplained) {
                if (name.starts_with(row.file) && !std::strcmp(row.field, field)) return;
            }
            EXPECT_TRUE(agrees) << name << ": " << field << ", the oracle says \"" << theirs
                                << "\"";
        };
        const auto text = [&](const char* field, const std::optional<std::string>& ours,
                              const std::string& theirs) {
            check(field, told(ours) == theirs, theirs);
        };
        const auto number = [&](const char* field, std::optional<double> ours,
                                const std::string& theirs) {
            check(field, sameNumber(theirs, ours), theirs);
        };
        text("make", meta.make, told(facts, {"IFD0:Make", "CanonRaw:Make"}));
        text("camera", meta.camera, told(facts, {"IFD0:Model", "CanonRaw:Model"}));
        if (facts.contains("ExifIFD:LensModel"))
            text("lens", meta.lens, told(facts, {"ExifIFD:LensModel"}));
        number("focalLength", meta.focalLength,
               told(facts, {"ExifIFD:FocalLength", "IFD0:FocalLength", "Canon:FocalLength"}));
        number("iso", meta.iso ? std::optional<double>(*meta.iso) : std::nullopt,
               told(facts, {"ExifIFD:ISO", "Composite:ISO", "Nikon:ISO"}));
        number("aperture", meta.aperture,
               told(facts, {"ExifIFD:FNumber", "IFD0:FNumber", "Canon:FNumber"}));
        number("shutter", meta.shutter,
               told(facts, {"ExifIFD:ExposureTime", "IFD0:ExposureTime", "Canon:ExposureTime"}));
        number("focal35", meta.focal35, told(facts, {"ExifIFD:FocalLengthIn35mmFormat"}));
        auto seconds = utcSeconds(told(facts, {"ExifIFD:DateTimeOriginal", "IFD0:DateTimeOriginal",
                                               "CanonRaw:DateTimeOriginal"}),
                                  told(facts, {"ExifIFD:OffsetTimeOriginal"}));
        if (!seconds)
            seconds = utcSeconds(told(facts, {"IFD0:ModifyDate"}),
                                 told(facts, {"ExifIFD:OffsetTimeOriginal"}));
        const bool agree = meta.taken && seconds ? meta.taken->nanoseconds / kSecond == *seconds
                                                 : !meta.taken && !seconds;
        check("taken", agree, seconds ? std::to_string(*seconds) : "");
    }
    EXPECT_GT(files, 100);
}

} // namespace
} // namespace kelvaro
