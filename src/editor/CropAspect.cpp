#include "editor/CropAspect.h"

#include <algorithm>

namespace kelvaro {
namespace {

struct Entry {
    Aspect aspect;
    std::string_view title;
    double larger = 0, smaller = 0; // 0 where the title names no numbers
};

constexpr std::array entries{Entry{Aspect::free, "Free"},
                             Entry{Aspect::original, "Original"},
                             Entry{Aspect::square, "Square", 1, 1},
                             Entry{Aspect::fourToFive, "4 : 5", 5, 4},
                             Entry{Aspect::fiveToSeven, "5 : 7", 7, 5},
                             Entry{Aspect::threeToTwo, "3 : 2", 3, 2},
                             Entry{Aspect::sixteenToNine, "16 : 9", 16, 9}};

const Entry& entryOf(Aspect aspect) {
    return entries[static_cast<std::size_t>(aspect)];
}

} // namespace

std::string_view title(Aspect aspect) {
    return entryOf(aspect).title;
}

std::optional<double> aspectRatio(Aspect aspect, bool portrait, PixelSize photo) {
    if (aspect == Aspect::free) return std::nullopt;
    const Entry& entry = entryOf(aspect);
    const double ratio = aspect == Aspect::original
                             ? double(std::max(photo.width, 1)) / std::max(photo.height, 1)
                             : entry.larger / entry.smaller;
    return portrait ? 1 / ratio : ratio;
}

std::string_view orientationTip(bool portrait) {
    return portrait ? "Portrait (click for landscape)" : "Landscape (click for portrait)";
}

} // namespace kelvaro
