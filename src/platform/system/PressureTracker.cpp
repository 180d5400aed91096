#include "platform/system/PressureTracker.h"

#include <algorithm>
#include <charconv>

namespace kelvaro {

std::optional<MemoryPressure> PressureTracker::sign(MemoryPressure level, double now) {
    lastSign_ = now;
    if (level <= level_) return std::nullopt;
    level_ = level;
    return level;
}

std::optional<MemoryPressure> PressureTracker::passed(double now) {
    if (!calmAt() || now < *calmAt()) return std::nullopt;
    level_ = MemoryPressure::normal;
    return level_;
}

std::optional<double> PressureTracker::calmAt() const {
    if (level_ == MemoryPressure::normal) return std::nullopt;
    return lastSign_ + calmSeconds;
}

MemoryEvents MemoryEvents::parse(std::string_view text) {
    MemoryEvents events;
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        const auto gap = line.find(' ');
        if (gap == std::string_view::npos) continue;
        const std::string_view name = line.substr(0, gap);
        long long count = 0;
        std::from_chars(line.data() + gap + 1, line.data() + line.size(), count);
        if (name == "high") events.high += count;
        if (name == "max" || name == "oom" || name == "oom_kill") events.max += count;
    }
    return events;
}

std::optional<MemoryPressure> MemoryEvents::signSince(const MemoryEvents& before) const {
    if (max > before.max) return MemoryPressure::critical;
    if (high > before.high) return MemoryPressure::warning;
    return std::nullopt;
}

} // namespace kelvaro
