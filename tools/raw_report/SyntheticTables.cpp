#include "SyntheticTables.h"

#include "Picture.h"
#include "platform/codecs/CodecImageFiles.h"
#include "platform/raw/CameraRawEngine.h"
#include "platform/raw/Demosaic.h"
#include "platform/raw/Development.h"
#include "platform/raw/XTransDemosaic.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>

namespace kelvaro::report {

namespace {

constexpr const char* kXTrans = "GGRGGBGGBGGRBRGRBGGGBGGRGGRGGBRBGBRG";

// Interleaved linear light.
struct Light {
    std::string name;
    int width = 0, height = 0;
    std::vector<float> rgb;
    const float* at(int x, int y) const { return rgb.data() + (y * width + x) * 3; }
};

Light loaded(const std::filesystem::path& path) {
    const auto picture = makeImageReader()->decode(path);
    if (!picture) stop(picture.error().message);
    Light light{path.stem().string(), picture->pixels.size.width, picture->pixels.size.height, {}};
    light.rgb.resize(std::size_t(light.width) * std::size_t(light.height) * 3);
    const bool isWide = picture->pixels.type == SampleType::u16;
    for (int y = 0; y < light.height; ++y) {
        for (int x = 0; x < light.width; ++x) {
            for (std::size_t c = 0; c < 3; ++c) {
                const auto i = std::size_t(x * picture->pixels.channels) + c;
                const unsigned v = isWide ? picture->pixels.row<std::uint16_t>(y)[i]
                                          : picture->pixels.row<std::uint8_t>(y)[i];
                light.rgb[std::size_t(y * light.width + x) * 3 + c] =
                    isWide ? float(v / 65535.0) : float(lightOf(v / 255.0));
            }
        }
    }
    return light;
}

std::vector<Light> lights(const std::filesystem::path& folder) {
    std::vector<Light> all;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.path().extension() == ".png") all.push_back(loaded(entry.path()));
    std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    return all;
}

// A scene behind a filter pattern, and all that belongs to it.
struct Sensor {
    SensorImage image;
    std::vector<std::uint16_t> samples;
};

// 14 bits above a black level of 512; the scene times `gain`, cut off where the sensor saturates.
// `balance` is what makes white equal, its smallest 1.
Sensor sensorOf(const Light& light, const ChannelValues& balance, double gain, bool isXTrans) {
    constexpr double kBlack = 512, kWhite = 16383;
    Sensor sensor;
    SensorImage& s = sensor.image;
    s.layout = isXTrans ? SensorLayout::xTrans : SensorLayout::bayer;
    s.width = light.width, s.height = light.height, s.stride = light.width;
    s.active = s.crop = {0, 0, light.width, light.height};
    s.filters.period = isXTrans ? 6 : 2;
    if (isXTrans) {
        for (std::size_t i = 0; i < 36; ++i)
            s.filters.channels[i] = kXTrans[i] == 'R' ? 0 : kXTrans[i] == 'G' ? 1 : 2;
    } else {
        s.filters.channels = {0, 1, 1, 2};
    }
    s.black.table = {float(kBlack)};
    s.white.fill(float(kWhite));
    s.colour.balance = balance;
    for (std::size_t c = 0; c < 3; ++c) {
        s.colour.toWorking[c][c] = 1;
        s.saturation[c] = float(balance[c]);
    }
    for (int y = 0; y < light.height; ++y) {
        for (int x = 0; x < light.width; ++x) {
            const auto c = std::size_t(s.filters.at(y, x));
            const double v = std::min(1.0, double(light.at(x, y)[c]) * gain / balance[c]);
            sensor.samples.push_back(std::uint16_t(kBlack + v * (kWhite - kBlack) + 0.5));
        }
    }
    s.integers = sensor.samples.data();
    return sensor;
}

Raster developed(const Sensor& sensor) {
    RawDevelopSettings settings;
    settings.captureOnly = true;
    auto raster = develop(sensor.image, settings, nullptr);
    if (!raster) stop("cancelled");
    return std::move(*raster);
}

double psnr(const Raster& got, const Light& want, bool isRounded) {
    double error = 0, count = 0;
    for (int y = 4; y < want.height - 4; ++y) {
        for (int x = 4; x < want.width - 4; ++x) {
            for (int c = 0; c < 3; ++c, ++count) {
                double a = displayed(double(got.row(c, y)[x])),
                       b = displayed(double(want.at(x, y)[c]));
                if (isRounded)
                    a = std::floor(a * 255 + 0.5) / 255, b = std::floor(b * 255 + 0.5) / 255;
                error += (a - b) * (a - b);
            }
        }
    }
    return -10 * std::log10(error / count);
}

} // namespace

void printDemosaic(const std::filesystem::path& kodak) {
    std::printf("Demosaic: PSNR in dB\n%-20s %8s %8s\n", "picture", "2 x 2", "6 x 6");
    double sums[2] = {}, count = 0;
    for (const Light& light : lights(kodak)) {
        double values[2];
        for (const bool isXTrans : {false, true}) {
            values[isXTrans] =
                psnr(developed(sensorOf(light, {1, 1, 1, 1}, 1, isXTrans)), light, true);
            sums[isXTrans] += values[isXTrans];
        }
        ++count;
        std::printf("%-20s %8.2f %8.2f\n", light.name.c_str(), values[0], values[1]);
    }
    std::printf("%-20s %8.2f %8.2f\n\n", "mean", sums[0] / count, sums[1] / count);
}

