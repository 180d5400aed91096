// Writing a recipe without losing what somebody else wrote meanwhile: another version that stands
// in the sidecar is kept beside it under a name of its own. Blocking; on the queue of the sidecars.
#pragma once

#include "recipe/Sidecar.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace kelvaro {

struct SaveOutcome {
    std::string keptBeside; // the file that holds the other version; empty where there was none
};

// Writes `edit`. The sidecar is expected to hold one of the recipes with the `known` fingerprints
// (of the unedited recipe where there is no sidecar), or `edit` itself; anything else that can be
// read is kept first. A sidecar that can't be read fails, as in `Sidecar::save`.
Result<SaveOutcome> saveKeepingOther(FileSystem& files, Sidecar& sidecar,
                                     const std::filesystem::path& photo, const Adjustments& edit,
                                     std::span<const std::uint64_t> known, double editedAt);

// Writes `edit` beside the photo's sidecar, which stays as it is; returns the file's name, such as
// "IMG_0042.CR3.json.other-1". Reading a folder's edits passes over such files.
Result<std::string> keepBeside(FileSystem& files, Sidecar& sidecar,
                               const std::filesystem::path& photo, const Adjustments& edit);

// "IMG_0042.CR3 was also edited elsewhere. That version is kept as “….json.other-1”."
std::string keptBesideNotice(const std::filesystem::path& photo, const std::string& keptBeside);

} // namespace kelvaro
