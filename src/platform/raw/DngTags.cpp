#include "platform/raw/DngTags.h"

#include "platform/raw/TiffTags.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace kelvaro {

namespace {

using namespace tiff;

constexpr int kMosaic = 32803, kLinear = 34892;
constexpr std::size_t kMaximumOpcodeBytes = 16 << 20;
constexpr std::size_t kMaximumParts = 1 << 18; // strips or tiles

bool areFinite(const std::vector<double>& values) {
    return std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); });
}

int integer(const TiffDirectory& directory, std::uint16_t tag, int otherwise) {
    const auto value = directory.number(tag);
    return value && std::abs(*value) < 1e9 ? int(*value) : otherwise;
}

std::optional<SensorRect> readActiveArea(const TiffDirectory& raw, int width, int height) {
    const auto v = raw.numbers(activeArea, 4); // top, left, bottom, right
    if (v.size() != 4 || !areFinite(v)) return std::nullopt;
    if (!(v[0] >= 0 && v[1] >= 0 && v[2] > v[0] && v[3] > v[1] && v[2] <= height &&
          v[3] <= width)) {
        return std::nullopt;
    }
    return SensorRect{int(v[1]), int(v[0]), int(v[3] - v[1]), int(v[2] - v[0])};
}

std::optional<SensorRect> readDefaultCrop(const TiffDirectory& raw) {
    const auto origin = raw.numbers(defaultCropOrigin, 2), size = raw.numbers(defaultCropSize, 2);
    if (origin.size() != 2 || size.size() != 2) return std::nullopt;
    for (const double v : {origin[0], origin[1], size[0], size[1]}) {
        if (!(v >= 0 && v < 1e6)) return std::nullopt;
    }
    const int left = int(std::lround(origin[0])), top = int(std::lround(origin[1]));
    return SensorRect{left, top, int(std::lround(size[0])), int(std::lround(size[1]))};
}

std::vector<float> floats(const std::vector<double>& values) {
    return {values.begin(), values.end()};
}

std::optional<BlackLevels> readBlack(const TiffDirectory& raw, int samples,
                                     const SensorRect& active) {
    BlackLevels black;
    black.channels = samples;
    black.originTop = active.top;
    black.originLeft = active.left;
    const auto repeat = raw.numbers(blackLevelRepeatDim, 2);
    if (repeat.size() == 2 && repeat[0] >= 1 && repeat[0] <= 16 && repeat[1] >= 1 &&
        repeat[1] <= 16) {
        black.rows = int(repeat[0]);
        black.columns = int(repeat[1]);
    }
    const auto needed = std::size_t(black.rows) * std::size_t(black.columns) * std::size_t(samples);
    auto levels = raw.numbers(blackLevel, 1024);
    if (levels.size() == 1) levels.resize(needed, levels[0]);
    if (levels.size() != needed || !areFinite(levels)) return std::nullopt;
    black.table = floats(levels);
    const auto rows = raw.numbers(blackLevelDeltaV, 1 << 16);
    const auto columns = raw.numbers(blackLevelDeltaH, 1 << 16);
    if (int(rows.size()) == active.height && areFinite(rows)) black.rowDeltas = floats(rows);
    if (int(columns.size()) == active.width && areFinite(columns))
        black.columnDeltas = floats(columns);
    return black;
}

std::optional<ColourFilters> readFilters(const TiffDirectory& raw) {
    const auto repeat = raw.numbers(cfaRepeatPatternDim, 2);
    if (repeat.size() != 2 || repeat[0] != repeat[1]) return std::nullopt;
    if (repeat[0] != 2 && repeat[0] != 6) return std::nullopt;
    ColourFilters filters;
    filters.period = int(repeat[0]);
    const auto pattern = raw.numbers(cfaPattern, 36);
    if (pattern.size() != std::size_t(filters.period * filters.period)) return std::nullopt;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (!(pattern[i] >= 0 && pattern[i] <= 2)) return std::nullopt;
        filters.channels[i] = std::uint8_t(pattern[i]);
    }
    return filters;
}

// How this very camera differs from its kind: n × n, rows times each other's channels. The
// identity where it is absent or was made for other matrices.
std::vector<double> individualCalibration(const TiffDirectory& main, std::uint16_t tag,
                                          std::size_t n) {
    auto v = main.numbers(tag, 16);
    const bool isMeant =
        main.text(cameraCalibrationSignature) == main.text(profileCalibrationSignature);
    bool isSane = v.size() == n * n && areFinite(v);
    for (std::size_t i = 0; i < n && isSane; ++i)
        isSane = v[i * n + i] > 0;
    if (isMeant && isSane) return v;
    v.assign(n * n, 0);
    for (std::size_t i = 0; i < n; ++i)
        v[i * n + i] = 1;
    return v;
}

