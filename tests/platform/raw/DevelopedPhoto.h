// Opens and develops a file for a test.
#pragma once

#include "places/Places.h"
#include "platform/raw/CameraRawEngine.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace kelvaro::test {

using places::photos;

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
