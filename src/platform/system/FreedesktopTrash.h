// The Trash of the freedesktop standard, version 1.0: the user's own for files on the disk of their
// home, one at the top of its disk for any other file. Holds no state; any thread.
#pragma once

#include "base/Clock.h"
#include "platform/LocalCalendar.h"
#include "platform/Trash.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace kelvaro {

class FreedesktopTrash final : public Trash {
public:
    // `homeTrash` is the user's own, usually ~/.local/share/Trash; it need not exist. All outlive
    // the Trash.
    FreedesktopTrash(std::filesystem::path homeTrash, const Clock& clock,
                     const LocalCalendar& calendar)
        : homeTrash_(std::move(homeTrash)), clock_(clock), calendar_(calendar) {}

    Result<void> put(const std::filesystem::path& file) override;

private:
    std::string infoText(std::string_view path) const;
    Result<void> moveInto(const std::filesystem::path& trash, const std::filesystem::path& file,
                          std::string_view recordedPath);

    const std::filesystem::path homeTrash_;
    const Clock& clock_;
    const LocalCalendar& calendar_;
};

} // namespace kelvaro
