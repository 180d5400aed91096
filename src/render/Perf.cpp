#include "render/Perf.h"

#include <fmt/format.h>

namespace kelvaro {

namespace {

constexpr std::size_t kMostWaiting = 64; // frames rendered and not shown

} // namespace

void Perf::write(const std::string& line) {
    if (sink_) sink_(line);
}

std::uint64_t Perf::encoded(double encodeMs, double requested) {
    if (!enabled_) return 0;
    std::lock_guard guard(lock_);
    encodes_[++lastFrame_] = {encodeMs, requested};
    if (encodes_.size() > kMostWaiting) encodes_.erase(encodes_.begin());
    return lastFrame_;
}

void Perf::displayed(std::uint64_t frame, double now) {
    if (!enabled_) return;
    std::lock_guard guard(lock_);
    const auto found = encodes_.find(frame);
    if (found == encodes_.end()) return;
    const Encode encode = found->second;
    encodes_.erase(found);
    write(fmt::format("[perf] encode {:.1f} ms latency {:.1f} ms", encode.ms,
                      (now - encode.requested) * 1000));
}

void Perf::rawStage(double renderMs, double totalMs) {
    if (!enabled_) return;
    std::lock_guard guard(lock_);
    write(fmt::format("[perf] raw stage gpu {:.1f} ms, total {:.1f} ms", renderMs, totalMs));
}

void Perf::thumbnail(double when, std::string_view name, std::uint64_t number,
                     std::string_view origin, double ms, int size) {
    if (!thumbnailsEnabled_) return;
    std::lock_guard guard(lock_);
    write(fmt::format("[thumb] {:.3f} {} #{} {} {:.0f} ms size {}", when, name, number, origin, ms,
                      size));
}

} // namespace kelvaro
