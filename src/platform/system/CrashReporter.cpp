#include "platform/system/CrashReporter.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <execinfo.h>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace kelvaro {
namespace {

// All that the handler needs, made ready before: in a fault nothing may be allocated.
std::array<char, 1024> reportPrefix{};
std::array<char, 1024> reportHeading{};
std::array<char, 1 << 16> handlerStack{};

constexpr std::array faults{SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};

void writeText(int file, const char* text) {
    // What cannot be written is not worth a second fault.
    [[maybe_unused]] const auto written = ::write(file, text, std::strlen(text));
}

// Decimal digits of `value`, at least `digits` of them, at `to`; returns what follows.
char* putNumber(char* to, long value, int digits) {
    std::array<char, 24> reversed{};
    int count = 0;
    for (; value > 0 || count < digits; value /= 10)
        reversed[static_cast<std::size_t>(count++)] = static_cast<char>('0' + value % 10);
    while (count > 0)
        *to++ = reversed[static_cast<std::size_t>(--count)];
    return to;
}

// "20240309-183000-4711.txt" in UTC, without functions that a signal may not call.
void putFileName(char* to) {
    const long seconds = static_cast<long>(::time(nullptr));
    // Civil date from days since 1970 (Howard Hinnant, "chrono-Compatible Low-Level Date
    // Algorithms").
    const long days = seconds / 86400 + 719468, rest = seconds % 86400;
    const long era = days / 146097, dayOfEra = days - era * 146097;
    const long yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const long dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const long shifted = (5 * dayOfYear + 2) / 153;
    const long month = shifted < 10 ? shifted + 3 : shifted - 9;
    to = putNumber(to, yearOfEra + era * 400 + (month <= 2), 4);
    to = putNumber(to, month, 2);
    to = putNumber(to, dayOfYear - (153 * shifted + 2) / 5 + 1, 2);
    *to++ = '-';
    to = putNumber(to, rest / 3600, 2);
    to = putNumber(to, rest / 60 % 60, 2);
    to = putNumber(to, rest % 60, 2);
    *to++ = '-';
    to = putNumber(to, ::getpid(), 1);
    std::strcpy(to, ".txt");
}

void report(int signal) {
    std::array<char, 1200> path{};
    std::strcpy(path.data(), reportPrefix.data());
    putFileName(path.data() + std::strlen(path.data()));
    const int file = ::open(path.data(), O_CREAT | O_WRONLY | O_EXCL | O_CLOEXEC, 0600);
    if (file >= 0) {
        std::array<char, 32> number{};
        putNumber(number.data(), signal, 1);
        writeText(file, reportHeading.data());
        writeText(file, "\nSignal: ");
        writeText(file, number.data());
        writeText(file, "\n\n");
        std::array<void*, 64> frames{};
        const int count = ::backtrace(frames.data(), static_cast<int>(frames.size()));
        ::backtrace_symbols_fd(frames.data(), count, file);
        ::close(file);
    }
    // The default action was restored when the handler was entered.
    ::raise(signal);
}

} // namespace

void reportCrashesTo(const std::filesystem::path& folder, const std::string& heading) {
    std::error_code ignored; // without the folder there is no report, and nothing else is lost
    std::filesystem::create_directories(folder, ignored);
    const std::string prefix = (folder / "Kelvaro-").string();
    if (prefix.size() >= reportPrefix.size()) return;
    std::strcpy(reportPrefix.data(), prefix.c_str());
    std::strncpy(reportHeading.data(), heading.c_str(), reportHeading.size() - 1);
    // The first call loads a library, which must not happen inside a fault.
    std::array<void*, 1> warm{};
    ::backtrace(warm.data(), 1);

    // A stack of its own, so that an overflow of the program's stack is reported too.
    stack_t stack{};
    stack.ss_sp = handlerStack.data();
    stack.ss_size = handlerStack.size();
    ::sigaltstack(&stack, nullptr);
    struct sigaction action {};
    action.sa_handler = report;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_ONSTACK);
    for (const int signal : faults)
        ::sigaction(signal, &action, nullptr);
}

} // namespace kelvaro
