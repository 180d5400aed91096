#include "editor/EditFingerprint.h"

#include "recipe/RecipeCoding.h"

#include <zlib.h>

namespace kelvaro {

std::uint32_t crc32Of(std::string_view bytes) {
    return static_cast<std::uint32_t>(
        ::crc32_z(0, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
}

std::uint64_t editFingerprint(const Adjustments& edit) {
    const auto text = encodedText(edit);
    if (!text) return 0; // no recipe that could be stored
    return std::uint64_t(text->size()) << 32 | crc32Of(*text);
}

} // namespace kelvaro