std::optional<Calibration> readCalibration(const TiffDirectory& main, std::uint16_t matrixTag,
                                           std::uint16_t calibrationTag, std::uint16_t forwardTag,
                                           std::uint16_t lightTag) {
    const auto m = main.numbers(matrixTag, 12);
    if ((m.size() != 9 && m.size() != 12) || !areFinite(m)) return std::nullopt;
    const std::size_t n = m.size() / 3;
    auto individual = individualCalibration(main, calibrationTag, n);
    const auto balance = main.numbers(analogBalance, 4);
    if (balance.size() == n && areFinite(balance)) {
        for (std::size_t i = 0; i < n * n; ++i) {
            if (balance[i / n] > 0) individual[i] *= balance[i / n];
        }
    }
    Calibration calibration;
    for (std::size_t c = 0; c < n; ++c) {
        for (std::size_t i = 0; i < 3; ++i) {
            for (std::size_t k = 0; k < n; ++k)
                calibration.cameraFromXyz[c][i] += individual[c * n + k] * m[k * 3 + i];
        }
    }
    const auto f = main.numbers(forwardTag, 12);
    if (f.size() == 3 * n && areFinite(f)) {
        FromCamera forward{};
        for (std::size_t i = 0; i < 3; ++i) {
            for (std::size_t c = 0; c < n; ++c)
                forward[i][c] = f[i * n + c];
        }
        calibration.forward = forward;
    }
    calibration.kelvin =
        temperatureOfLightSource(integer(main, lightTag, 0)).value_or(calibration.kelvin);
    return calibration;
}

CameraMatrices readColour(const TiffDirectory& main) {
    CameraMatrices colour;
    colour.channels = main.numbers(colorMatrix1, 12).size() == 12 ? 4 : 3;
    colour.first = readCalibration(main, colorMatrix1, cameraCalibration1, forwardMatrix1,
                                   calibrationIlluminant1);
    colour.second = readCalibration(main, colorMatrix2, cameraCalibration2, forwardMatrix2,
                                    calibrationIlluminant2);
    const auto neutral = main.numbers(asShotNeutral, 4);
    if (neutral.size() == std::size_t(colour.channels)) {
        ChannelValues values{1, 1, 1, 1};
        std::copy(neutral.begin(), neutral.end(), values.begin());
        colour.neutral = values;
    }
    const auto xy = main.numbers(asShotWhiteXy, 2);
    if (xy.size() == 2 && xy[0] > 0.1 && xy[0] < 0.7 && xy[1] > 0.1 && xy[1] < 0.7) {
        colour.whiteXy = Chromaticity{xy[0], xy[1]};
    }
    return colour;
}

bool lieOutside(const TiffDirectory& raw, std::uint16_t offsetsTag, std::uint16_t countsTag,
                std::uint64_t fileBytes) {
    const auto offsets = raw.numbers(offsetsTag, kMaximumParts),
               counts = raw.numbers(countsTag, kMaximumParts);
    for (std::size_t i = 0; i < offsets.size(); ++i) {
        const double count = i < counts.size() ? counts[i] : 1;
        if (!(offsets[i] + count <= double(fileBytes))) return true;
    }
    return false;
}

TileGrid readTiles(const TiffDirectory& raw) {
    TileGrid grid;
    grid.width = integer(raw, tileWidth, 0);
    grid.height = integer(raw, tileLength, 0);
    const auto read = [&](std::uint16_t tag) {
        std::vector<std::uint64_t> places;
        for (const double v : raw.numbers(tag, kMaximumParts))
            places.push_back(v >= 0 && v < 1e15 ? std::uint64_t(v) : 0);
        return places;
    };
    if (raw.has(tileOffsets)) {
        grid.offsets = read(tileOffsets);
        grid.counts = read(tileByteCounts);
        return grid;
    }
    const int width = integer(raw, imageWidth, 0), height = integer(raw, imageLength, 0);
    grid.width = width;
    grid.height = std::min(integer(raw, rowsPerStrip, height), height);
    grid.offsets = read(stripOffsets);
    grid.counts = read(stripByteCounts);
    return grid;
}

