#include "samples/Scene.h"

#include "samples/Noise.h"
#include "samples/Palettes.h"

#include <cmath>

namespace kelvaro::samples {
namespace {

// The hills' outlines are worked out once, at this many points for each picture height.
constexpr int kRidgeSteps = 4000;
constexpr double kRidgeMargin = 0.2;

// Paints `paint` over `colour` with the given coverage.
void over(Colour& colour, Colour paint, double coverage) {
    if (coverage > 0) colour = mix(colour, paint, unit(coverage));
}

// How much of a pixel lies on the positive side of a distance.
double inside(double distance, double pixel) {
    return unit(distance / pixel + 0.5);
}

// Coverage of the box |x| < halfWidth, top < y < bottom.
double box(double x, double y, double halfWidth, double top, double bottom, double pixel) {
    return inside(halfWidth - std::abs(x), pixel) * inside(std::min(y - top, bottom - y), pixel);
}

} // namespace

Scene::Scene(SceneKind kind, std::uint32_t seed, double aspect)
    : kind_(kind),
      seed_(seed * 7919u + std::uint32_t(kind) * 104729u),
      aspect_(aspect),
      palette_(paletteOf(kind)) {
    const auto random = [&](int n) { return hashedUnit(n, 17, seed_); };
    palette_.sunX = unit(palette_.sunX + 0.24 * (random(0) - 0.5));
    horizon_ = 0.50 + 0.08 * random(1);
    shore_ = palette_.water ? horizon_ + 0.22 + 0.08 * random(2) : horizon_;
    houseX_ = aspect_ * (0.18 + 0.2 * random(3));
    treeX_ = aspect_ * (0.78 + 0.12 * random(4));
    boatX_ = aspect_ * (0.45 + 0.2 * random(5));
    for (int layer = 0; layer < kHillLayers; ++layer)
        for (int i = 0; i <= int((aspect_ + 2 * kRidgeMargin) * kRidgeSteps) + 1; ++i)
            ridges_[std::size_t(layer)].push_back(
                float(drawnRidge(layer, double(i) / kRidgeSteps - kRidgeMargin)));
    if (kind != SceneKind::balloonMorning) return;
    const Colour paints[] = {{0.75, 0.03, 0.03}, {0.9, 0.55, 0.02}, {0.03, 0.2, 0.65},
                             {0.85, 0.85, 0.8},  {0.02, 0.4, 0.2},  {0.45, 0.05, 0.4}};
    for (int i = 0; i < 5; ++i) {
        balloons_.push_back({aspect_ * (0.1 + 0.8 * random(20 + i)), 0.1 + 0.3 * random(30 + i),
                             0.025 + 0.06 * random(40 + i) * random(40 + i), paints[i],
                             paints[(i + 2 + int(3 * random(50 + i))) % 6]});
    }
}

std::string Scene::title(SceneKind kind) {
    static const char* const titles[kSceneKinds] = {"Lake at noon",    "Evening hills",
                                                    "Farm in autumn",  "Winter peaks",
                                                    "Balloon morning", "Blue hour"};
    return titles[int(kind)];
}

Colour Scene::surface(Colour reflectance, double lit) const {
    return reflectance * (palette_.ambient + palette_.sun * lit);
}

Colour Scene::sky(double x, double y, bool withClouds) const {
    const double height = unit((horizon_ - y) / horizon_);
    Colour colour = mix(palette_.horizon, palette_.zenith, std::pow(height, 0.55));
    const double dx = x - palette_.sunX * aspect_, dy = y - palette_.sunY;
    const double distance = std::sqrt(dx * dx + dy * dy);
    const Colour glow =
        palette_.sun * (0.5 * std::exp(-distance * 5) + 1.2 * std::exp(-distance * 28));
    colour = colour + glow + palette_.sun * (14 * smoothStep(0.020, 0.014, distance));
    if (!withClouds || palette_.cloudCover <= 0) return colour;

    // Clouds lie on a plane overhead, so they crowd together towards the horizon.
    const double depth = 0.35 / (height + 0.10);
    const double u = (x - 0.5 * aspect_) * depth * 1.7, v = depth * 2.6;
    const double warp = valueNoise(u * 0.8, v * 0.8, seed_ + 3);
    const double body = fractalNoise(u + warp, v, 5, seed_ + 1);
    const double from = 0.68 - 0.34 * palette_.cloudCover;
    const double density = smoothStep(from, from + 0.2, body) * smoothStep(0.0, 0.12, height);
    if (density <= 0) return colour;
    // Thicker towards the sun means that this side lies in its own shadow.
    const double towards =
        fractalNoise(u + warp - 0.12 * dx / (distance + 0.1), v + 0.10, 4, seed_ + 1);
    const double lit =
        unit(0.75 - 2.4 * (towards - body)) * (1 - 0.55 * smoothStep(from, 0.95, body));
    const Colour cloud =
        palette_.ambient * 0.95 + palette_.sun * (0.80 * lit) + glow * (0.8 * (1 - density));
    return mix(colour, cloud, 0.94 * density);
}

// Clouds throw shadows on the land: 1 in full sun, less below a cloud.
double Scene::sunlight(double x, double depth) const {
    const double body = fractalNoise(x * 1.3 + 5, depth * 5, 2, seed_ + 40);
    return 1 - 0.75 * unit(2 * palette_.cloudCover) * smoothStep(0.5, 0.62, body);
}

double Scene::ridge(int layer, double x) const {
    const auto& table = ridges_[std::size_t(layer)];
    const double at =
        std::clamp((x + kRidgeMargin) * kRidgeSteps, 0.0, double(table.size()) - 1.001);
    const auto index = std::size_t(at);
    const double share = at - double(index);
    return double(table[index]) * (1 - share) + double(table[index + 1]) * share;
}

double Scene::drawnRidge(int layer, double x) const {
    const double nearness = layer / double(kHillLayers - 1);
    const bool rugged = palette_.snowLine >= 0 || layer == 0;
    const double u = x * (rugged ? 1.5 : 1.0) * (1 + 0.5 * nearness) + 13.7 * layer;
    const double form = rugged ? ridgedNoise(u, 0.5, 6, seed_ + 100 + std::uint32_t(layer))
                               : fractalNoise(u, 0.5, 5, seed_ + 100 + std::uint32_t(layer));
    const double height = (palette_.snowLine >= 0 ? 0.38 : 0.24) * (1 - 0.72 * nearness);
    // The nearest one is wooded to its top.
    const double wood = layer < kHillLayers - 1
                            ? 0
                            : 0.022 * std::pow(valueNoise(x * 70, 3, seed_ + 9), 2) *
                                  (0.4 + valueNoise(x * 300, 8, seed_ + 10));
    return horizon_ - height * form - 0.012 * (1 - nearness) - wood;
}

Colour Scene::hill(int layer, double x, double y) const {
    const double nearness = layer / double(kHillLayers - 1);
    const double scale = 9 + 10 * nearness;
    const auto noiseSeed = seed_ + 200 + std::uint32_t(layer);
    const double here = fractalNoise(x * scale, y * scale * 1.6, 4, noiseSeed);
    const double side = palette_.sunX * aspect_ > x ? 1 : -1;
    const double beside =
        fractalNoise(x * scale + side * 0.25, y * scale * 1.6 - 0.2, 3, noiseSeed);
    const double lit = unit(0.45 + 2.6 * (here - beside));

    Colour reflectance =
        mix(palette_.rock, palette_.forest, smoothStep(0.1, 0.7, nearness + 0.5 * here));
    if (palette_.snowLine >= 0) {
        const double line = horizon_ * (1 - palette_.snowLine) + 0.10 * (here - 0.5);
        reflectance = mix(reflectance, {0.85, 0.87, 0.9}, smoothStep(line + 0.02, line - 0.02, y));
    }
    const double haze = 0.62 * std::pow(1 - nearness, 1.5) + 0.04;
    return mix(surface(reflectance, lit * sunlight(x, layer)), palette_.horizon, haze);
}

// Everything above the far shore: sky, balloons and the hills before them.
Colour Scene::beyondShore(double x, double y, double pixel) const {
    // The first hill that hides the rest is drawn alone, except on its soft edge.
    double tops[kHillLayers];
    int first = -1;
    for (int layer = 0; layer < kHillLayers; ++layer) {
        tops[layer] = ridge(layer, x);
        if (y - tops[layer] > pixel) first = layer;
    }
    Colour colour;
    if (first < 0) {
        colour = sky(x, y, true);
        drawBalloons(colour, x, y, pixel);
    } else {
        colour = hill(first, x, y);
    }
    for (int layer = first + 1; layer < kHillLayers; ++layer) {
        const double coverage = inside(y - tops[layer], pixel);
        if (coverage > 0) over(colour, hill(layer, x, y), coverage);
    }
    return colour;
}

Colour Scene::waterAt(double x, double y, double pixel) const {
    const double depth = (y - horizon_) / (shore_ - horizon_ + 1e-9);
    const double wave =
        fractalNoise(x * 14 / (0.25 + depth), 60 * std::sqrt(depth + 0.02), 3, seed_ + 60);
    const double ripple = (wave - 0.5) * (0.006 + 0.05 * depth);
    const double mirrored = 2 * horizon_ - y + ripple;
    const Colour reflection =
        beyondShore(x + 0.4 * ripple, std::min(mirrored, horizon_), pixel * 2);
    const double fresnel = 0.75 - 0.35 * depth;
    const Colour deep = surface({0.010, 0.035, 0.045}, 0.5);
    Colour colour = mix(deep, reflection, fresnel);
    // Glints under the sun.
    const double across = std::abs(x - palette_.sunX * aspect_);
    const double glint = smoothStep(0.70, 0.80, wave) * smoothStep(0.30, 0.0, across);
    return colour + palette_.sun * (1.6 * glint);
}

Colour Scene::meadowAt(double x, double y, double pixel) const {
    const double depth = (y - horizon_) / (1 - horizon_) + 0.06; // 0 far … 1 near
    const double u = (x - 0.5 * aspect_) / depth, v = 1 / depth;
    const double patches = fractalNoise(u * 1.4, v * 3, 3, seed_ + 70);
    const double blades = fractalNoise(u * 40, v * 90, 3, seed_ + 71);
    const double rows = kind_ == SceneKind::autumnFarm
                            ? 0.5 + 0.5 * std::sin(u * 24 + 1.2 * patches) * unit(3 * depth)
                            : 0.5;
    Colour reflectance =
        mix(palette_.meadow, palette_.forest * 1.4, smoothStep(0.35, 0.75, patches));
    reflectance = reflectance * (0.45 + 0.8 * blades + 0.35 * (rows - 0.5));
    // Flowers, where there is a warm meadow.
    if (palette_.snowLine < 0 && kind_ != SceneKind::blueHour) {
        const double cell = 16;
        const auto cx = std::int32_t(std::floor(u * cell)),
                   cy = std::int32_t(std::floor(v * cell * 4));
        const double pick = hashedUnit(cx, cy, seed_ + 80);
        if (pick > 0.80 && patches > 0.45) {
            const double fx = u * cell - cx - 0.3 - 0.4 * hashedUnit(cx, cy, seed_ + 81);
            const double fy = v * cell * 4 - cy - 0.5;
            const double size = 0.13 * (0.6 + pick);
            const Colour bloom = pick > 0.95   ? Colour{0.75, 0.05, 0.03}
                                 : pick > 0.88 ? Colour{0.85, 0.65, 0.02}
                                               : Colour{0.80, 0.80, 0.85};
            over(reflectance, bloom,
                 inside(size - std::sqrt(fx * fx + 0.3 * fy * fy), pixel * cell / depth));
        }
    }
    const double lit = (0.55 + 0.4 * (blades - 0.5)) * sunlight(u * 0.5, v * 0.35);
    return mix(surface(reflectance, lit), palette_.horizon, 0.35 * smoothStep(0.3, 0.0, depth));
}

void Scene::drawHouse(Colour& colour, double x, double y, double pixel) const {
    const double ground = shore_ + 0.06, size = 0.09;
    const double dx = x - houseX_, up = ground - y;
    if (std::abs(dx) > 2.4 * size || up > 2 * size || up < -0.4 * size) return;
    // Its shadow on the grass, away from the sun.
    const double away = palette_.sunX * aspect_ > houseX_ ? -1 : 1;
    const double across = (dx - away * size * 0.8) / (1.5 * size), along = (up + 0.012) / 0.022;
    over(colour, colour * palette_.ambient, 0.85 * smoothStep(1.0, 0.5, std::hypot(across, along)));
    const double wall = box(dx, up, size, 0, size, pixel);
    const bool sunny = (dx > -0.35 * size) == (away < 0);
    const double planks = 0.9 + 0.2 * valueNoise(up * 220, dx * 4, seed_ + 85);
    over(colour, surface(Colour{0.48, 0.07, 0.05} * planks, sunny ? 0.8 : 0.02), wall);
    const double slope = std::min(1.14 * size - std::abs(dx) - 0.62 * (up - 0.96 * size),
                                  1.5 * size - up + 0.004 * valueNoise(dx * 90, 1, seed_ + 86));
    const double roof = inside(slope, pixel) * inside(up - 0.96 * size, pixel);
    over(colour, surface({0.09, 0.08, 0.085}, sunny ? 0.75 : 0.1), roof);
    for (int i = 0; i < 3; ++i) {
        const double wx = dx - (i - 1) * 0.55 * size;
        over(colour, surface({0.8, 0.8, 0.76}, sunny ? 0.8 : 0.05),
             box(wx, up, 0.15 * size, 0.36 * size, 0.74 * size, pixel));
        const Colour pane =
            kind_ == SceneKind::blueHour ? Colour{1.6, 0.75, 0.2} : palette_.zenith * 0.25;
        over(colour, pane, box(wx, up, 0.11 * size, 0.41 * size, 0.69 * size, pixel));
    }
    // The open door: nearly black.
    over(colour, palette_.ambient * 0.006,
         box(dx + 0.80 * size, up, 0.09 * size, 0, 0.5 * size, pixel));
}

void Scene::drawTree(Colour& colour, double x, double y, double pixel) const {
    const double ground = 0.93, radius = 0.20;
    const double dx = x - treeX_, up = ground - y;
    if (std::abs(dx) > 1.7 * radius || up < -0.1 || up > 3.4 * radius) return;
    if (up < 0.03)
        over(colour, colour * palette_.ambient * 0.35,
             0.9 * smoothStep(1.0, 0.6, std::hypot(dx / (1.3 * radius), (up + 0.01) / 0.045)));
    const double bark = 0.5 + valueNoise(dx * 160, up * 22, seed_ + 91);
    const double trunk = 0.016 + 0.02 * std::exp(-up * 22) - 0.01 * up;
    if (up > 0 && up < 1.6 * radius)
        over(colour,
             surface(Colour{0.09, 0.06, 0.04} * bark,
                     0.25 + 10 * dx * (palette_.sunX > 0.5 ? 1 : -1)),
             inside(trunk - std::abs(dx), pixel));
    const double cx = dx / radius, cy = (up - 1.9 * radius) / (1.15 * radius);
    const double leaves = fractalNoise(x * 24, y * 24, 4, seed_ + 92);
    const double fine = fractalNoise(x * 95, y * 95, 3, seed_ + 93);
    const double reach =
        1 - std::sqrt(cx * cx + cy * cy) + 0.8 * (leaves - 0.5) + 0.5 * (fine - 0.5);
    const double crown = smoothStep(0.02, 0.02 + 10 * pixel, reach);
    if (crown <= 0) return;
    const double towardsSun = (palette_.sunX * aspect_ > treeX_ ? 1 : -1) * cx * 0.5 + cy * 0.6;
    const double lit = unit(0.32 + 0.45 * towardsSun + 1.9 * (fine - 0.5) + 1.8 * (leaves - 0.5));
    const Colour leaf = kind_ == SceneKind::autumnFarm
                            ? mix(Colour{0.50, 0.12, 0.015}, {0.55, 0.33, 0.02}, leaves)
                            : mix(palette_.forest, palette_.meadow, leaves);
    over(colour, surface(leaf * (0.2 + 1.3 * fine), lit * lit), crown);
}

void Scene::drawBoat(Colour& colour, double x, double y, double pixel) const {
    const double ground = horizon_ + 0.55 * (shore_ - horizon_), size = 0.05;
    const double dx = (x - boatX_) / size, up = (ground - y) / size, p = pixel / size;
    if (std::abs(dx) > 2 || up > 3.4 || up < -2.2) return;
    const auto sail = [&](double h) {
        return inside(std::min(dx + 0.05, 1.05 - dx - 0.42 * h), p) *
               inside(std::min(h - 0.5, 2.9 - h), p);
    };
    const auto hull = [&](double h) {
        return inside(std::min(1.25 - std::abs(dx) - 0.5 * (0.4 - h), std::min(h, 0.4 - h)), p);
    };
    const double wobble = 0.25 * (valueNoise(x * 60, y * 260, seed_ + 95) - 0.5);
    over(colour, surface({0.5, 0.5, 0.45}, 0.6), 0.45 * sail(-up + wobble));
    over(colour, surface({0.45, 0.1, 0.02}, 0.5), 0.6 * hull(-up + wobble));
    over(colour, surface({0.86, 0.85, 0.8}, 0.95), sail(up));
    over(colour, surface({0.70, 0.10, 0.02}, 0.9), sail(up) * inside(0.18 - std::abs(up - 1.4), p));
    over(colour, surface({0.05, 0.13, 0.42}, 0.8), hull(up));
}

void Scene::drawBalloons(Colour& colour, double x, double y, double pixel) const {
    for (const Balloon& balloon : balloons_) {
        const double dx = (x - balloon.x) / balloon.radius, dy = (y - balloon.y) / balloon.radius;
        const double p = pixel / balloon.radius;
        if (std::abs(dx) > 1.1 || dy < -1.1 || dy > 1.9) continue;
        const double width = dy < 0.2 ? 1.0 : 1.0 - 0.55 * (dy - 0.2) * (dy - 0.2);
        const double round =
            1 - std::sqrt(dx * dx / (width * width) + dy * dy * (dy > 0 ? 0.72 : 1));
        const double gore = std::asin(std::clamp(dx / width, -1.0, 1.0)) * 3.2;
        const Colour paint = std::sin(gore * 2.2) > 0 ? balloon.first : balloon.second;
        const double side = palette_.sunX * aspect_ > balloon.x ? dx : -dx;
        over(colour, surface(paint, unit(0.5 + 0.55 * side - 0.25 * dy)), inside(round, p));
        over(colour, surface({0.18, 0.10, 0.05}, 0.4), box(dx, dy, 0.11, 1.45, 1.65, p));
    }
}

Colour Scene::at(double x, double y, double pixel) const {
    Colour colour;
    const double edge = shore_ + 0.02 * (fractalNoise(x * 6, 1, 4, seed_ + 50) - 0.5);
    if (y < horizon_) {
        colour = beyondShore(x, y, pixel);
    } else if (palette_.water && y < edge - pixel) {
        colour = waterAt(x, y, pixel);
    } else {
        colour = meadowAt(x, y, pixel);
        if (palette_.water)
            over(colour, surface({0.05, 0.04, 0.03}, 0.2), smoothStep(0.012, 0.0, y - edge));
    }
    if (palette_.water) drawBoat(colour, x, y, pixel);
    if (kind_ != SceneKind::winterPeaks) drawHouse(colour, x, y, pixel);
    drawTree(colour, x, y, pixel);
    return colour;
}

} // namespace kelvaro::samples
