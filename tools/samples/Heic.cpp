#include "samples/Heic.h"

#include <libheif/heif.h>

#include <cstring>
#include <memory>
#include <stdexcept>

namespace kelvaro::samples {
namespace {

template<class T, class F>
std::unique_ptr<T, F> owned(T* pointer, F release) {
    return {pointer, release};
}

} // namespace

void writeHeic(const std::filesystem::path& file, const Bitmap& pixels, int orientation,
               std::span<const std::uint8_t> exif) {
    const auto check = [&](heif_error error) {
        if (error.code != heif_error_Ok)
            throw std::runtime_error("\"" + file.filename().string() +
                                     "\" cannot be written: " + error.message + ".");
    };
    const auto context = owned(heif_context_alloc(), heif_context_free);
    heif_encoder* foundEncoder = nullptr;
    check(heif_context_get_encoder_for_format(context.get(), heif_compression_HEVC, &foundEncoder));
    const auto encoder = owned(foundEncoder, heif_encoder_release);
    check(heif_encoder_set_lossy_quality(encoder.get(), 75));
    // Quick rather than small: samples are drawn while somebody waits.
    check(heif_encoder_set_parameter_string(encoder.get(), "preset", "ultrafast"));

    heif_image* made = nullptr;
    check(heif_image_create(pixels.size.width, pixels.size.height, heif_colorspace_RGB,
                            heif_chroma_interleaved_RGB, &made));
    const auto image = owned(made, heif_image_release);
    check(heif_image_add_plane(image.get(), heif_channel_interleaved, pixels.size.width,
                               pixels.size.height, 8));
    int stride = 0;
    std::uint8_t* plane = heif_image_get_plane(image.get(), heif_channel_interleaved, &stride);
    for (int y = 0; y < pixels.size.height; ++y)
        std::memcpy(plane + std::ptrdiff_t(stride) * y, pixels.row<std::uint8_t>(y),
                    pixels.rowBytes());

    const auto options = owned(heif_encoding_options_alloc(), heif_encoding_options_free);
    options->image_orientation = static_cast<heif_orientation>(orientation);
    heif_image_handle* foundHandle = nullptr;
    check(heif_context_encode_image(context.get(), image.get(), encoder.get(), options.get(),
                                    &foundHandle));
    const auto handle = owned(foundHandle, heif_image_handle_release);
    check(
        heif_context_add_exif_metadata(context.get(), handle.get(), exif.data(), int(exif.size())));
    check(heif_context_write_to_file(context.get(), file.c_str()));
}

} // namespace kelvaro::samples
