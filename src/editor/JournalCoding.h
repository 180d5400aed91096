// The records of a session's journal: a line with length and checksum, then one JSON object. What
// was torn by a crash, and all after it, is passed over when reading. Pure functions, any thread.
#pragma once

#include "recipe/Adjustments.h"
#include "recipe/Uuid.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvaro {

struct JournalRecord {
    std::filesystem::path photo;
    // The recipe as the user left it; none once it stands in the sidecar.
    std::optional<Adjustments> edit;
    // Fingerprints of what this session knows the sidecar to hold, or is writing into it.
    std::vector<std::uint64_t> known;
    double time = 0; // seconds since 1970-01-01 00:00 UTC
};

// Empty where the recipe can't be stored because a number in it is not finite.
std::string encodedRecord(const JournalRecord& record);

// What is still to be saved, one record a photo, the last of each.
std::vector<JournalRecord> unsavedRecords(std::string_view journal, RandomSource& random);

} // namespace kelvaro
