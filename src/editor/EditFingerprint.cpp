#include "editor/EditFingerprint.h"

#include "recipe/RecipeCoding.h"

#include <array>
#include <utility>
#include <zlib.h>

namespace kelvaro {
namespace {

// Strokes by their bits: as text they would take a hundred times as long.
std::uint32_t crc32Of(const MaskComponent& shape, std::uint32_t sum) {
    const auto add = [&sum](const auto* values, std::size_t count) {
        sum = static_cast<std::uint32_t>(
            ::crc32_z(sum, reinterpret_cast<const Bytef*>(values), count * sizeof(*values)));
    };
    const double count = double(shape.strokes.size()); // else a stroke could change its shape
    add(&count, 1);
    for (const BrushStroke& stroke : shape.strokes) {
        static_assert(sizeof(MaskPoint) == 2 * sizeof(double));
        const std::array<double, 5> rest{double(stroke.points.size()), stroke.radius,
                                         stroke.feather, stroke.flow, stroke.erase ? 1.0 : 0.0};
        add(rest.data(), rest.size());
        add(stroke.points.data(), stroke.points.size());
    }
    return sum;
}

} // namespace

std::uint32_t crc32Of(std::string_view bytes) {
    return static_cast<std::uint32_t>(
        ::crc32_z(0, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
}

std::uint64_t editFingerprint(const Adjustments& edit) {
    Adjustments bare = edit;
    std::uint32_t strokes = 0;
    for (LocalMask& mask : bare.masks) {
        for (MaskComponent& shape : mask.components) {
            shape = sanitised(std::move(shape)); // as it is stored
            strokes = crc32Of(shape, strokes);
            shape.strokes.clear();
        }
    }
    const auto text = encodedText(bare);
    if (!text) return 0; // no recipe that could be stored
    return (std::uint64_t(text->size()) << 32 | crc32Of(*text)) ^ std::uint64_t(strokes) << 16;
}

} // namespace kelvaro
