#include "samples/Sensor.h"

#include "samples/Noise.h"

#include <cmath>
#include <numbers>

namespace kelvaro::samples {
namespace {

constexpr Matrix3 kRec709ToXyz = {{{0.4123908, 0.3575843, 0.1804808},
                                   {0.2126390, 0.7151687, 0.0721923},
                                   {0.0193308, 0.1191948, 0.9505322}}};
// Bradford's cone response and its inverse.
constexpr Matrix3 kToCone = {
    {{0.8951, 0.2664, -0.1614}, {-0.7502, 1.7135, 0.0367}, {0.0389, -0.0685, 1.0296}}};
constexpr Matrix3 kFromCone = {{{0.9869929, -0.1470543, 0.1599627},
                                {0.4323053, 0.5183603, 0.0492912},
                                {-0.0085287, 0.0400428, 0.9684867}}};

Triple product(const Matrix3& m, const Triple& v) {
    Triple result;
    for (int i = 0; i < 3; ++i)
        result[i] = m[i][0] * v[0] + m[i][1] * v[1] + m[i][2] * v[2];
    return result;
}

Matrix3 product(const Matrix3& a, const Matrix3& b) {
    Matrix3 result;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            result[i][j] = a[i][0] * b[0][j] + a[i][1] * b[1][j] + a[i][2] * b[2][j];
    return result;
}

// XYZ with Y = 1 of the CIE daylight of a colour temperature (CIE 15:2004, eq. 3.3 and 3.4).
Triple daylight(double kelvin) {
    const double t = 1000 / kelvin;
    const double x = kelvin <= 7000 ? ((-4.6070 * t + 2.9678) * t + 0.09911) * t + 0.244063
                                    : ((-2.0064 * t + 1.9018) * t + 0.24748) * t + 0.237040;
    const double y = (-3.000 * x + 2.870) * x - 0.275;
    return {x / y, 1, (1 - x - y) / y};
}

// Between the two calibrations, linear in the reciprocal temperature (DNG 1.4, "Mapping Camera
// Color Space to CIE XYZ Space").
Matrix3 calibration(const SensorModel& sensor, double kelvin) {
    if (!sensor.twoIlluminants) return sensor.underDaylight;
    const double warm = 1 / 2856.0, cold = 1 / 6504.0;
    const double share = unit((1 / kelvin - cold) / (warm - cold));
    Matrix3 result;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            result[i][j] =
                share * sensor.underTungsten[i][j] + (1 - share) * sensor.underDaylight[i][j];
    return result;
}

// From the scene's Rec. 709 values to camera values under daylight of that temperature.
Matrix3 sceneToCamera(const SensorModel& sensor, double kelvin) {
    const Triple from = product(kToCone, product(kRec709ToXyz, Triple{1, 1, 1}));
    const Triple to = product(kToCone, daylight(kelvin));
    Matrix3 scaled = kToCone;
    for (int i = 0; i < 3; ++i)
        for (double& value : scaled[i])
            value *= to[i] / from[i];
    const Matrix3 adaptation = product(kFromCone, scaled);
    return product(calibration(sensor, kelvin), product(adaptation, kRec709ToXyz));
}

// Normally distributed, mean 0, deviation 1 (Box and Muller 1958).
double gaussian(int x, int y, std::uint32_t seed) {
    const double a = hashedUnit(x, y, seed) + 1e-12, b = hashedUnit(x, y, seed + 1);
    return std::sqrt(-2 * std::log(std::min(a, 1.0))) * std::cos(2 * std::numbers::pi * b);
}

} // namespace

SensorModel sensorOf(const PhotoRecord& record) {
    SensorModel sensor;
    sensor.underDaylight = {
        {{0.780, -0.220, -0.070}, {-0.420, 1.220, 0.220}, {-0.080, 0.180, 0.620}}};
    sensor.underTungsten = {
        {{0.840, -0.250, -0.050}, {-0.470, 1.290, 0.190}, {-0.110, 0.230, 0.560}}};
    sensor.twoIlluminants = record.camera.cropFactor < 1.2;
    if (sensor.twoIlluminants) {
        sensor.black = 512, sensor.white = 15871;
        sensor.baselineStops = 1.0;
        sensor.maskedLeft = 32, sensor.maskedTop = 16;
    } else {
        sensor.underDaylight[0] = {0.720, -0.180, -0.080};
        sensor.black = 256, sensor.white = 4095;
        sensor.baselineStops = 0.7;
        sensor.maskedLeft = 16, sensor.maskedTop = 8;
        sensor.fullWell = 32000;
    }
    return sensor;
}

Mosaic expose(const Picture& light, const SensorModel& sensor, const PhotoRecord& record,
              double temperature) {
    const Matrix3 toCamera = sceneToCamera(sensor, temperature);
    const Triple white = product(toCamera, Triple{1, 1, 1});
    const double gain = std::exp2(record.renderedStops - sensor.baselineStops) / white[1];
    const double electrons = sensor.fullWell * 100 / record.iso, readNoise = 3;

    Mosaic mosaic;
    mosaic.size = {light.size.width + sensor.maskedLeft, light.size.height + sensor.maskedTop};
    mosaic.neutral = {white[0] / white[1], 1, white[2] / white[1]};
    mosaic.samples.resize(std::size_t(mosaic.size.width) * std::size_t(mosaic.size.height));
    std::size_t at = 0;
    for (int y = 0; y < mosaic.size.height; ++y)
        for (int x = 0; x < mosaic.size.width; ++x) {
            const int px = x - sensor.maskedLeft, py = y - sensor.maskedTop;
            double signal = 0;
            if (px >= 0 && py >= 0) {
                const float* rgb = light.pixel(px, py);
                const auto& row = toCamera[(y & 1) + (x & 1)]; // R G over G B
                signal = std::max(0.0, gain * (row[0] * double(rgb[0]) + row[1] * double(rgb[1]) +
                                               row[2] * double(rgb[2])));
            }
            const double deviation =
                std::sqrt(signal * electrons + readNoise * readNoise) / electrons;
            signal += deviation * gaussian(x, y, record.seed * 31 + 7);
            const double value = sensor.black + signal * (sensor.white - sensor.black) + 0.5;
            mosaic.samples[at++] = std::uint16_t(std::clamp(value, 0.0, double(sensor.white)));
        }
    return mosaic;
}

} // namespace kelvaro::samples
