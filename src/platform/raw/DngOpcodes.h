// The corrections that a DNG's opcode lists ask for and a correct picture needs (DNG 1.6, chapter
// 7): GainMap, FixVignetteRadial, FixBadPixelsConstant, FixBadPixelsList, WarpRectilinear, its
// second form and WarpFisheye. Counts and sizes are checked against the bytes.
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
    int row = 0, column = 0; // in the active area; others are not looked at
};

struct Gains {
    std::vector<GainMap> maps;
    std::vector<RadialGain> radial;
    bool isEmpty() const { return maps.empty() && radial.empty(); }
};

// How far from the centre a ray is found, for one channel: as a factor, the polynomial of the
// radius (of its angle, for a fisheye), which is 1 at the corner farthest from the centre.
struct WarpCurve {
    std::array<double, 15> radial{}; // by power
    std::array<double, 2> tangential{};
    double leastRadius = 0, mostRadius = 1e9; // beyond them the factor stays
};

// Where a pixel of the corrected picture lies in the one that the lens drew.
struct LensWarp {
    std::vector<WarpCurve> planes;              // one for all channels, or one each
    double centreRow = 0.5, centreColumn = 0.5; // relative to the active area
    bool isFisheye = false;
    bool isReciprocal = false; // the polynomial divides
};

struct OpcodeCorrections {
    Gains gains;                 // before the warps
    std::vector<LensWarp> warps; // one after the other
    Gains lateGains;             // of the warped picture
    std::vector<BadPoint> badPoints;
    std::vector<std::uint16_t> badConstants; // samples of these values are bad
};

// Adds what one list (tag 51008, 51009 or 51022) asks for. What is unknown or damaged is left out.
void addOpcodes(std::span<const std::byte> list, OpcodeCorrections& corrections);

} // namespace kelvaro
