// Broken preconditions are programming errors: they stop the program, in release builds too, with
// the file and line. User input and data from disk must never reach one.
#pragma once

namespace kelvaro {

[[noreturn]] void requirementFailed(const char* condition, const char* file, int line) noexcept;

} // namespace kelvaro

#define KELVARO_REQUIRE(condition)                                                                 \
    (static_cast<bool>(condition) ? void(0)                                                        \
                                  : ::kelvaro::requirementFailed(#condition, __FILE__, __LINE__))
