// The calendar of a time zone as ICU has it.
#pragma once

#include "platform/LocalCalendar.h"

#include <memory>
#include <string>

namespace kelvaro {

// `zone` is a name of the time zone database ("Asia/Tokyo"); empty for the user's own. An unknown
// one counts as UTC.
std::unique_ptr<LocalCalendar> makeIcuCalendar(const std::string& zone = {});

} // namespace kelvaro
