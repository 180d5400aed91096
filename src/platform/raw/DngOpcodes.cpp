#include "platform/raw/DngOpcodes.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

namespace kelvaro {

namespace {

constexpr std::uint32_t kWarpRectilinear = 1, kWarpFisheye = 2, kFixVignetteRadial = 3,
                        kFixBadPixelsConstant = 4, kFixBadPixelsList = 5, kGainMap = 9,
                        kWarpRectilinear2 = 14;
constexpr std::size_t kMaximumOpcodes = 64, kMaximumPoints = 1 << 20, kMaximumGrid = 1 << 22,
                      kMaximumWarps = 4;

// Big-endian whatever the file's order; past the end it yields zeros and says so.
class Numbers {
public:
    explicit Numbers(std::span<const std::byte> data) : data_(data) {}
    std::uint64_t integer(std::size_t bytes) {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < bytes; ++i) {
            value = value << 8 |
                    (position_ < data_.size() ? std::to_integer<unsigned>(data_[position_]) : 0u);
            ++position_;
        }
        return value;
    }
    std::uint32_t u32() { return std::uint32_t(integer(4)); }
    double real() { return std::bit_cast<double>(integer(8)); }
    float single() { return std::bit_cast<float>(u32()); }
    bool isOver() const { return position_ > data_.size(); }
    std::size_t left() const { return position_ < data_.size() ? data_.size() - position_ : 0; }
    std::span<const std::byte> take(std::size_t bytes) {
        const auto part = data_.subspan(std::min(position_, data_.size()));
        position_ += bytes;
        return part.first(std::min(bytes, part.size()));
    }

private:
    std::span<const std::byte> data_;
    std::size_t position_ = 0;
};

bool isSize(std::uint32_t v) {
    return v > 0 && v <= 65535;
}

Gains& gainsOf(OpcodeCorrections& corrections) {
    return corrections.warps.empty() ? corrections.gains : corrections.lateGains;
}

void addGainMap(Numbers n, OpcodeCorrections& corrections) {
    GainMap map;
    const std::uint32_t top = n.u32(), left = n.u32(), bottom = n.u32(), right = n.u32();
    const std::uint32_t plane = n.u32(), planes = n.u32();
    const std::uint32_t rowPitch = n.u32(), columnPitch = n.u32(), rows = n.u32(),
                        columns = n.u32();
    map.rowSpacing = n.real();
    map.columnSpacing = n.real();
    map.rowOrigin = n.real();
    map.columnOrigin = n.real();
    const std::uint32_t mapPlanes = n.u32();
    if (plane >= kMaximumChannels || top >= bottom || left >= right || bottom > 65535 ||
        right > 65535)
        return;
    if (!isSize(rowPitch) || !isSize(columnPitch) || !isSize(rows) || !isSize(columns) ||
        !isSize(mapPlanes))
        return;
    const std::size_t cells = std::size_t(rows) * columns;
    if (cells > kMaximumGrid || cells * mapPlanes > n.left() / 4) return;
    const bool isPlaced = (rows == 1 || map.rowSpacing > 0) &&
                          (columns == 1 || map.columnSpacing > 0) && std::isfinite(map.rowOrigin) &&
                          std::isfinite(map.columnOrigin);
    if (!isPlaced) return;
    map.area = {int(left), int(top), int(right - left), int(bottom - top)};
    map.rowPitch = int(rowPitch);
    map.columnPitch = int(columnPitch);
    map.rows = int(rows);
    map.columns = int(columns);
    // One map for each plane that it names, the last for all that remain.
    const auto last = int(std::clamp<std::uint32_t>(planes, 1, kMaximumChannels));
    std::vector<GainMap> maps;
    for (int p = 0; p < std::min<int>(last, int(mapPlanes)); ++p) {
        map.plane = int(plane) + p;
        map.planes = p + 1 == int(mapPlanes) ? last - p : 1;
        maps.push_back(map);
    }
    for (std::size_t i = 0; i < cells; ++i) {
        for (std::uint32_t p = 0; p < mapPlanes; ++p) {
            const float gain = n.single();
            if (p >= maps.size()) continue;
            if (!(gain >= 0 && gain <= 64)) return;
            maps[p].gains.push_back(gain);
        }
    }
    for (GainMap& each : maps)
        gainsOf(corrections).maps.push_back(std::move(each));
}

void addRadialGain(Numbers n, OpcodeCorrections& corrections) {
    RadialGain gain;
    for (double& k : gain.k)
        k = n.real();
    gain.centreColumn = n.real();
    gain.centreRow = n.real();
    const bool isSane =
        std::all_of(gain.k.begin(), gain.k.end(), [](double k) { return std::abs(k) < 100; }) &&
        gain.centreRow >= 0 && gain.centreRow <= 1 && gain.centreColumn >= 0 &&
        gain.centreColumn <= 1;
    if (isSane && !n.isOver()) gainsOf(corrections).radial.push_back(gain);
}

// The kinds differ in the coefficients of a channel and in which powers they stand for.
void addWarp(std::uint32_t id, Numbers n, OpcodeCorrections& corrections) {
    const bool isSecond = id == kWarpRectilinear2;
    LensWarp warp;
    warp.isFisheye = id == kWarpFisheye;
    const std::uint32_t planes = n.u32();
    const std::size_t each = isSecond ? 19 : warp.isFisheye ? 4 : 6;
    if (planes < 1 || planes > kMaximumChannels ||
        n.left() != 8 * (each * planes + 2) + (isSecond ? 4 : 0))
        return;
    for (std::uint32_t p = 0; p < planes; ++p) {
        WarpCurve curve;
        for (std::size_t i = 0; i < (isSecond ? curve.radial.size() : 4); ++i)
            curve.radial[isSecond ? i : warp.isFisheye ? 2 * i + 1 : 2 * i] = n.real();
        if (!warp.isFisheye) {
            for (double& t : curve.tangential)
                t = n.real();
        }
        if (isSecond) {
            curve.leastRadius = n.real();
            curve.mostRadius = n.real();
        }
        warp.planes.push_back(curve);
    }
    warp.centreColumn = n.real();
    warp.centreRow = n.real();
    warp.isReciprocal = isSecond && n.u32() != 0;
    const bool isPlaced = warp.centreRow >= 0 && warp.centreRow <= 1 && warp.centreColumn >= 0 &&
                          warp.centreColumn <= 1;
    if (isPlaced && corrections.warps.size() < kMaximumWarps)
        corrections.warps.push_back(std::move(warp));
}

void addBadPixels(Numbers n, OpcodeCorrections& corrections) {
    n.u32(); // the phase of the filters, which we know
    const std::uint32_t points = n.u32(), rectangles = n.u32();
    if (points > kMaximumPoints || rectangles > kMaximumPoints) return;
    if (std::size_t(points) * 8 + std::size_t(rectangles) * 16 > n.left()) return;
    for (std::uint32_t i = 0; i < points; ++i) {
        const std::uint32_t row = n.u32(), column = n.u32();
        if (row <= 65535 && column <= 65535)
            corrections.badPoints.push_back({int(row), int(column)});
    }
    for (std::uint32_t i = 0; i < rectangles; ++i) {
        const std::uint32_t top = n.u32(), left = n.u32(), bottom = n.u32(), right = n.u32();
        if (bottom > 65535 || right > 65535) continue;
        if (std::uint64_t(bottom - std::min(top, bottom)) * (right - std::min(left, right)) >
            kMaximumPoints)
            continue;
        for (std::uint32_t y = top; y < bottom; ++y) {
            for (std::uint32_t x = left; x < right; ++x) {
                if (corrections.badPoints.size() >= kMaximumPoints) return;
                corrections.badPoints.push_back({int(y), int(x)});
            }
        }
    }
}

} // namespace

