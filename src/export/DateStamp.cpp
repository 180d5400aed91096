#include "export/DateStamp.h"

#include "export/SegmentDigits.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace kelvaro {

namespace {

constexpr std::array<std::string_view, 3> kStyleNames{"none", "dayMonthYear", "monthDayYear"};
constexpr int kSmallestSide = 32; // photos up to this carry no stamp

std::uint8_t byteOf(double value) {
    return std::uint8_t(std::lround(value * 255));
}

// sRGB's curve, IEC 61966-2-1.
ColourDecoding standardDecoding() {
    std::vector<float> table(256);
    for (std::size_t i = 0; i < table.size(); ++i) {
        const double v = double(i) / 255;
        table[i] = float(v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4));
    }
    ColourDecoding decoding;
    decoding.tone.fill(std::make_shared<const std::vector<float>>(std::move(table)));
    return decoding;
}

Image drawn(const std::string& text, double digitHeight) {
    const Coverage coverage = segmentText(text, digitHeight);
    Bitmap pixels({coverage.width, coverage.height}, 4, SampleType::u8);
    for (int y = 0; y < coverage.height; ++y) {
        auto* to = pixels.row<std::uint8_t>(y);
        for (int x = 0; x < coverage.width; ++x) {
            for (const double channel : DateStamp::colour)
                *to++ = byteOf(channel);
            *to++ = byteOf(DateStamp::opacity * double(coverage.at(x, y)));
        }
    }
    return imageFrom(sourceFrom(std::move(pixels), standardDecoding()));
}

} // namespace

std::string_view DateStamp::rawValue(Style style) {
    return kStyleNames[static_cast<std::size_t>(style)];
}

std::optional<DateStamp::Style> DateStamp::style(std::string_view rawValue) {
    for (const Style style : styles)
        if (DateStamp::rawValue(style) == rawValue) return style;
    return std::nullopt;
}

std::string DateStamp::text(Style style, std::chrono::year_month_day date) {
    const auto day = unsigned(date.day()), month = unsigned(date.month());
    const int year = ((int(date.year()) % 100) + 100) % 100;
    switch (style) {
    case Style::dayMonthYear:
        return fmt::format("{:02}.{:02}.{:02}", day, month, year);
    case Style::monthDayYear:
        return fmt::format("{:02}.{:02}.{:02}", month, day, year);
    case Style::none:
        break;
    }
    return {};
}

std::optional<DateStamp::Geometry> DateStamp::geometry(PixelSize photo) {
    const int side = std::min(photo.width, photo.height);
    if (side <= kSmallestSide) return std::nullopt;
    return Geometry{std::max(0.026 * side, 6.0), 0.05 * side};
}

Image DateStamp::imprinted(const Image& photo, const std::string& text) {
    const PixelRect& extent = photo.extent();
    const auto where = geometry({extent.width, extent.height});
    if (!where || text.empty()) return photo;
    const Image stamp = drawn(text, where->digitHeight);
    // On whole pixels: moved by a fraction the digits would be resampled.
    const int margin = int(std::lround(where->margin));
    const int x = extent.x + extent.width - margin - stamp.extent().width;
    const Image placed = translated(stamp, x, extent.y + margin);
    return cropped(compositedOver(placed, photo), extent);
}

} // namespace kelvaro
