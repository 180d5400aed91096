// The corrections that a DNG's opcode lists ask for and a correct picture needs (DNG 1.6, chapter
// 7): GainMap, FixVignetteRadial, FixBadPixelsConstant and FixBadPixelsList. Counts and sizes are
// checked against the bytes.
#pragma once

#include "platform/raw/SensorImage.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kelvaro {

// Gains on a grid over the image, for some of its photosites.
struct GainMap {
    SensorRect area;           // in the active area
    int plane = 0, planes = 1; // channels it acts on
    int rowPitch = 1, columnPitch = 1;
    int rows = 1, columns = 1; // of the grid
    double rowSpacing = 1, columnSpacing = 1, rowOrigin = 0,
           columnOrigin = 0;  // 0 … 1 over the image
    std::vector<float> gains; // rows × columns

    // The grid at a relative row, `columns` gains; and where a relative column lies in it, 0 …
    // columns − 1. Linear between the points, edges repeat.
    void row(double row, float* out) const;
    double column(double column) const;
};

// 1 + k0 r² + … + k4 r¹⁰; r is 1 at the corner farthest from the centre.
struct RadialGain {
    std::array<double, 5> k{};
    double centreRow = 0.5, centreColumn = 0.5; // relative
};

struct BadPoint {
    int row = 0, column = 0; // in the active area
};

struct OpcodeCorrections {
    std::vector<GainMap> gainMaps;
    std::vector<RadialGain> radialGains;
    std::vector<BadPoint> badPoints;
    std::vector<std::uint16_t> badConstants; // samples of these values are bad
    bool hasGains() const { return !gainMaps.empty() || !radialGains.empty(); }
};

// Adds what one list (tag 51008, 51009 or 51022) asks for. What is unknown or damaged is left out.
void addOpcodes(std::span<const std::byte> list, OpcodeCorrections& corrections);

} // namespace kelvaro
