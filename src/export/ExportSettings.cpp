#include "export/ExportSettings.h"

#include "recipe/StoredFields.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {

namespace {

constexpr double kDefaultQuality = 85;
constexpr double kLargestInteger = 9007199254740992.0; // whole numbers are exact up to here

// A name that is not known, or no name at all, gives `otherwise`.
template<class Find, class T>
T named(const json::Object& object, std::string_view key, Find find, T otherwise) {
    const json::Value* value = object.find(key);
    const auto* text = value ? value->get<std::string>() : nullptr;
    const auto known = text ? find(*text) : std::nullopt;
    return known.value_or(otherwise);
}

double repairedQuality(double quality) {
    return std::isfinite(quality) ? std::clamp(quality, 10.0, 100.0) : kDefaultQuality;
}

json::Value textValue(std::string_view text) {
    return {std::string(text)};
}

} // namespace

ExportSettings ExportSettings::defaults(const UserFolders& folders) {
    ExportSettings settings;
    settings.destination = (folders.pictures / "Kelvaro Exports").string();
    return settings;
}

ExportSettings ExportSettings::load(const SettingsStore& store, const UserFolders& folders) {
    const ExportSettings otherwise = defaults(folders);
    const auto text = store.get<std::string>(key);
    return text ? decoded(*text, otherwise) : otherwise;
}

void ExportSettings::save(SettingsStore& store) const {
    store.set(key, encoded());
}

ExportSettings ExportSettings::decoded(std::string_view text, const ExportSettings& otherwise) {
    const auto document = json::parse(text);
    const auto* object = document ? document->get<json::Object>() : nullptr;
    if (!object) return otherwise;
    std::optional<DecodeFailure> failure;
    const StoredFields fields(*object, failure);
    constexpr auto keep = StoredFields::NonFinite::keep;

    ExportSettings read = otherwise;
    read.format = named(*object, "format", exportFormat, otherwise.format);
    read.quality = repairedQuality(fields.number("quality", otherwise.quality, keep));
    read.resize = fields.boolean("resize", otherwise.resize);
    read.border = fields.boolean("border", otherwise.border);
    read.borderPercent = fields.number("borderPercent", otherwise.borderPercent, keep);
    read.dateStamp = named(*object, "dateStamp", DateStamp::style, otherwise.dateStamp);
    const double longEdge = fields.number("longEdge", otherwise.longEdge);
    read.includeMetadata = fields.boolean("includeMetadata", otherwise.includeMetadata);
    read.destination = fields.text("destination", otherwise.destination);
    read.colorSpace = named(*object, "colorSpace", Pipeline::outputSpace, otherwise.colorSpace);
    read.replaceExisting = fields.boolean("replaceExisting", otherwise.replaceExisting);
    const bool isWhole = longEdge == std::floor(longEdge) && std::abs(longEdge) < kLargestInteger;
    if (failure || !isWhole) return otherwise;
    read.longEdge = int(std::clamp(longEdge, 256.0, 20000.0));
    return read;
}

std::string ExportSettings::encoded() const {
    const auto finite = [](double value, double otherwise) {
        return json::number(std::isfinite(value) ? value : otherwise);
    };
    json::Object object;
    object.set("format", textValue(rawValue(format)));
    object.set("quality", finite(quality, kDefaultQuality));
    object.set("resize", {resize});
    object.set("border", {border});
    object.set("borderPercent", finite(borderPercent, 1));
    object.set("dateStamp", textValue(DateStamp::rawValue(dateStamp)));
    object.set("longEdge", json::number(longEdge));
    object.set("includeMetadata", {includeMetadata});
    object.set("destination", textValue(destination));
    object.set("colorSpace", textValue(Pipeline::rawValue(colorSpace)));
    object.set("replaceExisting", {replaceExisting});
    return json::print({std::move(object)});
}

double ExportSettings::borderFraction() const {
    if (!border || !std::isfinite(borderPercent)) return 0;
    return std::clamp(borderPercent, 1.0, 20.0) / 100;
}

int ExportSettings::clampedLongEdge() const {
    return std::clamp(longEdge, 256, 20000);
}

} // namespace kelvaro
