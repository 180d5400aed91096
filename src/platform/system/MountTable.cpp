#include "platform/system/MountTable.h"

#include <array>
#include <fcntl.h>
#include <poll.h>
#include <sstream>

namespace kelvaro {
namespace {

// Blanks and the like are written as a backslash and three octal digits.
std::string unescaped(const std::string& text) {
    std::string plain;
    const auto isOctal = [&](std::size_t i) {
        return i < text.size() && text[i] >= '0' && text[i] <= '7';
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && isOctal(i + 1) && isOctal(i + 2) && isOctal(i + 3)) {
            const int value =
                (text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 + text[i + 3] - '0';
            plain += static_cast<char>(value);
            i += 3;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

// "36 35 98:0 /root /mount options [optional fields] - type source options"
std::optional<Drive> driveIn(const std::string& line) {
    std::istringstream fields(line);
    std::string id, parent, number, root, mountPoint, field, type, source;
    if (!(fields >> id >> parent >> number >> root >> mountPoint)) return std::nullopt;
    while (fields >> field && field != "-") {
    }
    if (!(fields >> type >> source)) return std::nullopt;
    return Drive{unescaped(mountPoint), number + ' ' + unescaped(source)};
}

bool holds(const std::string& mountPoint, const std::string& path) {
    if (mountPoint == "/") return path.starts_with('/');
    return path.starts_with(mountPoint) &&
           (path.size() == mountPoint.size() || path[mountPoint.size()] == '/');
}

} // namespace

std::vector<Drive> drivesIn(std::string_view mountinfo) {
    std::vector<Drive> drives;
    std::istringstream lines{std::string(mountinfo)};
    for (std::string line; std::getline(lines, line);)
        if (auto drive = driveIn(line)) drives.push_back(std::move(*drive));
    return drives;
}

std::optional<Drive> driveHolding(const std::vector<Drive>& drives, const std::string& path) {
    const Drive* best = nullptr;
    for (const Drive& drive : drives) {
        const bool isCloser =
            !best || drive.mountPoint.string().size() >= best->mountPoint.string().size();
        if (holds(drive.mountPoint.string(), path) && isCloser) best = &drive;
    }
    return best ? std::optional(*best) : std::nullopt;
}

MountTable::MountTable() : table_(::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC)) {
    std::array<int, 2> ends{-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) == 0) {
        woken_ = Descriptor(ends[0]);
        wake_ = Descriptor(ends[1]);
    }
    if (!table_ || !wake_) return; // no drives are known then, and none ever changes
    read();
    thread_ = std::thread([this] { watch(); });
}

MountTable::~MountTable() {
    wake_.close(); // the other end becomes readable
    if (thread_.joinable()) thread_.join();
}

void MountTable::read() {
    std::string text;
    std::array<char, 16384> buffer;
    ::lseek(table_.number(), 0, SEEK_SET);
    for (;;) {
        const auto got =
            uninterrupted([&] { return ::read(table_.number(), buffer.data(), buffer.size()); });
        if (got <= 0) break;
        text.append(buffer.data(), static_cast<std::size_t>(got));
    }
    drives_.with([&](auto& drives) { drives = drivesIn(text); });
}

void MountTable::watch() {
    for (;;) {
        std::array<pollfd, 2> waits{pollfd{table_.number(), POLLPRI, 0},
                                    pollfd{woken_.number(), POLLIN, 0}};
        if (::poll(waits.data(), waits.size(), -1) < 0 && errno != EINTR) return;
        if (waits[1].revents != 0) return;
        if ((waits[0].revents & (POLLPRI | POLLERR)) == 0) continue;
        read();
        std::lock_guard guard(calling_);
        if (changed_) changed_();
    }
}

std::optional<Drive> MountTable::driveOf(const std::filesystem::path& path) {
    return drives_.with([&](const auto& drives) { return driveHolding(drives, path.string()); });
}

void MountTable::onChange(std::function<void()> changed) {
    std::lock_guard guard(calling_);
    changed_ = std::move(changed);
}

} // namespace kelvaro
