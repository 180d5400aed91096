// Decoding and encoding of generated pictures, in megapixels per second ("MP/s") and bytes per
// pixel of the file. The picture has gradients, edges and noise of the strength of a good camera.
#include "platform/codecs/CodecImageFiles.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

namespace {

using namespace kelvaro;

class MemoryFile final : public PendingFile {
public:
    Result<void> writeAt(std::int64_t offset, std::span<const std::byte> bytes) override {
        const auto end = std::size_t(offset) + bytes.size();
        if (end > content.size()) content.resize(end);
        std::memcpy(content.data() + offset, bytes.data(), bytes.size());
        return {};
    }
    Result<std::size_t> readAt(std::int64_t offset, std::span<std::byte> bytes) override {
        const auto from = std::min(std::size_t(offset), content.size());
        const auto count = std::min(bytes.size(), content.size() - from);
        std::memcpy(bytes.data(), content.data() + from, count);
        return count;
    }
    std::int64_t size() const override { return std::int64_t(content.size()); }
    Result<void> commit() override { return {}; }
    std::vector<std::byte> content;
};

constexpr PixelSize kSmall{3000, 2000}, kLarge{6000, 4000};

Bitmap picture(PixelSize size, SampleType type) {
    Bitmap bitmap(size, 3, type);
    std::minstd_rand random(7);
    std::uniform_real_distribution<float> noise(-0.008F, 0.008F);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            for (int c = 0; c < 3; ++c) {
                const float u = float(x) / float(size.width), v = float(y) / float(size.height);
                float value = 0.45F + 0.3F * std::sin(9 * u + float(c)) * std::cos(7 * v);
                if ((x / 97 + y / 61) % 5 == 0) value *= 0.6F;
                value = std::clamp(value + noise(random), 0.0F, 1.0F);
                const int at = 3 * x + c;
                if (type == SampleType::u8)
                    bitmap.row<std::uint8_t>(y)[at] = std::uint8_t(value * 255 + 0.5F);
                else if (type == SampleType::u16)
                    bitmap.row<std::uint16_t>(y)[at] = std::uint16_t(value * 65535 + 0.5F);
                else
                    bitmap.row<float>(y)[at] = value;
            }
    return bitmap;
}

// Floats are written as the program writes them: linear.
OutputSpace spaceOf(SampleType type) {
    return type == SampleType::f32 ? OutputSpace::linearRec709 : OutputSpace::sRGB;
}

void report(benchmark::State& state, PixelSize size, std::size_t fileBytes) {
    const double pixels = double(size.width) * size.height;
    state.counters["MP/s"] =
        benchmark::Counter(pixels / 1e6, benchmark::Counter::kIsIterationInvariantRate);
    state.counters["bytes/px"] = double(fileBytes) / pixels;
}

void encode(benchmark::State& state, PixelSize size, SampleType type, FileFormat format,
            double quality) {
    const Bitmap pixels = picture(size, type);
    const auto writer = makeImageWriter();
    MemoryFile file;
    for (auto _ : state) {
        file.content.clear();
        const auto written = writer->encode(pixels, {format, quality, spaceOf(type)}, file);
        if (!written) state.SkipWithError(written.error().message.c_str());
    }
    report(state, size, file.content.size());
}

void decode(benchmark::State& state, PixelSize size, SampleType type, FileFormat format) {
    MemoryFile file;
    const auto written =
        makeImageWriter()->encode(picture(size, type), {format, 0.85, spaceOf(type)}, file);
    if (!written) state.SkipWithError(written.error().message.c_str());
    const auto reader = makeImageReader();
    for (auto _ : state) {
        auto decoded = reader->decode(file.content, "bench");
        if (!decoded) state.SkipWithError(decoded.error().message.c_str());
        benchmark::DoNotOptimize(decoded);
    }
    report(state, size, file.content.size());
}

#define KELVARO_CODEC_BENCH(name, ...)                                                             \
    BENCHMARK_CAPTURE(name, __VA_ARGS__)->Unit(benchmark::kMillisecond)->UseRealTime()

KELVARO_CODEC_BENCH(encode, jpeg_6mp_q85, kSmall, SampleType::u8, FileFormat::jpeg, 0.85);
KELVARO_CODEC_BENCH(encode, jpeg_24mp_q85, kLarge, SampleType::u8, FileFormat::jpeg, 0.85);
KELVARO_CODEC_BENCH(encode, jpeg_24mp_q95, kLarge, SampleType::u8, FileFormat::jpeg, 0.95);
KELVARO_CODEC_BENCH(encode, png8_6mp, kSmall, SampleType::u8, FileFormat::png, 1);
KELVARO_CODEC_BENCH(encode, png16_6mp, kSmall, SampleType::u16, FileFormat::png, 1);
KELVARO_CODEC_BENCH(encode, tiff8_6mp, kSmall, SampleType::u8, FileFormat::tiff, 1);
KELVARO_CODEC_BENCH(encode, tiff16_6mp, kSmall, SampleType::u16, FileFormat::tiff, 1);
KELVARO_CODEC_BENCH(encode, tiff32_6mp, kSmall, SampleType::f32, FileFormat::tiff, 1);
KELVARO_CODEC_BENCH(encode, heic_6mp_q85, kSmall, SampleType::u8, FileFormat::heic, 0.85);
KELVARO_CODEC_BENCH(decode, jpeg_6mp, kSmall, SampleType::u8, FileFormat::jpeg);
KELVARO_CODEC_BENCH(decode, jpeg_24mp, kLarge, SampleType::u8, FileFormat::jpeg);
KELVARO_CODEC_BENCH(decode, png8_6mp, kSmall, SampleType::u8, FileFormat::png);
KELVARO_CODEC_BENCH(decode, png16_6mp, kSmall, SampleType::u16, FileFormat::png);
KELVARO_CODEC_BENCH(decode, tiff8_6mp, kSmall, SampleType::u8, FileFormat::tiff);
KELVARO_CODEC_BENCH(decode, tiff16_6mp, kSmall, SampleType::u16, FileFormat::tiff);
KELVARO_CODEC_BENCH(decode, tiff32_6mp, kSmall, SampleType::f32, FileFormat::tiff);
KELVARO_CODEC_BENCH(decode, heic_6mp, kSmall, SampleType::u8, FileFormat::heic);

} // namespace

BENCHMARK_MAIN();
