#include "platform/system/InotifyWatcher.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <vector>

namespace kelvaro {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds quiet(200);    // a burst has ended
constexpr milliseconds longest(2000); // a burst that does not end is told of anyway
constexpr std::uint32_t changes = IN_CREATE | IN_CLOSE_WRITE | IN_DELETE | IN_MOVED_FROM |
                                  IN_MOVED_TO | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF;

} // namespace

InotifyWatcher::InotifyWatcher() : events_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    std::array<int, 2> ends{-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) == 0) {
        woken_ = Descriptor(ends[0]);
        wake_ = Descriptor(ends[1]);
    }
    if (events_ && wake_) thread_ = std::thread([this] { run(); });
}

InotifyWatcher::~InotifyWatcher() {
    wake_.close(); // the other end becomes readable
    if (thread_.joinable()) thread_.join();
}

void InotifyWatcher::onChange(Changed changed) {
    std::lock_guard guard(calling_);
    changed_ = std::move(changed);
}

bool InotifyWatcher::watch(const std::filesystem::path& folder) {
    if (!thread_.joinable()) return false;
    const int number = ::inotify_add_watch(events_.number(), folder.c_str(), changes | IN_ONLYDIR);
    if (number < 0) return false;
    std::lock_guard guard(lock_);
    const auto before = numbers_.find(folder.string());
    if (before != numbers_.end() && before->second != number)
        folders_[before->second].erase(folder.string()); // another folder stands there now
    numbers_[folder.string()] = number;
    folders_[number].insert(folder.string());
    return true;
}

void InotifyWatcher::unwatch(const std::filesystem::path& folder) {
    std::lock_guard guard(lock_);
    const auto found = numbers_.find(folder.string());
    if (found == numbers_.end()) return;
    auto& names = folders_[found->second];
    names.erase(folder.string());
    if (names.empty()) {
        ::inotify_rm_watch(events_.number(), found->second);
        folders_.erase(found->second);
    }
    numbers_.erase(found);
}

void InotifyWatcher::run() {
    int patience = -1;
    for (;;) {
        std::array<pollfd, 2> waits{pollfd{events_.number(), POLLIN, 0},
                                    pollfd{woken_.number(), POLLIN, 0}};
        if (::poll(waits.data(), waits.size(), patience) < 0 && errno != EINTR) return;
        if (waits[1].revents != 0) return;
        if (waits[0].revents != 0) readEvents();
        patience = tellDue();
    }
}

void InotifyWatcher::readEvents() {
    alignas(inotify_event) std::array<char, 65536> buffer;
    for (;;) {
        const auto got =
            uninterrupted([&] { return ::read(events_.number(), buffer.data(), buffer.size()); });
        if (got <= 0) return;
        std::lock_guard guard(lock_);
        for (std::size_t at = 0; at < static_cast<std::size_t>(got);) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + at);
            at += sizeof(inotify_event) + event->len;
            if (event->mask & IN_Q_OVERFLOW) noteAll();
            const auto found = folders_.find(event->wd);
            if (found == folders_.end()) continue;
            for (const std::string& folder : found->second)
                note(folder);
            if (event->mask & IN_IGNORED) { // the folder has gone, or its disk has
                for (const std::string& folder : found->second)
                    numbers_.erase(folder);
                folders_.erase(found);
            }
        }
    }
}

void InotifyWatcher::note(const std::string& folder) {
    const Moment now = std::chrono::steady_clock::now();
    bursts_.try_emplace(folder, Burst{now, now}).first->second.last = now;
}

// Events were lost: any folder may have changed.
void InotifyWatcher::noteAll() {
    for (const auto& [folder, number] : numbers_)
        note(folder);
}

int InotifyWatcher::tellDue() {
    const Moment now = std::chrono::steady_clock::now();
    std::vector<std::string> due;
    Moment next = Moment::max();
    for (const auto& [folder, burst] : bursts_) {
        const Moment end = std::min(burst.last + quiet, burst.first + longest);
        if (end <= now)
            due.push_back(folder);
        else
            next = std::min(next, end);
    }
    for (const std::string& folder : due) {
        bursts_.erase(folder);
        std::lock_guard guard(calling_);
        if (changed_) changed_(folder);
    }
    if (next == Moment::max()) return -1;
    return static_cast<int>(std::chrono::ceil<milliseconds>(next - now).count());
}

} // namespace kelvaro
