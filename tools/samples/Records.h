// What the made-up photographers brought home: for each sample photo its scene, file kind, camera,
// lens, settings, time and place. All makers, models and people are invented.
#pragma once

#include "base/Geometry.h"
#include "samples/Scene.h"

#include <optional>
#include <string>
#include <vector>

namespace kelvaro::samples {

enum class FileKind { dng, jpeg, png16, tiff16, heic };

struct CameraModel {
    std::string make, model, serial;
    std::string software;
    double cropFactor = 1; // of the sensor, against 36 × 24 mm
};

struct Lens {
    std::string make, model;
    double shortest, longest;   // mm
    double widest, widestAtEnd; // f-numbers at those lengths
};

struct Place {
    double latitude, longitude, altitude; // degrees north and east, metres
};

struct PhotoRecord {
    std::string name; // of the file, without its folder
    FileKind kind = FileKind::jpeg;
    SceneKind scene = SceneKind::lakeAtNoon;
    std::uint32_t seed = 1;
    PixelSize size; // upright
    int orientation = 1;
    CameraModel camera;
    Lens lens;
    double focalLength = 35, fNumber = 8;
    int exposureNumerator = 1, exposureDenominator = 250; // seconds
    int iso = 100;
    double biasStops = 0;
    std::string taken;  // "2025:05:03 11:24:07", local time
    std::string offset; // "+02:00"
    std::string artist, description;
    std::optional<Place> place;
    double renderedStops = 0.6; // how the camera's own picture is exposed
};

// The first `count` photos: a fixed set, then the same kinds again on later days with other seeds.
std::vector<PhotoRecord> sampleRecords(int count);
inline constexpr int kStandardCount = 14;

} // namespace kelvaro::samples
