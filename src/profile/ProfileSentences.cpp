#include "profile/ProfileSentences.h"

#include "profile/Shares.h"

#include <fmt/format.h>
#include <string_view>

namespace kelvaro {
namespace {

constexpr std::int64_t fewestRecords = 10; // that carry a setting before it counts as usual

std::string_view depthPhrase(double aperture) {
    if (aperture <= 2.8) return "shallow focus";
    return aperture < 8 ? "balanced depth of field" : "deep focus";
}

// Hands hold still for about a thirtieth; people stop moving at about a five-hundredth.
std::string_view shutterPhrase(double seconds) {
    if (seconds <= 1.0 / 500) return "a fast shutter that freezes the moment";
    return seconds < 1.0 / 30 ? "everyday shutter speeds" : "slow shutter speeds";
}

std::string_view isoPhrase(int iso) {
    if (iso <= 400) return "low ISO in good light";
    return iso < 1600 ? "moderate ISO" : "high ISO when the light fades";
}

// "a", "a and b", "a, b and c".
std::string joined(const std::vector<std::string_view>& phrases) {
    std::string text;
    for (std::size_t i = 0; i < phrases.size(); ++i) {
        if (i > 0) text += i + 1 == phrases.size() ? " and " : ", ";
        text += phrases[i];
    }
    return text;
}

// The second is used at least nine times for ten of the first, and others hardly count.
bool shareAlmostEqually(const std::vector<NamedCount>& used, std::int64_t all) {
    if (used.size() < 2) return false;
    const std::int64_t first = used[0].count, second = used[1].count;
    return 10 * second >= 9 * first && Share{first + second, all}.isAtLeast(75);
}

} // namespace

std::optional<std::string> signature(const ShotSummary& summary) {
    std::vector<std::string_view> phrases;
    if (summary.withAperture >= fewestRecords)
        phrases.push_back(depthPhrase(*summary.typicalAperture));
    if (summary.withShutter >= fewestRecords)
        phrases.push_back(shutterPhrase(*summary.typicalShutter));
    if (summary.withIso >= fewestRecords) phrases.push_back(isoPhrase(*summary.typicalIso));
    if (phrases.empty()) return std::nullopt;
    return joined(phrases);
}

std::optional<std::string> cameraSentence(const ShotSummary& summary) {
    const auto& cameras = summary.cameras;
    if (cameras.empty()) return std::nullopt;
    const NamedCount& first = cameras.front();
    if (cameras.size() == 1) return "Every photo from your " + first.name;
    if (shareAlmostEqually(cameras, summary.withCamera)) {
        return fmt::format("Your {} and {} share the work almost equally.", first.name,
                           cameras[1].name);
    }
    return fmt::format("Your {} leads, with {} of every 10 photos.", first.name,
                       Share{first.count, summary.withCamera}.ofTen());
}

std::optional<std::string> lensSentence(const ShotSummary& summary) {
    const auto& lenses = summary.lenses;
    if (lenses.empty()) return std::nullopt;
    const NamedCount& first = lenses.front();
    if (lenses.size() == 1) return "One lens for everything: your " + first.name;
    return fmt::format("Your {} stays on the camera most: {} of every 10 photos.", first.name,
                       Share{first.count, summary.withLens}.ofTen());
}

} // namespace kelvaro
