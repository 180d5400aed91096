// Sentences that tell a period in words: the usual settings, and the favourite camera and lens.
#pragma once

#include "profile/ShotSummary.h"

#include <optional>
#include <string>

namespace kelvaro {

// "shallow focus, everyday shutter speeds and low ISO in good light"; settings that fewer than 10
// records carry are left out, and there is none when all are.
std::optional<std::string> signature(const ShotSummary& summary);

// None when no record names a camera, or a lens.
std::optional<std::string> cameraSentence(const ShotSummary& summary);
std::optional<std::string> lensSentence(const ShotSummary& summary);

} // namespace kelvaro
