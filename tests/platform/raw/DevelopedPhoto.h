// Opens and develops a file for a test.
#pragma once

#include "platform/raw/CameraRawEngine.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace kelvaro::test {

inline std::filesystem::path photos() {
    const char* given = std::getenv("KELVARO_PHOTOS");
    return given ? std::filesystem::path(given)
                 : std::filesystem::path(KELVARO_SOURCE_DIR).parent_path() / "shared/photos";
}

inline Raster developed(const std::filesystem::path& path, const RawDevelopSettings& settings = {},
                        RawProperties* properties = nullptr) {
    CameraRawEngine engine;
    auto file = engine.open(path);
    EXPECT_TRUE(file) << (file ? "" : file.error().message);
    if (!file) return {};
    if (properties) *properties = (*file)->properties();
    auto source = (*file)->develop(settings, nullptr);
    EXPECT_TRUE(source) << (source ? "" : source.error().message);
    if (!source) return {};
    Raster raster((*source)->extent(), false);
    (*source)->read(raster.view());
    return raster;
}

} // namespace kelvaro::test
