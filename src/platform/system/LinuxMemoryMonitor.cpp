#include "platform/system/LinuxMemoryMonitor.h"

#include "platform/system/Descriptor.h"
#include "platform/system/PressureTracker.h"
#include "platform/system/SystemClock.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/eventfd.h>
#include <thread>
#include <vector>

namespace kelvaro {

namespace {

// Stalled for so many microseconds within two seconds; the kernel lets anybody watch windows of
// two.
constexpr std::string_view kSomeStalled = "some 150000 2000000";
constexpr std::string_view kAllStalled = "full 200000 2000000";
const std::filesystem::path kGroups = "/sys/fs/cgroup";

std::string readAll(int file) {
    std::string text(4096, '\0');
    const auto count = uninterrupted([&] { return ::pread(file, text.data(), text.size(), 0); });
    text.resize(std::size_t(std::max<ssize_t>(count, 0)));
    return text;
}

std::string readAll(const std::filesystem::path& path) {
    const Descriptor file(
        uninterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC); }));
    return file ? readAll(file.number()) : std::string();
}

// The folder of our control group in the unified hierarchy; empty where there is none of its own.
std::filesystem::path ownGroup() {
    const std::string text = readAll(std::filesystem::path("/proc/self/cgroup"));
    const auto begin = text.rfind("0::/", 0) == 0 ? 0 : text.find("\n0::/");
    if (begin == std::string::npos) return {};
    const auto path = text.find("0::/", begin) + 4;
    const std::string name = text.substr(path, text.find('\n', path) - path);
    return name.empty() ? std::filesystem::path() : kGroups / name;
}

// The least that the group and those around it may use; "max" counts for nothing.
std::int64_t confinedTo(std::filesystem::path group, std::int64_t bytes) {
    while (!group.empty() && group != kGroups && group.has_relative_path()) {
        const std::string text = readAll(group / "memory.max");
        std::int64_t limit = 0;
        std::from_chars(text.data(), text.data() + text.size(), limit);
        if (limit > 0) bytes = std::min(bytes, limit);
        group = group.parent_path();
    }
    return bytes;
}

// One thing that the kernel tells of: a stall trigger, or the counters of a group.
struct Watched {
    Descriptor file;
    std::optional<MemoryPressure> level; // of a trigger
    MemoryEvents counted;                // of counters

    std::optional<MemoryPressure> sign() {
        if (level) return level;
        const auto now = MemoryEvents::parse(readAll(file.number()));
        const auto sign = now.signSince(counted);
        counted = now;
        return sign;
    }
};

std::optional<Watched> trigger(const std::filesystem::path& path, std::string_view condition,
                               MemoryPressure level) {
    Descriptor file(
        uninterrupted([&] { return ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC); }));
    if (!file) return std::nullopt;
    const std::string text(condition); // with the zero at its end, as the kernel wants it
    const auto written =
        uninterrupted([&] { return ::write(file.number(), text.c_str(), text.size() + 1); });
    if (written < 0) return std::nullopt;
    return Watched{std::move(file), level, {}};
}

std::optional<Watched> counters(const std::filesystem::path& path) {
    Descriptor file(uninterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC); }));
    if (!file) return std::nullopt;
    Watched watched{std::move(file), {}, {}};
    static_cast<void>(watched.sign());
    return watched;
}

std::vector<Watched> watchedFiles() {
    std::vector<Watched> all;
    const auto add = [&](std::optional<Watched> one) {
        if (one) all.push_back(std::move(*one));
    };
    std::vector<std::filesystem::path> stalls{"/proc/pressure/memory"};
    const std::filesystem::path group = ownGroup();
    if (!group.empty()) {
        stalls.push_back(group / "memory.pressure");
        add(counters(group / "memory.events"));
    }
    for (const std::filesystem::path& path : stalls) {
        add(trigger(path, kSomeStalled, MemoryPressure::warning));
        add(trigger(path, kAllStalled, MemoryPressure::critical));
    }
    return all;
}

class Watching final : public MemoryMonitor::Subscription {
public:
    Watching(std::vector<Watched> files, Descriptor end,
             std::function<void(MemoryPressure)> handler)
        : files_(std::move(files)),
          end_(std::move(end)),
          handler_(std::move(handler)),
          thread_([this] { watch(); }) {}
    ~Watching() override {
        const std::uint64_t one = 1;
        static_cast<void>(uninterrupted([&] { return ::write(end_.number(), &one, sizeof one); }) <
                          0);
        thread_.join();
    }

private:
    void watch() {
        while (waitForSign()) {
            const double now = clock_.monotonicSeconds();
            for (std::size_t i = 0; i < files_.size(); ++i) {
                if (!(polled_[i].revents & POLLPRI)) continue;
                if (const auto sign = files_[i].sign()) tell(tracker_.sign(*sign, now));
            }
            tell(tracker_.passed(now));
        }
    }

    // False when the subscription ends, or nothing can be watched any more.
    bool waitForSign() {
        polled_.clear();
        for (const Watched& watched : files_)
            polled_.push_back({watched.file.number(), POLLPRI, 0});
        polled_.push_back({end_.number(), POLLIN, 0});
        int milliseconds = -1;
        if (const auto calm = tracker_.calmAt())
            milliseconds = 1 + int(1000 * std::max(0.0, *calm - clock_.monotonicSeconds()));
        const auto count = uninterrupted(
            [&] { return ::poll(polled_.data(), nfds_t(polled_.size()), milliseconds); });
        if (count < 0 || polled_.back().revents) return false;
        // A group that went away answers at once, always: it is not watched any longer. Counters
        // report an error together with every change, so that only the hang-up counts.
        for (std::size_t i = files_.size(); i-- > 0;)
            if (files_[i].level && (polled_[i].revents & POLLERR) &&
                !(polled_[i].revents & POLLPRI)) {
                files_.erase(files_.begin() + std::ptrdiff_t(i));
                polled_.erase(polled_.begin() + std::ptrdiff_t(i));
            }
        return true;
    }

    void tell(std::optional<MemoryPressure> change) {
        if (change) handler_(*change);
    }

    std::vector<Watched> files_;
    Descriptor end_;
    std::function<void(MemoryPressure)> handler_;
    SystemClock clock_;
    PressureTracker tracker_;
    std::vector<pollfd> polled_;
    std::thread thread_; // last: it uses the rest
};

} // namespace

std::int64_t LinuxMemoryMonitor::physicalBytes() const {
    const long pages = ::sysconf(_SC_PHYS_PAGES), page = ::sysconf(_SC_PAGESIZE);
    const std::int64_t machine =
        pages > 0 && page > 0 ? std::int64_t(pages) * page : std::int64_t(4) << 30;
    return confinedTo(ownGroup(), machine);
}

std::unique_ptr<MemoryMonitor::Subscription>
LinuxMemoryMonitor::subscribe(std::function<void(MemoryPressure)> handler) {
    std::vector<Watched> files = watchedFiles();
    if (files.empty()) return nullptr;
    Descriptor end(::eventfd(0, EFD_CLOEXEC));
    if (!end) return nullptr;
    return std::make_unique<Watching>(std::move(files), std::move(end), std::move(handler));
}

} // namespace kelvaro