void printTruth(const std::filesystem::path& raw) {
    std::printf("Known scenes, noise included: PSNR in dB\n");
    CameraRawEngine engine;
    for (const auto& entry : std::filesystem::directory_iterator(raw)) {
        const std::string name = entry.path().filename();
        const std::size_t end = name.find(".truth.png");
        if (end == std::string::npos) continue;
        const std::filesystem::path stem = raw / name.substr(0, end);
        const auto facts = nlohmann::json::parse(std::ifstream(stem.string() + ".json"));
        Light truth = loaded(entry.path());
        for (float& v : truth.rgb)
            v *= facts["saturation_linear"].get<float>();
        auto file = engine.open(stem.string() + ".dng");
        if (!file) stop(file.error().message);
        for (const bool isCapture : {true, false}) {
            const auto source = (*file)->develop({0, isCapture, 1}, nullptr);
            if (!source) stop(source.error().message);
            Raster raster((*source)->extent(), false);
            (*source)->read(raster.view());
            std::printf("%-20s %8.2f %s\n", stem.filename().c_str(), psnr(raster, truth, false),
                        isCapture ? "demosaiced only" : "with noise reduction and sharpening");
        }
    }
    std::printf("\n");
}

void printHighlights(const std::filesystem::path& kodak) {
    std::printf("Highlights: mean CIEDE2000 to the unclipped scene where a channel is clipped\n");
    std::printf("%-14s %-9s %5s %8s %8s %14s %14s\n", "scene", "light", "stops", "rebuilt",
                "clipped", "white: chroma", "its worst 1 %");
    const std::pair<const char*, ChannelValues> whites[] = {{"daylight", {2.1, 1, 1.6, 1}},
                                                            {"tungsten", {1.3, 1, 2.7, 1}}};
    int better = 0, scenes = 0;
    double worstChroma = 0;
    for (const Light& light : lights(kodak)) {
        // Its brightest half percent stands for the brightest light of the scene.
        std::vector<float> values = light.rgb;
        const auto top = values.begin() + std::ptrdiff_t(values.size() * 995 / 1000);
        std::nth_element(values.begin(), top, values.end());
        for (const auto& [name, balance] : whites) {
            for (const int stops : {1, 2}) {
                const double gain = std::exp2(stops) / double(*top), shown = std::exp2(-stops);
                const Raster raster = developed(sensorOf(light, balance, gain, false));
                double rebuilt = 0, clipped = 0, count = 0;
                std::vector<double> whiteChroma;
                const auto isFull = [&, &white = balance](int x, int y) {
                    const float* p = light.at(x, y);
                    for (std::size_t c = 0; c < 3; ++c)
                        if (double(p[c]) * gain <= white[c]) return false;
                    return true;
                };
                // Inside a clipped area, not on its edge.
                const auto isFullArea = [&](int x, int y) {
                    for (int dy = -2; dy <= 2; ++dy)
                        for (int dx = -2; dx <= 2; ++dx)
                            if (!isFull(x + dx, y + dy)) return false;
                    return true;
                };
                for (int y = 4; y < light.height - 4; ++y) {
                    for (int x = 4; x < light.width - 4; ++x) {
                        const float* p = light.at(x, y);
                        std::array<double, 3> truth{}, ours{}, plain{};
                        int full = 0;
                        for (std::size_t c = 0; c < 3; ++c) {
                            truth[c] = double(p[c]) * gain * shown;
                            ours[c] = double(raster.row(int(c), y)[x]) * shown;
                            plain[c] = std::min(1.0, double(p[c]) * gain) * shown;
                            full += double(p[c]) * gain > balance[c];
                        }
                        if (full == 3 && isFullArea(x, y))
                            whiteChroma.push_back(chroma(labOf(ours)));
                        if (full == 0) continue;
                        const Lab want = labOf(truth);
                        rebuilt += difference(want, labOf(ours));
                        clipped += difference(want, labOf(plain));
                        ++count;
                    }
                }
                if (count == 0) continue;
                ++scenes;
                better += rebuilt < clipped;
                double mean = 0, worst = 0;
                if (!whiteChroma.empty()) {
                    std::sort(whiteChroma.begin(), whiteChroma.end());
                    for (const double c : whiteChroma)
                        mean += c / double(whiteChroma.size());
                    worst = whiteChroma[whiteChroma.size() * 99 / 100];
                }
                worstChroma = std::max(worstChroma, worst);
                std::printf("%-14s %-9s %5d %8.2f %8.2f %14.2f %14.2f%s\n", light.name.c_str(),
                            name, stops, rebuilt / count, clipped / count, mean, worst,
                            rebuilt < clipped ? "" : "   worse");
            }
        }
    }
    std::printf(
        "%d of %d scenes are nearer (%.0f %%); fully clipped areas have a chroma of at most "
        "%.2f\n\n",
        better, scenes, 100.0 * better / std::max(1, scenes), worstChroma);
}

} // namespace kelvaro::report