void GainMap::row(double row, float* out) const {
    const double y =
        rows > 1 ? std::clamp((row - rowOrigin) / rowSpacing, 0.0, double(rows - 1)) : 0;
    const int r = int(y), next = std::min(r + 1, rows - 1);
    for (int c = 0; c < columns; ++c) {
        const double a = double(gains[std::size_t(r * columns + c)]);
        const double b = double(gains[std::size_t(next * columns + c)]);
        out[c] = float(std::lerp(a, b, y - r));
    }
}

double GainMap::column(double column) const {
    return columns > 1
               ? std::clamp((column - columnOrigin) / columnSpacing, 0.0, double(columns - 1))
               : 0;
}

void addOpcodes(std::span<const std::byte> list, OpcodeCorrections& corrections) {
    Numbers n(list);
    const std::size_t count = std::min<std::size_t>(n.u32(), kMaximumOpcodes);
    for (std::size_t i = 0; i < count && n.left() >= 16; ++i) {
        const std::uint32_t id = n.u32();
        n.u32(); // version
        n.u32(); // flags
        const std::uint32_t bytes = n.u32();
        if (bytes > n.left()) return;
        const Numbers content(n.take(bytes));
        if (id == kGainMap) addGainMap(content, corrections);
        if (id == kFixVignetteRadial) addRadialGain(content, corrections);
        if (id == kFixBadPixelsConstant) {
            Numbers constant = content;
            const std::uint32_t value = constant.u32();
            if (bytes >= 8 && value <= 65535)
                corrections.badConstants.push_back(std::uint16_t(value));
        }
        if (id == kWarpRectilinear || id == kWarpFisheye || id == kWarpRectilinear2)
            addWarp(id, content, corrections);
        if (id == kFixBadPixelsList) addBadPixels(content, corrections);
    }
}

} // namespace kelvaro
