// The desktop as the freedesktop.org standards describe it: its file manager, its mail program and
// its settings portal, over the session bus where there is one.
#pragma once

#include "platform/Desktop.h"

#include <memory>

namespace kelvaro {

std::unique_ptr<Desktop> makeDesktop();

// The text that the system's release file gives for PRETTY_NAME, quotes taken off; "" without one.
std::string prettyName(const std::string& osRelease);
// The first "model name" of /proc/cpuinfo's text.
std::string modelName(const std::string& cpuInfo);
// A mailto address with everything encoded that it needs.
std::string mailAddress(const std::string& to, const std::string& subject, const std::string& body);

} // namespace kelvaro
