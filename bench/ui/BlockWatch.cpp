#include "ui/BlockWatch.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <cxxabi.h>
#include <execinfo.h>
#include <memory>
#include <pthread.h>

namespace kelvaro {
namespace {

constexpr std::int64_t lookEveryNs = 10'000'000;
constexpr std::size_t toldFrames = 4;

// Filled by the signal's handler on the main thread.
std::array<void*, 64> sampled{};
std::atomic<int> sampledCount = 0;
pthread_t watchedThread;

void sample(int) {
    sampledCount = ::backtrace(sampled.data(), static_cast<int>(sampled.size()));
}

std::int64_t nsOf(clockid_t clock) {
    timespec now{};
    ::clock_gettime(clock, &now);
    return std::int64_t(now.tv_sec) * 1'000'000'000 + now.tv_nsec;
}

std::string functionName(const char* symbol) {
    // "program(mangled+0x12) [0x…]"
    const std::string text(symbol);
    const auto open = text.find('('), plus = text.find('+', open);
    if (open == std::string::npos || plus == std::string::npos) return {};
    const std::string mangled = text.substr(open + 1, plus - open - 1);
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> plain(
        abi::__cxa_demangle(mangled.c_str(), nullptr, nullptr, &status), &std::free);
    std::string name = plain ? plain.get() : mangled;
    return name.substr(0, name.find('('));
}

} // namespace

std::int64_t monotonicNs() {
    return nsOf(CLOCK_MONOTONIC);
}

std::int64_t busyNs() {
    return nsOf(CLOCK_THREAD_CPUTIME_ID);
}

BlockWatch::BlockWatch(int& argc, char** argv, double limitMs)
    : QApplication(argc, argv), limitMs_(limitMs) {
    watchedThread = ::pthread_self();
    std::array<void*, 1> warm{};
    ::backtrace(warm.data(), 1); // loads its library now
    struct sigaction action {};
    action.sa_handler = sample;
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGUSR1, &action, nullptr);
    watcher_ = std::thread([this] { watch(); });
}

BlockWatch::~BlockWatch() {
    ends_ = true;
    watcher_.join();
}

void BlockWatch::watch() {
    std::int64_t told = 0;
    while (!ends_) {
        const timespec pause{0, lookEveryNs};
        ::nanosleep(&pause, nullptr);
        const std::int64_t since = since_;
        const bool isLong = since != 0 && double(monotonicNs() - since) / 1e6 > limitMs_ * 0.6;
        if (!isLong || since == told) continue;
        told = since;
        ::pthread_kill(watchedThread, SIGUSR1);
    }
}

std::string BlockWatch::sampledStack() {
    const int count = sampledCount.exchange(0);
    if (count == 0) return {};
    const std::unique_ptr<char*, decltype(&std::free)> symbols(
        ::backtrace_symbols(sampled.data(), count), &std::free);
    std::string stack;
    std::size_t told = 0;
    for (int at = 0; symbols && at < count && told < toldFrames; ++at) {
        const std::string name = functionName(symbols.get()[at]);
        if (!name.starts_with("kelvaro::") || name.starts_with("kelvaro::BlockWatch")) continue;
        stack += (told++ ? " < " : "") + name.substr(9);
    }
    return stack;
}

bool BlockWatch::notify(QObject* receiver, QEvent* event) {
    const auto type = event->type();
    const bool isOutermost = depth_++ == 0;
    const std::int64_t begin = monotonicNs(), busy = isOutermost ? busyNs() : 0;
    std::string name;
    if (isOutermost) {
        // The receiver may be gone afterwards.
        name = receiver->metaObject()->className();
        if (!receiver->objectName().isEmpty()) name += ' ' + receiver->objectName().toStdString();
        since_ = begin;
    }
    const bool handled = QApplication::notify(receiver, event);
    --depth_;
    if (type == QEvent::Paint && onPainted) onPainted(receiver);
    if (!isOutermost) return handled;
    since_ = 0;
    const double ms = double(monotonicNs() - begin) / 1e6;
    if (ms > limitMs_)
        blocks_.push_back({ms, double(busyNs() - busy) / 1e6,
                           name + ", event " + std::to_string(type), sampledStack()});
    return handled;
}

std::vector<BlockWatch::Block> BlockWatch::blocks() const {
    auto sorted = blocks_;
    std::ranges::sort(sorted, std::greater{}, &Block::busyMs);
    return sorted;
}

} // namespace kelvaro
