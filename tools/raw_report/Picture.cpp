#include "Picture.h"

#include "platform/codecs/CodecImageFiles.h"
#include "platform/system/PosixFileSystem.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <numbers>

namespace kelvaro::report {

namespace {

constexpr double kPi = std::numbers::pi;

double degrees(double radians) {
    return radians * 180 / kPi;
}

double hueOf(double a, double b) {
    if (a == 0 && b == 0) return 0;
    const double h = degrees(std::atan2(b, a));
    return h < 0 ? h + 360 : h;
}

} // namespace

void stop(const std::string& message) {
    std::fprintf(stderr, "%s\n", message.c_str());
    std::exit(1);
}

Lab labOf(const std::array<double, 3>& v) {
    const double x = (0.4123908 * v[0] + 0.3575843 * v[1] + 0.1804808 * v[2]) / 0.9504559;
    const double y = 0.2126390 * v[0] + 0.7151687 * v[1] + 0.0721923 * v[2];
    const double z = (0.0193308 * v[0] + 0.1191948 * v[1] + 0.9505322 * v[2]) / 1.0890578;
    const auto f = [](double t) {
        return t > 216.0 / 24389 ? std::cbrt(t) : (24389.0 / 27 * t + 16) / 116;
    };
    return {116 * f(y) - 16, 500 * (f(x) - f(y)), 200 * (f(y) - f(z))};
}

double chroma(const Lab& colour) {
    return std::hypot(colour[1], colour[2]);
}

double difference(const Lab& p, const Lab& q) {
    const double meanChroma = (chroma(p) + chroma(q)) / 2, c7 = std::pow(meanChroma, 7);
    constexpr double k25 = 6103515625.0;
    const double g = 0.5 * (1 - std::sqrt(c7 / (c7 + k25)));
    const double a1 = (1 + g) * p[1], a2 = (1 + g) * q[1];
    const double c1 = std::hypot(a1, p[2]), c2 = std::hypot(a2, q[2]);
    const double h1 = hueOf(a1, p[2]), h2 = hueOf(a2, q[2]);
    const bool isGrey = c1 * c2 == 0;
    double dh = isGrey ? 0 : h2 - h1;
    if (dh > 180) dh -= 360;
    if (dh < -180) dh += 360;
    const double dL = q[0] - p[0], dC = c2 - c1;
    const double dH = 2 * std::sqrt(c1 * c2) * std::sin(dh / 2 * kPi / 180);
    double h = h1 + h2;
    if (!isGrey) h = std::abs(h1 - h2) <= 180 ? h / 2 : h < 360 ? (h + 360) / 2 : (h - 360) / 2;
    const auto cosine = [](double d) { return std::cos(d * kPi / 180); };
    const double t = 1 - 0.17 * cosine(h - 30) + 0.24 * cosine(2 * h) + 0.32 * cosine(3 * h + 6) -
                     0.20 * cosine(4 * h - 63);
    const double l50 = std::pow((p[0] + q[0]) / 2 - 50, 2), c = (c1 + c2) / 2;
    const double sL = 1 + 0.015 * l50 / std::sqrt(20 + l50), sC = 1 + 0.045 * c,
                 sH = 1 + 0.015 * c * t;
    const double turn = 30 * std::exp(-std::pow((h - 275) / 25, 2));
    const double rT =
        -2 * std::sqrt(std::pow(c, 7) / (std::pow(c, 7) + k25)) * std::sin(2 * turn * kPi / 180);
    const double x = dL / sL, y = dC / sC, z = dH / sH;
    return std::sqrt(std::max(0.0, x * x + y * y + z * z + rT * y * z));
}

double displayed(double linear) {
    const double v = std::clamp(linear, 0.0, 1.0);
    return v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1 / 2.4) - 0.055;
}

double lightOf(double v) {
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}

Lab Picture::lab(int x, int y) const {
    const std::uint8_t* p = at(x, y);
    return labOf({lightOf(p[0] / 255.0), lightOf(p[1] / 255.0), lightOf(p[2] / 255.0)});
}

void Picture::place(const Picture& other, int left, int top) {
    const int width = std::min(other.size.width, size.width - left);
    for (int y = 0; y < std::min(other.size.height, size.height - top) && width > 0; ++y)
        std::memcpy(at(left, top + y), other.at(0, y), std::size_t(width) * 3);
}

Picture Picture::part(int left, int top, PixelSize pixels) const {
    left = std::clamp(left, 0, std::max(0, size.width - pixels.width));
    top = std::clamp(top, 0, std::max(0, size.height - pixels.height));
    Picture cut({std::min(pixels.width, size.width), std::min(pixels.height, size.height)});
    for (int y = 0; y < cut.size.height; ++y)
        std::memcpy(cut.at(0, y), at(left, top + y), std::size_t(cut.size.width) * 3);
    return cut;
}

Picture renderedPart(const Image& image, const PixelRect& rect, Renderer& renderer) {
    const auto pixels = renderer.renderBitmap(image, rect, {});
    if (!pixels) stop(pixels.error().message);
    Picture picture(pixels->size);
    for (int y = 0; y < picture.size.height; ++y)
        std::memcpy(picture.at(0, y), pixels->row<std::uint8_t>(y),
                    std::size_t(picture.size.width) * 3);
    return picture;
}

Picture rendered(const Image& image, Renderer& renderer) {
    return renderedPart(image, image.extent(), renderer);
}

void save(const Picture& picture, const std::filesystem::path& png) {
    Bitmap pixels(picture.size, 3, SampleType::u8);
    std::memcpy(pixels.samples.get(), picture.rgb.data(), picture.rgb.size());
    PosixFileSystem files;
    auto file = files.create(png);
    if (!file) stop(file.error().message);
    EncodeSettings settings;
    settings.format = FileFormat::png;
    if (const auto done = makeImageWriter()->encode(pixels, settings, **file); !done)
        stop(done.error().message);
    if (const auto done = (*file)->commit(); !done) stop(done.error().message);
}

} // namespace kelvaro::report
