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

// At the head of a file that takes an earlier one's place: what that one holds counts no more.
std::string beginningRecord();

// What is still to be saved, one record a photo, the last of each. `files` are those of one
// session, oldest first.
std::vector<JournalRecord> unsavedRecords(std::span<const std::string> files, RandomSource& random);
std::vector<JournalRecord> unsavedRecords(const std::string& file, RandomSource& random);

// "…/UUID.journal" is followed by "…/UUID_0002.journal" and so on; sorted by name they are in
// order.
std::filesystem::path nextJournalPath(const std::filesystem::path& path);
// What the names of a session's files have in common.
std::string_view journalSession(std::string_view name);

} // namespace kelvaro
