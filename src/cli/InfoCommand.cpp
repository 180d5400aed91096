#include "cli/Commands.h"

#include "platform/PhotoKinds.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <cmath>

namespace kelvaro {

namespace {

// What the command tells of one photo; absent values are not shown.
struct Summary {
    std::optional<PixelSize> size;
    std::optional<std::string> camera, lens, taken, offset;
    std::optional<double> shutterSeconds, aperture, focalLength;
    std::optional<std::int64_t> iso;
};

std::optional<double> positive(std::optional<double> value) {
    return value && *value > 0 ? value : std::nullopt;
}

// "Make Model", without a make that the model repeats.
std::optional<std::string> cameraName(const PropertyDictionary& tiff) {
    const auto make = tiff.text("Make"), model = tiff.text("Model");
    if (!make || !model) return model ? model : make;
    return model->starts_with(*make) ? *model : *make + " " + *model;
}

Summary summarised(const PhotoProperties& properties) {
    Summary summary;
    summary.size = properties.uprightSize();
    summary.camera = cameraName(properties.tiff);
    summary.lens = properties.exif.text("LensModel");
    if (!summary.lens) summary.lens = properties.auxiliary.text("LensModel");
    summary.taken = properties.exif.text("DateTimeOriginal");
    if (summary.taken) summary.offset = properties.exif.text("OffsetTimeOriginal");
    if (!summary.taken) summary.taken = properties.tiff.text("DateTime");
    summary.shutterSeconds = positive(properties.exif.number("ExposureTime"));
    summary.aperture = positive(properties.exif.number("FNumber"));
    summary.focalLength = positive(properties.exif.number("FocalLength"));
    if (const auto iso = properties.exif.integer("ISOSpeedRatings"); iso && *iso > 0)
        summary.iso = iso;
    return summary;
}

std::string shutterText(double seconds) {
    if (seconds < 0.3) return fmt::format("1/{:.0f} s", 1 / seconds);
    return fmt::format("{:g} s", std::round(seconds * 10) / 10);
}

void printSummary(const std::filesystem::path& photo, const Summary& summary) {
    fmt::print("{}\n", photo.string());
    const auto row = [](const char* title, const std::string& text) {
        if (!text.empty()) fmt::print("  {:<10}{}\n", title, text);
    };
    if (summary.size)
        row("Size", fmt::format("{} × {}, {:.1f} MP", summary.size->width, summary.size->height,
                                double(summary.size->width) * summary.size->height / 1e6));
    row("Camera", summary.camera.value_or(""));
    row("Lens", summary.lens.value_or(""));
    std::vector<std::string> exposure;
    if (summary.shutterSeconds) exposure.push_back(shutterText(*summary.shutterSeconds));
    if (summary.aperture) exposure.push_back(fmt::format("f/{:g}", *summary.aperture));
    if (summary.iso) exposure.push_back(fmt::format("ISO {}", *summary.iso));
    if (summary.focalLength) exposure.push_back(fmt::format("{:g} mm", *summary.focalLength));
    row("Exposure", fmt::format("{}", fmt::join(exposure, ", ")));
    if (summary.taken) row("Taken", *summary.taken + (summary.offset ? " " + *summary.offset : ""));
    const bool nothing =
        !summary.size && !summary.camera && !summary.lens && exposure.empty() && !summary.taken;
    if (nothing) fmt::print("  No information available\n");
}

nlohmann::json toJson(const std::filesystem::path& photo, const Summary& summary) {
    nlohmann::json object{{"path", photo.string()}};
    const auto put = [&](const char* key, const auto& value) {
        if (value) object[key] = *value;
    };
    if (summary.size) {
        object["width"] = summary.size->width;
        object["height"] = summary.size->height;
    }
    put("camera", summary.camera);
    put("lens", summary.lens);
    put("shutter", summary.shutterSeconds);
    put("aperture", summary.aperture);
    put("iso", summary.iso);
    put("focalLength", summary.focalLength);
    put("taken", summary.taken);
    put("offset", summary.offset);
    return object;
}

} // namespace

ExitCode runInfo(const InfoRequest& request, Services& services) {
    ExitCode code = ExitCode::done;
    auto list = nlohmann::json::array();
    for (const auto& photo : request.photos) {
        const auto properties = photoKind(photo)
                                    ? services.properties->read(photo)
                                    : fail(FailureKind::unsupported,
                                           fmt::format("“{}” isn't a photo that Kelvaro knows.",
                                                       photo.filename().string()));
        if (!properties) {
            report(properties.error());
            code = ExitCode::someFailed;
            continue;
        }
        if (request.json)
            list.push_back(toJson(photo, summarised(*properties)));
        else
            printSummary(photo, summarised(*properties));
    }
    // Names that are not UTF-8 are shown with replacement characters instead of ending the list.
    if (request.json)
        fmt::print("{}\n", list.dump(2, ' ', false, nlohmann::json::error_handler_t::replace));
    return code;
}

} // namespace kelvaro
