// Owning handles for libheif objects.
#pragma once

#include <libheif/heif.h>
#include <memory>

namespace kelvaro {

struct HeifDeleter {
    void operator()(heif_context* p) const noexcept { heif_context_free(p); }
    void operator()(heif_image_handle* p) const noexcept { heif_image_handle_release(p); }
    void operator()(heif_image* p) const noexcept { heif_image_release(p); }
    void operator()(heif_encoder* p) const noexcept { heif_encoder_release(p); }
    void operator()(heif_decoding_options* p) const noexcept { heif_decoding_options_free(p); }
    void operator()(heif_encoding_options* p) const noexcept { heif_encoding_options_free(p); }
    void operator()(heif_color_profile_nclx* p) const noexcept { heif_nclx_color_profile_free(p); }
};
template<class T>
using HeifPointer = std::unique_ptr<T, HeifDeleter>;

} // namespace kelvaro
