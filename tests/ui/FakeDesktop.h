// A desktop that notes what it was asked for.
#pragma once

#include "platform/Desktop.h"

namespace kelvaro {

class FakeDesktop final : public Desktop {
public:
    void showFiles(const std::vector<std::filesystem::path>& files) override { shown = files; }
    void openFolder(const std::filesystem::path& folder) override { opened = folder; }
    void openWeb(const std::string& address) override { web = address; }
    void composeMail(const std::string& to, const std::string& subject,
                     const std::string& body) override {
        mail = {to, subject, body};
    }
    DesktopPreferences preferences() override { return wanted; }
    void onPreferencesChanged(std::function<void()> changed) override { tell = std::move(changed); }
    std::string systemName() const override { return "Debian GNU/Linux 12 (bookworm)"; }
    std::string processorName() const override { return "Example Processor 9000"; }

    std::vector<std::filesystem::path> shown;
    std::filesystem::path opened;
    std::string web;
    std::vector<std::string> mail; // to, subject, body
    DesktopPreferences wanted{.prefersDark = true, .reducesMotion = true};
    std::function<void()> tell;
};

} // namespace kelvaro
