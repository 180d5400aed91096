// Saves the profile's picture beside others under a name of its own, whole or not at all.
#pragma once

#include "base/Result.h"

#include <QImage>

#include <filesystem>

namespace kelvaro {

// Writes "Profile 2024-03-09.png" into the folder, or "Profile 2024-03-09 2.png" where that exists;
// returns the file. `day` is the date in the name.
Result<std::filesystem::path> saveProfilePicture(const QImage& picture,
                                                 const std::filesystem::path& folder,
                                                 const std::string& day);

} // namespace kelvaro
