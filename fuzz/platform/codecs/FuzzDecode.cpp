// Any bytes as a picture file: all formats, told apart by content as in the program.
#include "platform/codecs/CodecImageFiles.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kelvaro;
    static const auto reader = makeImageReader();
    const DecodeLimits limits{4'000'000, std::int64_t(64) << 20};
    const auto picture =
        reader->decode({reinterpret_cast<const std::byte*>(data), size}, "fuzz", limits);
    if (!picture) {
        if (picture.error().message.empty()) std::abort();
        return 0;
    }
    // What is answered must be whole: every sample is read, and tables fit the samples.
    const Bitmap& pixels = picture->pixels;
    std::size_t sum = 0;
    for (std::size_t i = 0; i < pixels.bytes(); ++i)
        sum += std::to_integer<std::size_t>(pixels.samples[i]);
    const std::size_t entries = pixels.type == SampleType::u8 ? 256 : 65536;
    for (const auto& tone : picture->colour.tone)
        if (pixels.type == SampleType::f32 ? tone != nullptr : !tone || tone->size() != entries)
            std::abort();
    return sum == SIZE_MAX ? 1 : 0;
}
