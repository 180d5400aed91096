// The timing log of renders, one line each: off unless it is asked for. Times are milliseconds in
// the lines and seconds of the monotonic clock in the calls. Thread-safe.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

namespace kelvaro {

class Perf {
public:
    using Sink = std::function<void(const std::string& line)>; // without line end

    static constexpr const char* variable = "KELVARO_PERF";
    static constexpr const char* thumbnailVariable = "KELVARO_THUMBS";

    // Writes nothing.
    Perf() = default;
    // `sink` gets the lines of what is enabled; called from any thread, one line at a time.
    Perf(bool enabled, bool thumbnailsEnabled, Sink sink)
        : enabled_(enabled), thumbnailsEnabled_(thumbnailsEnabled), sink_(std::move(sink)) {}

    bool isEnabled() const { return enabled_; }
    bool logsThumbnails() const { return thumbnailsEnabled_; }

    // A frame has been rendered: `encodeMs` is how long that took, `requested` when it was asked
    // for. Returns what to call it when it is shown.
    std::uint64_t encoded(double encodeMs, double requested);
    // The frame is on the screen: "[perf] encode %.1f ms latency %.1f ms". Frames that never are
    // shown are forgotten in time.
    void displayed(std::uint64_t frame, double now);
    // "[perf] raw stage gpu %.1f ms, total %.1f ms"
    void rawStage(double renderMs, double totalMs);
    // "[thumb] %.3f %@ #%d %@ %.0f ms size %d": when (seconds since the program began), the file's
    // name, the number of the request, where the picture came from, how long it took, longer side.
    void thumbnail(double when, std::string_view name, std::uint64_t number,
                   std::string_view origin, double ms, int size);

private:
    struct Encode {
        double ms = 0, requested = 0;
    };
    void write(const std::string& line);

    const bool enabled_ = false, thumbnailsEnabled_ = false;
    const Sink sink_;
    std::mutex lock_; // guards the fields below, and the order of lines
    std::map<std::uint64_t, Encode> encodes_;
    std::uint64_t lastFrame_ = 0;
};

} // namespace kelvaro
