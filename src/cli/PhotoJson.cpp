#include "cli/PhotoJson.h"

#include <fmt/format.h>

#include <cstdlib>

namespace kelvaro {

namespace {

using Json = nlohmann::ordered_json;

std::string isoDate(const CivilTime& time) {
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", time.year, time.month, time.day,
                       time.hour, time.minute, time.second);
}

template<class T>
void put(Json& object, const char* key, const std::optional<T>& value) {
    if (value) object[key] = *value;
}

} // namespace

std::string isoTime(FileTime time) {
    constexpr std::int64_t second = 1'000'000'000;
    const std::int64_t seconds =
        time.nanoseconds / second - (time.nanoseconds % second < 0 ? 1 : 0);
    return isoDate(civilFromSeconds(seconds)) + "Z";
}

std::string isoTime(const CaptureTime& time) {
    const std::string wall = isoDate(civilFromSeconds(time.onWall));
    if (!time.offset) return wall;
    const int minutes = std::abs(*time.offset) / 60;
    return fmt::format("{}{}{:02}:{:02}", wall, *time.offset < 0 ? '-' : '+', minutes / 60,
                       minutes % 60);
}

Json toJson(const PhotoMeta& meta) {
    Json object = Json::object();
    if (meta.takenOnWall)
        object["taken"] = isoTime(CaptureTime{*meta.takenOnWall, meta.takenOffset});
    object["width"] = meta.width;
    object["height"] = meta.height;
    object["mtime"] = isoTime(meta.mtime);
    object["size"] = meta.size;
    object["schemaVersion"] = meta.schemaVersion;
    put(object, "camera", meta.camera);
    put(object, "lens", meta.lens);
    put(object, "focalLength", meta.focalLength);
    put(object, "iso", meta.iso);
    put(object, "aperture", meta.aperture);
    put(object, "shutter", meta.shutter);
    put(object, "focal35", meta.focal35);
    return object;
}

Json toJson(const PhotoInfo& info) {
    Json object = Json::object();
    put(object, "aperture", info.aperture);
    put(object, "shutter", info.shutter);
    put(object, "iso", info.iso);
    put(object, "focal", info.focal);
    put(object, "focal35", info.focal35);
    put(object, "bias", info.bias);
    put(object, "camera", info.camera);
    put(object, "lens", info.lens);
    put(object, "program", info.program);
    put(object, "metering", info.metering);
    put(object, "flash", info.flash);
    put(object, "whiteBalance", info.whiteBalance);
    if (info.taken) object["taken"] = isoTime(*info.taken);
    if (info.dimensions)
        object["dimensions"] = {{"width", info.dimensions->width},
                                {"height", info.dimensions->height}};
    put(object, "megapixels", info.megapixels);
    put(object, "colour", info.colour);
    put(object, "format", info.format);
    put(object, "size", info.size);
    if (info.modified) object["modified"] = isoTime(*info.modified);
    if (info.created) object["created"] = isoTime(*info.created);
    put(object, "latitude", info.latitude);
    put(object, "longitude", info.longitude);
    put(object, "altitude", info.altitude);
    put(object, "software", info.software);
    put(object, "artist", info.artist);
    put(object, "copyright", info.copyright);
    return object;
}

void print(const Json& document) {
    fmt::print("{}\n", document.dump(2, ' ', false, Json::error_handler_t::replace));
}

} // namespace kelvaro
