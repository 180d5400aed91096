#include "platform/raw/LosslessBits.h"

#include <algorithm>

namespace kelvaro {

bool HuffmanTable::set(std::span<const std::byte> counts, std::span<const std::byte> categories) {
    unsigned code = 0;
    std::size_t next = 0;
    longest_ = 0;
    fast_.fill({});
    for (int length = 1; length <= 16; ++length) {
        const auto count = std::to_integer<unsigned>(counts[std::size_t(length - 1)]);
        firstCode_[length] = int(code);
        firstIndex_[length] = int(next);
        if (code + count > 1u << length || next + count > categories.size()) return false;
        for (unsigned i = 0; i < count; ++i, ++code, ++next) {
            const auto category = std::to_integer<std::uint8_t>(categories[next]);
            if (category > kNoBits) return false;
            categories_[next] = category;
            longest_ = std::max(longest_, length + category % kNoBits);
            if (length > kFastBits || category == kNoBits) continue;
            std::fill_n(fast_.begin() + std::ptrdiff_t(code << (kFastBits - length)),
                        std::size_t(1) << (kFastBits - length),
                        Entry{std::uint16_t((1 << category) - 1), std::uint8_t(length + category)});
        }
        endCode_[length] = int(code);
        code <<= 1;
    }
    isSet_ = true;
    return true;
}

HuffmanTable::Rare HuffmanTable::findRare(std::uint64_t bits) const {
    for (int length = 1; length <= 16; ++length) {
        const int code = int(bits >> (64 - length));
        if (code >= endCode_[length] || code < firstCode_[length]) continue;
        const int category =
            categories_[std::size_t(firstIndex_[length] + code - firstCode_[length])];
        if (category == kNoBits) return {length, 1 << 15};
        if (category == 0) return {length, 0};
        const int value = int(bits << length >> (64 - category));
        const bool isNegative = value < 1 << (category - 1);
        return {length + category, isNegative ? value - (1 << category) + 1 : value};
    }
    return {};
}

CodedBytes::CodedBytes(std::span<const std::byte> data, std::size_t most)
    : rest_(data), window_(std::max<std::size_t>(2 * most, 1 << 15)) {}

const std::uint8_t* CodedBytes::next(std::size_t used, std::size_t count) {
    at_ += used;
    if (window_.size() - at_ < count || (filled_ - at_ < count && !isFinished_)) refill();
    return window_.data() + at_;
}

void CodedBytes::refill() {
    const std::size_t kept = filled_ - at_;
    std::memmove(window_.data(), window_.data() + at_, kept);
    at_ = 0;
    filled_ = kept;
    while (filled_ < window_.size() && !isFinished_)
        addRun();
    std::fill(window_.begin() + std::ptrdiff_t(filled_), window_.end(), std::uint8_t(0));
}

// What stands before the next 0xff, and that byte itself.
void CodedBytes::addRun() {
    const std::size_t room = std::min(rest_.size(), window_.size() - filled_);
    const void* mark = room > 0 ? std::memchr(rest_.data(), 0xff, room) : nullptr;
    const std::size_t run =
        mark ? std::size_t(static_cast<const std::byte*>(mark) - rest_.data()) : room;
    if (run > 0) std::memcpy(window_.data() + filled_, rest_.data(), run);
    filled_ += run;
    rest_ = rest_.subspan(run);
    isFinished_ = rest_.empty() || (mark && (rest_.size() < 2 || rest_[1] != std::byte{0}));
    if (!mark || isFinished_) return;
    window_[filled_++] = 0xff;
    rest_ = rest_.subspan(2);
}

} // namespace kelvaro
