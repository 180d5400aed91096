// How each value of the information panel is spelt, and where it stands.
#include "library/PhotoInfo.h"
#include "library/SettingTexts.h"

#include <fmt/format.h>

#include <array>
#include <cmath>

namespace kelvaro {

namespace {

std::string biasText(double stops) {
    return std::round(stops * 10) == 0 ? "0 EV" : fmt::format("{:+.1f} EV", stops);
}

// As file managers count: 1 kB is 1,000 bytes.
std::string bytesText(std::int64_t bytes) {
    if (bytes < 1000) return fmt::format("{} bytes", bytes);
    constexpr std::array units{"kB", "MB", "GB", "TB"};
    double value = double(bytes) / 1000;
    std::size_t unit = 0;
    for (; value >= 999.95 && unit + 1 < units.size(); ++unit)
        value /= 1000;
    return fmt::format("{:.1f} {}", value, units[unit]);
}

std::string degreesText(double degrees, char positive, char negative) {
    return fmt::format("{:.6f}° {}", std::abs(degrees), degrees < 0 ? negative : positive);
}

std::string offsetText(int seconds) {
    return fmt::format("{}{:02}:{:02}", seconds < 0 ? '-' : '+', std::abs(seconds) / 3600,
                       std::abs(seconds) / 60 % 60);
}

std::string takenText(const CaptureTime& time, const TextRules& rules) {
    const std::string text = rules.dateAndTime(civilFromSeconds(time.onWall));
    return time.offset ? fmt::format("{} ({})", text, offsetText(*time.offset)) : text;
}

bool recordsNothing(PhotoInfo info) {
    info.format.reset();
    info.size.reset();
    info.modified.reset();
    info.created.reset();
    return info == PhotoInfo();
}

// Adds rows of one section at a time.
class Rows {
public:
    void section(std::string_view title) { section_ = title; }
    template<class T, class Spell>
    void add(std::string_view key, std::string_view label, const std::optional<T>& value,
             Spell&& spell) {
        if (value) rows.push_back({key, section_, label, spell(*value)});
    }
    void add(std::string_view key, std::string_view label,
             const std::optional<std::string>& value) {
        add(key, label, value, [](const std::string& text) { return text; });
    }
    std::vector<InfoRow> rows;

private:
    std::string_view section_;
};

void addCapture(const PhotoInfo& info, Rows& rows) {
    rows.section("Exposure");
    rows.add("aperture", "Aperture", info.aperture, apertureText);
    rows.add("shutter", "Shutter", info.shutter, shutterText);
    rows.add("iso", "ISO", info.iso, isoText);
    rows.add("focal", "Focal length", info.focal, focalText);
    rows.add("focal35", "35 mm equivalent", info.focal35,
             [](double value) { return focalText(value) + " equiv."; });
    rows.add("bias", "Exposure compensation", info.bias, biasText);
    rows.section("Camera");
    rows.add("camera", "Camera", info.camera);
    rows.add("lens", "Lens", info.lens);
    rows.add("program", "Program", info.program);
    rows.add("metering", "Metering", info.metering);
    rows.add("flash", "Flash", info.flash);
    rows.add("whiteBalance", "White balance", info.whiteBalance);
}

void addFile(const PhotoInfo& info, const TextRules& rules, const LocalCalendar& calendar,
             Rows& rows) {
    const auto date = [&](FileTime time) { return rules.dateAndTime(calendar.civil(time)); };
    rows.section("Image");
    rows.add("taken", "Date taken", info.taken,
             [&](const CaptureTime& time) { return takenText(time, rules); });
    rows.add("dimensions", "Dimensions", info.dimensions,
             [](const PixelSize& size) { return fmt::format("{} × {}", size.width, size.height); });
    rows.add("megapixels", "Megapixels", info.megapixels,
             [](double value) { return fmt::format("{:.1f} MP", value); });
    rows.add("colour", "Color", info.colour);
    rows.add("format", "Format", info.format);
    rows.section("File");
    rows.add("size", "Size", info.size, bytesText);
    rows.add("modified", "Modified", info.modified, date);
    rows.add("created", "Created", info.created, date);
}

void addRest(const PhotoInfo& info, Rows& rows) {
    rows.section("Place");
    rows.add("latitude", "Latitude", info.latitude,
             [](double degrees) { return degreesText(degrees, 'N', 'S'); });
    rows.add("longitude", "Longitude", info.longitude,
             [](double degrees) { return degreesText(degrees, 'E', 'W'); });
    rows.add("altitude", "Altitude", info.altitude,
             [](double metres) { return fmt::format("{} m", std::round(metres * 10) / 10); });
    rows.section("Credits");
    rows.add("software", "Software", info.software);
    rows.add("artist", "Artist", info.artist);
    rows.add("copyright", "Copyright", info.copyright);
}

} // namespace

std::vector<InfoRow> infoRows(const PhotoInfo& info, const TextRules& rules,
                              const LocalCalendar& calendar) {
    Rows rows;
    if (recordsNothing(info)) return {};
    addCapture(info, rows);
    addFile(info, rules, calendar, rows);
    addRest(info, rows);
    return std::move(rows.rows);
}

} // namespace kelvaro