void readPacking(const TiffDirectory& raw, DngTags& tags) {
    tags.compression = integer(raw, compression, 1);
    const auto bits = raw.numbers(bitsPerSample, kMaximumChannels);
    const bool areEqual =
        std::adjacent_find(bits.begin(), bits.end(), std::not_equal_to<>()) == bits.end();
    tags.bitsPerSample = areEqual ? integer(raw, bitsPerSample, 0) : 0;
    tags.isInteger = integer(raw, sampleFormat, 1) == 1 && integer(raw, predictor, 1) == 1 &&
                     (tags.samplesPerPixel == 1 || integer(raw, planarConfiguration, 1) == 1);
    tags.isBigEndian = raw.isBigEndian();
    tags.tiles = readTiles(raw);
}

std::vector<std::uint16_t> readLinearisation(const TiffDirectory& raw) {
    std::vector<std::uint16_t> table;
    for (const double v : raw.numbers(linearizationTable, 1 << 16))
        table.push_back(v >= 0 && v <= 65535 ? std::uint16_t(v) : std::uint16_t(65535));
    return table;
}

std::optional<double> stops(const TiffDirectory& main, std::uint16_t tag) {
    const auto value = main.number(tag);
    return value && std::abs(*value) <= 10 ? value : std::nullopt;
}

// Only their ratio counts: the picture keeps all its pixels and is made longer in one direction.
void readScale(const TiffDirectory& raw, DngTags& tags) {
    const auto v = raw.numbers(defaultScale, 2); // across, down
    if (v.size() != 2 || !(v[0] > 0) || !(v[1] > 0)) return;
    const auto [row, column] = squaringScales(v[0] / v[1]);
    tags.rowScale = row;
    tags.columnScale = column;
}

bool isPicture(const TiffDirectory& directory, int width, int height) {
    const int photometric = integer(directory, photometricInterpretation, 0);
    return (photometric == kMosaic || photometric == kLinear) &&
           integer(directory, imageWidth, 0) == width &&
           integer(directory, imageLength, 0) == height;
}

} // namespace

std::optional<DngTags> readDngTags(const TiffFile& file, int width, int height,
                                   std::uint64_t fileBytes) {
    const auto& all = file.directories();
    if (all.empty() || !all.front().has(dngVersion)) return std::nullopt;
    const TiffDirectory* raw = nullptr;
    for (const TiffDirectory& directory : all) {
        if (!isPicture(directory, width, height)) continue;
        if (!raw || integer(directory, newSubfileType, 0) == 0) raw = &directory;
        if (integer(directory, newSubfileType, 0) == 0) break;
    }
    if (!raw) return std::nullopt;

    DngTags tags;
    tags.width = width;
    tags.height = height;
    tags.samplesPerPixel = std::clamp(integer(*raw, samplesPerPixel, 1), 1, kMaximumChannels);
    tags.photometric = integer(*raw, photometricInterpretation, 0);
    readPacking(*raw, tags);
    tags.linearisation = readLinearisation(*raw);
    tags.activeArea = readActiveArea(*raw, width, height);
    tags.defaultCrop = readDefaultCrop(*raw);
    const SensorRect active = tags.activeArea.value_or(SensorRect{0, 0, width, height});
    tags.black = readBlack(*raw, tags.samplesPerPixel, active);
    tags.white = raw->numbers(whiteLevel, kMaximumChannels);
    if (!areFinite(tags.white)) tags.white.clear();
    tags.filters = readFilters(*raw);
    // The first list speaks of all that is stored, the others of the active area.
    addOpcodes(raw->bytes(opcodeList1, kMaximumOpcodeBytes), tags.corrections);
    for (BadPoint& point : tags.corrections.badPoints) {
        point.row -= active.top;
        point.column -= active.left;
    }
    for (const std::uint16_t list : {opcodeList2, opcodeList3})
        addOpcodes(raw->bytes(list, kMaximumOpcodeBytes), tags.corrections);
    tags.colour = readColour(all.front());
    const int turn = integer(all.front(), orientation, 1);
    tags.orientation = turn >= 1 && turn <= 8 ? turn : 1;
    const auto given = stops(all.front(), baselineExposure),
               further = stops(all.front(), baselineExposureOffset);
    if (given || further) tags.baselineExposureStops = given.value_or(0) + further.value_or(0);
    readScale(*raw, tags);
    tags.reachesPastEnd = lieOutside(*raw, stripOffsets, stripByteCounts, fileBytes) ||
                          lieOutside(*raw, tileOffsets, tileByteCounts, fileBytes);
    return tags;
}

} // namespace kelvaro
