// The messages that the mail commands begin for the user, who reads, completes and sends them.
#pragma once

#include <string>

namespace kelvaro {

struct MailDraft {
    std::string to, subject, body;
    bool operator==(const MailDraft&) const = default;
};

struct SystemDetails {
    std::string program;   // "0.1.0"
    std::string system;    // "Debian GNU/Linux 12 (bookworm)"
    std::string processor; // as the system names it
};

// Bodies are as stored; what is shown passes `shownText` first.
MailDraft problemReport(const SystemDetails& details);
MailDraft feedback();

extern const std::string_view websiteAddress;

} // namespace kelvaro
