// The rules of a language and region as ICU has them. Stateless to its users; the formatters, which
// are not, are used under a lock of their own.
#pragma once

#include "platform/TextRules.h"

#include <memory>
#include <string>

namespace kelvaro {

// The user's locale as the environment names it (LC_ALL, LC_MESSAGES, LANG): "de_DE". Nothing, "C"
// and "POSIX" are English.
std::string userLocale();

// `locale` as userLocale gives it. An unknown one counts as English.
std::unique_ptr<TextRules> makeIcuTextRules(const std::string& locale = userLocale());

} // namespace kelvaro
