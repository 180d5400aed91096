// What we ask of the desktop around the window: other programs to show something, and how the user
// likes windows to look. Called on the main thread; nothing waits for the other programs.
#pragma once

#include "base/Result.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace kelvaro {

struct DesktopPreferences {
    bool prefersDark = true; // where the system has no opinion, photos look best on dark
    bool reducesMotion = false;
    bool operator==(const DesktopPreferences&) const = default;
};

class Desktop {
public:
    virtual ~Desktop() = default;
    // Opens the folder in the file manager with those of its files selected; where the file manager
    // cannot select, it only opens the folder.
    virtual void showFiles(const std::vector<std::filesystem::path>& files) = 0;
    virtual void openFolder(const std::filesystem::path& folder) = 0;
    virtual void openWeb(const std::string& address) = 0;
    // Begins a message in the user's mail program.
    virtual void composeMail(const std::string& to, const std::string& subject,
                             const std::string& body) = 0;

    virtual DesktopPreferences preferences() = 0;
    // Replaces the function before. Called on the main thread.
    virtual void onPreferencesChanged(std::function<void()> changed) = 0;

    virtual std::string systemName() const = 0;    // "Debian GNU/Linux 12 (bookworm)"
    virtual std::string processorName() const = 0; // as the system names it; "" when it does not
};

} // namespace kelvaro
