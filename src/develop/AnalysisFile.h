// The stored form of a photo's tone measurement: a short header, the values, the analysis images as
// 32-bit float RGBA, and a checksum over all of it. In the machine's byte order; a file from
// elsewhere is not readable and gets made again. Pure functions, any thread.
#pragma once

#include "develop/ToneLevels.h"
#include "platform/Raster.h"

#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvaro {

enum class AnalysisImage : std::uint32_t { small = 1, guide, sceneGuide, haze };

struct StoredAnalysis {
    std::optional<ToneLevels> levels;
    bool hazeSought = false;
    std::array<double, 3> airlight{}; // where there is a haze image
    std::map<AnalysisImage, Raster> images;
};

// 512 × 512 pixels in four images are 16 MiB; anything above the limit is not ours.
inline constexpr std::int64_t kLargestAnalysisFile = std::int64_t(20) << 20;

// `key` says which photo it is; `version` which analysis made it ("TWAnalysisVersion").
std::vector<std::byte> encodedAnalysis(const StoredAnalysis& analysis, std::string_view version,
                                       std::string_view key);

// None for a file of another version or photo, a damaged or foreign one, one whose images have
// another layout than 128 bits per pixel in 32-bit components, and one with values that are not
// finite.
std::optional<StoredAnalysis> decodedAnalysis(std::span<const std::byte> file,
                                              std::string_view version, std::string_view key);

// A 64-bit checksum (FNV-1a over words, with the length). Finds damage, not intent.
std::uint64_t checksum(std::span<const std::byte> bytes);

} // namespace kelvaro
