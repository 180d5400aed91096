#include "platform/raw/ColourTemperature.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {

namespace {

constexpr double kTintPerDistance = 3000;

// Robertson's isotherms: reciprocal temperature in mireds, where the line crosses the Planckian
// locus, and the line's slope.
struct Isotherm {
    double mired, u, v, slope;
};
constexpr std::array<Isotherm, 31> kIsotherms{{
    {0, 0.18006, 0.26352, -0.24341},   {10, 0.18066, 0.26589, -0.25479},
    {20, 0.18133, 0.26846, -0.26876},  {30, 0.18208, 0.27119, -0.28539},
    {40, 0.18293, 0.27407, -0.30470},  {50, 0.18388, 0.27709, -0.32675},
    {60, 0.18494, 0.28021, -0.35156},  {70, 0.18611, 0.28342, -0.37915},
    {80, 0.18740, 0.28668, -0.40955},  {90, 0.18880, 0.28997, -0.44278},
    {100, 0.19032, 0.29326, -0.47888}, {125, 0.19462, 0.30141, -0.58204},
    {150, 0.19962, 0.30921, -0.70471}, {175, 0.20525, 0.31647, -0.84901},
    {200, 0.21142, 0.32312, -1.0182},  {225, 0.21807, 0.32909, -1.2168},
    {250, 0.22511, 0.33439, -1.4512},  {275, 0.23247, 0.33904, -1.7298},
    {300, 0.24010, 0.34308, -2.0637},  {325, 0.24792, 0.34655, -2.4681},
    {350, 0.25591, 0.34951, -2.9641},  {375, 0.26400, 0.35200, -3.5814},
    {400, 0.27218, 0.35407, -4.3633},  {425, 0.28039, 0.35577, -5.3762},
    {450, 0.28863, 0.35714, -6.7262},  {475, 0.29685, 0.35823, -8.5955},
    {500, 0.30505, 0.35907, -11.324},  {525, 0.31320, 0.35968, -15.628},
    {550, 0.32129, 0.36011, -23.325},  {575, 0.32931, 0.36038, -40.770},
    {600, 0.33724, 0.36051, -116.45},
}};

// Unit vector along an isotherm, towards magenta (u grows).
struct Direction {
    double u, v;
};
Direction along(const Isotherm& line) {
    const double length = std::hypot(1, line.slope);
    return {1 / length, line.slope / length};
}

struct Between {
    double mired, u, v; // on the locus
    Direction along;
};
// `f` of the way from isotherm i − 1 to i.
Between between(std::size_t i, double f) {
    const Isotherm &a = kIsotherms[i - 1], &b = kIsotherms[i];
    const Direction da = along(a), db = along(b);
    Direction d{std::lerp(da.u, db.u, f), std::lerp(da.v, db.v, f)};
    const double length = std::hypot(d.u, d.v);
    return {std::lerp(a.mired, b.mired, f),
            std::lerp(a.u, b.u, f),
            std::lerp(a.v, b.v, f),
            {d.u / length, d.v / length}};
}

} // namespace

TemperatureTint temperatureOf(const Chromaticity& white) {
    const double scale = -2 * white.x + 12 * white.y + 3;
    const double u = 4 * white.x / scale, v = 6 * white.y / scale;
    double above = 0; // distance of the point from the previous isotherm
    for (std::size_t i = 1; i < kIsotherms.size(); ++i) {
        const Isotherm& line = kIsotherms[i];
        const Direction d = along(line);
        double distance = (v - line.v) * d.u - (u - line.u) * d.v;
        const bool last = i + 1 == kIsotherms.size();
        if (distance > 0 && !last) {
            above = distance;
            continue;
        }
        distance = -std::min(distance, 0.0);
        const double f = i == 1 ? 1 : distance + above > 0 ? above / (distance + above) : 0;
        const Between at = between(i, f);
        const double offset = (u - at.u) * at.along.u + (v - at.v) * at.along.v;
        return {1e6 / at.mired, -offset * kTintPerDistance};
    }
    return {};
}

Chromaticity chromaticityOf(const TemperatureTint& white) {
    const double mired = std::clamp(1e6 / white.kelvin, 10.0, 600.0);
    std::size_t i = 1;
    while (i + 1 < kIsotherms.size() && kIsotherms[i].mired < mired)
        ++i;
    const double from = kIsotherms[i - 1].mired;
    const Between at = between(i, (mired - from) / (kIsotherms[i].mired - from));
    const double offset = -white.tint / kTintPerDistance;
    const double u = at.u + offset * at.along.u, v = at.v + offset * at.along.v;
    const double scale = 2 * u - 8 * v + 4;
    return {3 * u / scale, 2 * v / scale};
}

std::optional<double> temperatureOfLightSource(int code) {
    switch (code) {
    case 1:
    case 4:
    case 9:
    case 20:
        return 5500; // daylight, flash, fine weather, D55
    case 2:
    case 14:
        return 4150; // fluorescent, cool white fluorescent
    case 3:
    case 17:
        return 2856; // tungsten, illuminant A
    case 10:
    case 21:
        return 6504; // cloudy, D65
    case 11:
    case 22:
        return 7504; // shade, D75
    case 12:
        return 6430; // daylight fluorescent
    case 13:
        return 5000; // day white fluorescent
    case 15:
        return 3525; // white fluorescent
    case 18:
        return 4874; // illuminant B
    case 19:
        return 6774; // illuminant C
    case 23:
        return 5003; // D50
    case 24:
        return 3200; // studio tungsten
    default:
        return std::nullopt;
    }
}

} // namespace kelvaro
