// Badges that tell how somebody shoots, each with one line of evidence.
#pragma once

#include "profile/ShotSummary.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kelvaro {

struct StyleTag {
    std::string title;
    std::string reason;  // the line of evidence
    double strength = 0; // 0 … 1: how far past its threshold, as a part of the way that there is

    bool operator==(const StyleTag&) const = default;
};

// The page shows so many at most.
inline constexpr std::size_t kMostStyleTags = 8;

// The tags that the period earns, in the fixed order of their rules; none for fewer than 10
// records. `edits` counts the photos that were edited in the period.
std::vector<StyleTag> styleTags(const ShotSummary& summary, std::int64_t edits);

// The most telling first, equal ones in the order given, and no more than `most`.
std::vector<StyleTag> strongest(std::vector<StyleTag> tags, std::size_t most = kMostStyleTags);

} // namespace kelvaro
