// Work in flight, by key, so that the same render never runs twice at once: whoever asks second
// waits for the first and uses its result. Thread-safe; no lock is held while work is done.
#pragma once

#include "base/Cancellation.h"

#include <condition_variable>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace kelvaro {

class KeyedWork {
public:
    // The right to work on a key; given back at its end.
    class Claim {
    public:
        Claim(Claim&& other) noexcept
            : owner_(std::exchange(other.owner_, nullptr)), key_(std::move(other.key_)) {}
        Claim& operator=(Claim&&) = delete;
        ~Claim();

    private:
        friend class KeyedWork;
        Claim(KeyedWork& owner, std::string key) : owner_(&owner), key_(std::move(key)) {}
        KeyedWork* owner_;
        std::string key_;
    };

    // None when somebody works on the key.
    std::optional<Claim> tryClaim(const std::string& key);
    // Blocks while somebody works on the key. False when it was cancelled; may be null.
    bool waitFor(const std::string& key, const Cancellation* cancellation);

    // What `find` has (a std::optional), or else what `make` makes and leaves where `find` finds
    // it; where somebody else is making it, that. A `make` that left nothing is tried again by the
    // next in line. None when cancelled while waiting.
    template<class Find, class Make>
    auto run(const std::string& key, const Cancellation* cancellation, Find&& find, Make&& make)
        -> std::optional<decltype(make())> {
        while (true) {
            if (auto found = find()) return std::move(*found);
            if (const auto claim = tryClaim(key)) {
                // Somebody may have finished between the look and the claim.
                if (auto found = find()) return std::move(*found);
                return make();
            }
            if (!waitFor(key, cancellation)) return std::nullopt;
        }
    }

    std::size_t activeCount() const;

private:
    mutable std::mutex lock_; // guards active_
    std::condition_variable ended_;
    std::set<std::string> active_;
};

} // namespace kelvaro
