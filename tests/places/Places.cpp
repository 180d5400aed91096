#include "places/Places.h"

#include <cstdlib>

namespace kelvaro::places {

std::filesystem::path source() {
    return KELVARO_SOURCE_DIR;
}

std::filesystem::path photos() {
    const char* named = std::getenv("KELVARO_PHOTOS");
    return named ? std::filesystem::path(named) : source().parent_path() / "shared/photos";
}

} // namespace kelvaro::places
