// Landscapes that are drawn, not photographed: sky with sun and clouds, ranges of hills, water or
// meadow, a few coloured things and a deep shadow. Scene-linear, Rec. 709, from about 0.002 in the
// shadows to 20 in the sun. Points are measured from the top-left, in picture heights.
#pragma once

#include "samples/Colour.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace kelvaro::samples {

enum class SceneKind {
    lakeAtNoon,
    eveningHills,
    autumnFarm,
    winterPeaks,
    balloonMorning,
    blueHour
};
inline constexpr int kSceneKinds = 6;

struct Palette {
    Colour zenith, horizon;        // of the sky
    Colour sun;                    // light of the sun on a surface that faces it
    Colour ambient;                // light of the sky on everything
    Colour meadow, forest, rock;   // reflectances
    double sunX = 0.7, sunY = 0.2; // as shares of width and height
    double cloudCover = 0.5;       // 0 clear … 1 overcast
    double snowLine = -1;          // height share above which far hills are white; negative: none
    bool water = false;
};

class Scene {
public:
    Scene(SceneKind kind, std::uint32_t seed, double aspect);

    // The light that reaches the camera from (x, y); `pixel` is one pixel's side, for soft edges.
    Colour at(double x, double y, double pixel) const;

    static std::string title(SceneKind kind);

private:
    struct Balloon {
        double x, y, radius;
        Colour first, second;
    };

    Colour sky(double x, double y, bool withClouds) const;
    Colour surface(Colour reflectance, double lit) const;
    Colour beyondShore(double x, double y, double pixel) const;
    Colour hill(int layer, double x, double y) const;
    double ridge(int layer, double x) const;
    double drawnRidge(int layer, double x) const;
    double sunlight(double x, double depth) const;
    Colour waterAt(double x, double y, double pixel) const;
    Colour meadowAt(double x, double y, double pixel) const;
    void drawHouse(Colour& colour, double x, double y, double pixel) const;
    void drawTree(Colour& colour, double x, double y, double pixel) const;
    void drawBoat(Colour& colour, double x, double y, double pixel) const;
    void drawBalloons(Colour& colour, double x, double y, double pixel) const;

    SceneKind kind_;
    std::uint32_t seed_;
    double aspect_;
    Palette palette_;
    double horizon_; // height of the far shore
    double shore_;   // where water ends and the near ground begins
    double houseX_, treeX_, boatX_;
    static constexpr int kHillLayers = 4;
    std::array<std::vector<float>, kHillLayers> ridges_; // heights of the outlines, far to near
    std::vector<Balloon> balloons_;
};

} // namespace kelvaro::samples
