#include "app/Mails.h"

namespace kelvaro {

const std::string_view websiteAddress = "https://kelvaro.app";

namespace {

constexpr std::string_view recipient = "hello@kelvaro.app";
constexpr std::string_view problemQuestions =
    "What happened:\n\n\nSteps to reproduce (if you know them):\n\n\n"
    "If Kelvaro quit unexpectedly, macOS saved a report in ~/Library/Logs/DiagnosticReports "
    "(Help › Show Crash Reports): attaching the newest “Kelvaro” one helps a lot.\n\n"
    "— Please keep these details —\nKelvaro";

} // namespace

MailDraft problemReport(const SystemDetails& details) {
    std::string body(problemQuestions);
    for (const std::string* detail : {&details.program, &details.system, &details.processor})
        body += (detail == &details.program ? " " : "\n") + *detail;
    return {std::string(recipient), "Kelvaro: problem report", std::move(body)};
}

MailDraft feedback() {
    return {std::string(recipient), "Kelvaro: feedback", "\n\n\n— Kelvaro"};
}

} // namespace kelvaro
