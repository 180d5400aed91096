#include "platform/codecs/CodecTestSupport.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace kelvaro::test {

Result<void> MemoryFile::writeAt(std::int64_t offset, std::span<const std::byte> bytes) {
    if (mustFail()) return fail(kDiskFull);
    const auto end = std::size_t(offset) + bytes.size();
    if (end > content.size()) content.resize(end);
    if (!bytes.empty()) std::memcpy(content.data() + offset, bytes.data(), bytes.size());
    return {};
}

Result<std::size_t> MemoryFile::readAt(std::int64_t offset, std::span<std::byte> bytes) {
    if (mustFail()) return fail(kDiskFull);
    const auto from = std::min(std::size_t(offset), content.size());
    const auto count = std::min(bytes.size(), content.size() - from);
    if (count > 0) std::memcpy(bytes.data(), content.data() + from, count);
    return count;
}

double patternAt(PixelSize size, int x, int y, int channel) {
    const double u = (x + 0.5) / size.width, v = (y + 0.5) / size.height;
    switch (channel) {
    case 0:
        return 0.1 + 0.8 * u;
    case 1:
        return 0.9 - 0.7 * v;
    case 2:
        return 0.2 + 0.3 * u + 0.4 * v;
    default:
        return 0.25 + 0.5 * u * v;
    }
}

Bitmap pattern(PixelSize size, int channels, SampleType type) {
    Bitmap bitmap(size, channels, type);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            for (int c = 0; c < channels; ++c) {
                const double value = patternAt(size, x, y, c);
                const int at = x * channels + c;
                if (type == SampleType::u8)
                    bitmap.row<std::uint8_t>(y)[at] = std::uint8_t(std::lround(value * 255));
                else if (type == SampleType::u16)
                    bitmap.row<std::uint16_t>(y)[at] = std::uint16_t(std::lround(value * 65535));
                else
                    bitmap.row<float>(y)[at] = float(value);
            }
    return bitmap;
}

double sampleAt(const Bitmap& bitmap, int x, int y, int channel) {
    const int at = x * bitmap.channels + channel;
    switch (bitmap.type) {
    case SampleType::u8:
        return bitmap.row<std::uint8_t>(y)[at] / 255.0;
    case SampleType::u16:
        return bitmap.row<std::uint16_t>(y)[at] / 65535.0;
    case SampleType::f32:
        break;
    }
    return double(bitmap.row<float>(y)[at]);
}

std::array<double, 3> linearAt(const DecodedBitmap& decoded, int x, int y) {
    std::array<double, 3> toned{}, out{};
    for (std::size_t c = 0; c < 3; ++c) {
        const double value = sampleAt(decoded.pixels, x, y, int(c));
        const auto& table = decoded.colour.tone[c];
        toned[c] =
            table ? double((*table)[std::size_t(std::lround(value * double(table->size() - 1)))])
                  : value;
    }
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j)
            out[i] += double(decoded.colour.toWorking[i][j]) * toned[j];
    return out;
}

double sRGBToLinear(double v) {
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}
double linearToSRGB(double v) {
    return v <= 0.0031308 ? v * 12.92 : 1.055 * std::pow(v, 1 / 2.4) - 0.055;
}

DecodedBitmap decoded(const Bytes& file, const std::string& what) {
    auto result = makeImageReader()->decode(file, what);
    EXPECT_TRUE(result) << what << ": " << (result ? "" : result.error().message);
    return result ? std::move(*result)
                  : DecodedBitmap{pattern({1, 1}, 3, SampleType::u8), {}, {}, 0};
}

Bytes encoded(const Bitmap& pixels, const EncodeSettings& settings) {
    MemoryFile file;
    const auto written = makeImageWriter()->encode(pixels, settings, file);
    EXPECT_TRUE(written) << (written ? "" : written.error().message);
    return file.content;
}

double worstDifference(const Bitmap& bitmap,
                       const std::function<double(int x, int y, int channel)>& expected) {
    double worst = 0;
    for (int y = 0; y < bitmap.size.height; ++y)
        for (int x = 0; x < bitmap.size.width; ++x)
            for (int c = 0; c < bitmap.channels; ++c)
                worst = std::max(worst, std::abs(sampleAt(bitmap, x, y, c) - expected(x, y, c)));
    return worst;
}

std::pair<int, int> storedPosition(PixelSize stored, int orientation, int x, int y) {
    const int right = stored.width - 1, bottom = stored.height - 1;
    switch (orientation) {
    case 2:
        return {right - x, y}; // first row top, first column right
    case 3:
        return {right - x, bottom - y}; // bottom, right
    case 4:
        return {x, bottom - y}; // bottom, left
    case 5:
        return {y, x}; // left, top
    case 6:
        return {y, bottom - x}; // right, top
    case 7:
        return {right - y, bottom - x}; // right, bottom
    case 8:
        return {right - y, x}; // left, bottom
    default:
        return {x, y};
    }
}

} // namespace kelvaro::test
