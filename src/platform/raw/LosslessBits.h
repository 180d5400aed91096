// The bits of a lossless JPEG (ITU-T T.81, process 14) and the differences that they stand for.
// Made for speed: nothing here branches on what the bits are, but for codes that hardly occur.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace kelvaro {

// Codes of one table.
class HuffmanTable {
public:
    // What the bits that begin with a code stand for.
    struct Entry {
        std::uint16_t mask = 0; // of the difference's bits, the last ones of `total`
        std::uint8_t total = 0; // 0: a longer code than kFastBits, none, or kNoBits
    };
    struct Rare {
        int total = 0, difference = 0; // no bits: there is no such code
    };

    bool isSet() const { return isSet_; }
    // Bits of the longest code with its difference.
    int longest() const { return longest_; }
    // `counts` of codes of 1 … 16 bits, then the categories in order. False when they are no code.
    bool set(std::span<const std::byte> counts, std::span<const std::byte> categories);
    // Of bits whose highest come next.
    const Entry& find(std::uint64_t bits) const { return fast_[bits >> (64 - kFastBits)]; }
    Rare findRare(std::uint64_t bits) const;

private:
    static constexpr int kFastBits = 11; // 8 KiB leave room in the first level cache
    static constexpr int kNoBits = 16;   // the category whose one difference is 32768

    bool isSet_ = false;
    int longest_ = 0;
    std::array<Entry, 1 << kFastBits> fast_{};
    std::array<int, 17> firstCode_{}, endCode_{}, firstIndex_{};
    std::array<std::uint8_t, 256> categories_{};
};

// Reads bytes that must be long enough: nothing watches for their end.
class BitReader {
public:
    // `done` bits of the first byte are not read again.
    BitReader(const std::uint8_t* bytes, int done) : first_(bytes), at_(bytes) {
        fill();
        skip(done);
    }
    static constexpr int kReady = 56;
    static constexpr std::size_t kAhead = 24; // bytes that are looked at before they are needed
    // At least kReady bits ready. Those that were ready already are read once more.
    void fill() {
        std::uint64_t word;
        std::memcpy(&word, at_, sizeof word);
        if (std::endian::native == std::endian::little) word = __builtin_bswap64(word);
        bits_ |= word >> count_;
        at_ += (63 - count_) >> 3;
        count_ |= kReady;
    }
    // The next one, which takes at most `table.longest()` bits of those that are ready.
    [[gnu::always_inline]] int difference(const HuffmanTable& table) {
        const HuffmanTable::Entry& entry = table.find(bits_);
        if (entry.total == 0) [[unlikely]] {
            const HuffmanTable::Rare rare = table.findRare(bits_);
            isSound_ = isSound_ && rare.total > 0;
            skip(rare.total);
            return rare.difference;
        }
        const unsigned mask = entry.mask;
        const unsigned own = unsigned(std::rotl(bits_, entry.total)) & mask;
        skip(entry.total);
        // Negative when it begins with a 0; compilers would make a branch of a condition.
        const auto isNegative = unsigned(int(2 * own - mask - 1) >> 31); // all bits or none
        return int(own - (mask & isNegative));
    }
    // Bits since the first byte, those not read again among them.
    std::size_t used() const { return std::size_t(at_ - first_) * 8 - std::size_t(count_); }
    // Whether all codes were of their table.
    bool isSound() const { return isSound_; }

private:
    void skip(int n) {
        bits_ <<= n;
        count_ -= n;
    }
    const std::uint8_t* first_;
    const std::uint8_t* at_;
    std::uint64_t bits_ = 0;
    int count_ = 0;
    bool isSound_ = true;
};

// The bytes behind a scan's header without the zeros stuffed behind 0xff, a window at a time. A
// marker ends them; past the end come zeros.
class CodedBytes {
public:
    // `most` is the largest count that is asked for. The data outlive this object.
    CodedBytes(std::span<const std::byte> data, std::size_t most);
    // The next `count` bytes, after `used` of those given before.
    const std::uint8_t* next(std::size_t used, std::size_t count);
    // Whether so many bits of those given last are more than there are.
    bool isOver(std::size_t bits) const { return isFinished_ && bits > 8 * (filled_ - at_); }

private:
    void refill();
    void addRun();
    std::span<const std::byte> rest_;
    std::vector<std::uint8_t> window_;
    std::size_t at_ = 0, filled_ = 0; // in the window
    bool isFinished_ = false;
};

} // namespace kelvaro
