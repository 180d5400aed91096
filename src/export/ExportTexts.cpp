#include "export/ExportTexts.h"

#include <fmt/format.h>

namespace kelvaro {

std::string_view description(ExportError error) {
    switch (error) {
    case ExportError::unreadable:
        return "The file couldn't be read.";
    case ExportError::renderFailed:
        return "The photo couldn't be rendered.";
    case ExportError::writeFailed:
        break;
    }
    return "The file couldn't be written.";
}

namespace exportText {

std::string cannotCreate(const std::string& folderName, const std::string& reason) {
    return fmt::format("Couldn't create {}: {}", folderName, reason);
}

std::string exported(std::size_t count) {
    return count == 1 ? "1 photo exported" : fmt::format("{} photos exported", count);
}

std::string failed(std::size_t count) {
    return count == 0 ? "" : fmt::format("{} failed", count);
}

std::string stopped(std::size_t count, std::size_t total) {
    return fmt::format("Stopped after {} of {} photos", count, total);
}

} // namespace exportText

} // namespace kelvaro
