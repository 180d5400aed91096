// System error numbers as failures with one sentence that names the file.
#pragma once

#include "base/Result.h"

#include <filesystem>

namespace kelvaro {

// What was being done when the system refused.
enum class FileAction { reading, listing, writing, creatingFolder, removing };

Failure systemFailure(FileAction action, const std::filesystem::path& path, int errorNumber);

// The last part of a path, for messages; the whole path where it has none.
std::string nameForMessage(const std::filesystem::path& path);

} // namespace kelvaro
