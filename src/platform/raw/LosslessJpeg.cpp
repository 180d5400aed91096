#include "platform/raw/LosslessJpeg.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <vector>

namespace kelvaro {

namespace {

constexpr int kMaximumComponents = 4;
constexpr int kFastBits = 12;

// Code lengths and categories of one Huffman table.
class HuffmanTable {
public:
    bool isSet() const { return isSet_; }
    // `counts` of codes of 1 … 16 bits, then the categories in order. False when they are no code.
    bool set(std::span<const std::byte> counts, std::span<const std::byte> categories) {
        unsigned code = 0;
        std::size_t next = 0;
        std::fill(fast_.begin(), fast_.end(), Entry{});
        for (int length = 1; length <= 16; ++length) {
            const auto count = std::to_integer<unsigned>(counts[std::size_t(length - 1)]);
            firstCode_[length] = int(code);
            firstIndex_[length] = int(next);
            if (code + count > 1u << length || next + count > categories.size()) return false;
            for (unsigned i = 0; i < count; ++i, ++code, ++next) {
                const auto category = std::to_integer<std::uint8_t>(categories[next]);
                if (category > 16) return false;
                categories_[next] = category;
                if (length > kFastBits) continue;
                std::fill_n(fast_.begin() + std::ptrdiff_t(code << (kFastBits - length)),
                            std::size_t(1) << (kFastBits - length),
                            Entry{std::uint8_t(length), category});
            }
            endCode_[length] = int(code);
            code <<= 1;
        }
        isSet_ = true;
        return true;
    }
    struct Entry {
        std::uint8_t length = 0, category = 0; // length 0: a longer code, or none
    };
    // The code that the 16 bits begin with.
    Entry find(unsigned bits) const {
        const Entry quick = fast_[bits >> (16 - kFastBits)];
        if (quick.length) return quick;
        for (int length = kFastBits + 1; length <= 16; ++length) {
            const int code = int(bits >> (16 - length));
            if (code < endCode_[length] && code >= firstCode_[length])
                return {std::uint8_t(length),
                        categories_[std::size_t(firstIndex_[length] + code - firstCode_[length])]};
        }
        return {};
    }

private:
    bool isSet_ = false;
    std::array<Entry, 1 << kFastBits> fast_{};
    std::array<int, 17> firstCode_{}, endCode_{}, firstIndex_{};
    std::array<std::uint8_t, 256> categories_{};
};

// The entropy-coded bits, without the zero bytes stuffed behind 0xff. Past the end come zeros.
class BitReader {
public:
    explicit BitReader(std::span<const std::byte> data)
        : at_(reinterpret_cast<const std::uint8_t*>(data.data())), end_(at_ + data.size()) {}
    // At least 32 bits ready.
    void fill() {
        if (count_ >= 32) return;
        if (end_ - at_ >= 8) {
            std::uint32_t word;
            std::memcpy(&word, at_, sizeof word);
            const std::uint32_t inverse = ~word;
            const bool hasMark = ((inverse - 0x01010101u) & ~inverse & 0x80808080u) != 0;
            if (!hasMark) {
                bits_ |= std::uint64_t(__builtin_bswap32(word)) << (32 - count_);
                count_ += 32;
                at_ += 4;
                return;
            }
        }
        while (count_ <= 56)
            addByte();
    }
    unsigned peek16() const { return unsigned(bits_ >> 48); }
    void skip(int n) {
        bits_ <<= n;
        count_ -= n;
    }
    // n is 1 … 16.
    unsigned take(int n) {
        const auto value = unsigned(bits_ >> (64 - n));
        skip(n);
        return value;
    }
    // Whether more was asked for than there is.
    bool isOver() const { return added_ * 8 > count_; }

private:
    void addByte() {
        std::uint64_t byte = 0;
        if (at_ < end_ && !(at_[0] == 0xff && (end_ - at_ < 2 || at_[1] != 0))) {
            byte = *at_;
            at_ += byte == 0xff ? 2 : 1;
        } else {
            at_ = end_; // a marker ends the data
            ++added_;
        }
        bits_ |= byte << (56 - count_);
        count_ += 8;
    }
    const std::uint8_t* at_;
    const std::uint8_t* end_;
    std::uint64_t bits_ = 0;
    int count_ = 0;
    int added_ = 0;
};

struct Frame {
    int precision = 0, width = 0, height = 0, components = 0;
    int predictor = 0, shift = 0;
    std::array<int, kMaximumComponents> identifiers{};
    std::array<const HuffmanTable*, kMaximumComponents> tables{};
};

int differenceFrom(BitReader& bits, const HuffmanTable& table, bool& isSound) {
    bits.fill();
    const HuffmanTable::Entry entry = table.find(bits.peek16());
    if (entry.length == 0) {
        isSound = false;
        return 0;
    }
    bits.skip(entry.length);
    const int n = entry.category;
    if (n == 0) return 0;
    if (n == 16) return 32768;
    const int value = int(bits.take(n));
    return value < 1 << (n - 1) ? value - (1 << n) + 1 : value;
}

int predicted(int predictor, int left, int above, int corner) {
    switch (predictor) {
    case 2:
        return above;
    case 3:
        return corner;
    case 4:
        return left + above - corner;
    case 5:
        return left + ((above - corner) >> 1);
    case 6:
        return above + ((left - corner) >> 1);
    case 7:
        return (left + above) >> 1;
    default:
        return left;
    }
}

// The headers up to the entropy-coded data.
class Headers {
public:
    explicit Headers(std::span<const std::byte> data) : data_(data) {}
    // The rest of the data; empty when something is wrong or unusual.
    std::span<const std::byte> read(Frame& frame) {
        std::size_t at = 2;
        while (at + 4 <= data_.size() && byte(at) == 0xff) {
            const unsigned marker = byte(at + 1);
            const std::size_t length = byte(at + 2) << 8 | byte(at + 3);
            if (length < 2 || at + 2 + length > data_.size()) return {};
            const auto content = data_.subspan(at + 4, length - 2);
            at += 2 + length;
            bool isSound = true;
            if (marker == 0xc3) isSound = readFrame(content, frame);
            if (marker == 0xc4) isSound = readTables(content);
            if (marker == 0xdd) isSound = false;
            if (marker == 0xda) {
                if (!readScan(content, frame)) return {};
                return data_.subspan(at);
            }
            if (!isSound) return {};
        }
        return {};
    }

private:
    unsigned byte(std::size_t i) const { return std::to_integer<unsigned>(data_[i]); }
    static int value(std::span<const std::byte> s, std::size_t i) {
        return std::to_integer<int>(s[i]);
    }
    static bool readFrame(std::span<const std::byte> s, Frame& frame) {
        if (s.size() < 6) return false;
        frame.precision = value(s, 0);
        frame.height = value(s, 1) << 8 | value(s, 2);
        frame.width = value(s, 3) << 8 | value(s, 4);
        frame.components = value(s, 5);
        if (frame.components < 1 || frame.components > kMaximumComponents ||
            s.size() < 6 + 3 * std::size_t(frame.components))
            return false;
        for (int c = 0; c < frame.components; ++c) {
            const std::size_t at = 6 + 3 * std::size_t(c);
            frame.identifiers[std::size_t(c)] = value(s, at);
            if (value(s, at + 1) != 0x11) return false;
        }
        return frame.precision >= 2 && frame.precision <= 16 && frame.width > 0 && frame.height > 0;
    }
    bool readTables(std::span<const std::byte> s) {
        while (s.size() >= 17) {
            const int id = value(s, 0);
            if (id > 3) return false;
            std::size_t total = 0;
            for (std::size_t i = 1; i <= 16; ++i)
                total += std::to_integer<std::size_t>(s[i]);
            if (total > 256 || s.size() < 17 + total) return false;
            if (!tables_[std::size_t(id)].set(s.subspan(1, 16), s.subspan(17, total))) return false;
            s = s.subspan(17 + total);
        }
        return true;
    }
    bool readScan(std::span<const std::byte> s, Frame& frame) const {
        const auto n = std::size_t(frame.components);
        if (n == 0 || s.size() < 4 + 2 * n || value(s, 0) != frame.components) return false;
        for (std::size_t c = 0; c < n; ++c) {
            const auto id = std::size_t(value(s, 2 + 2 * c) >> 4);
            if (value(s, 1 + 2 * c) != frame.identifiers[c] || id > 3 || !tables_[id].isSet())
                return false;
            frame.tables[c] = &tables_[id];
        }
        frame.predictor = value(s, 1 + 2 * n);
        frame.shift = value(s, 3 + 2 * n) & 15;
        return frame.predictor >= 1 && frame.predictor <= 7 && frame.shift < frame.precision;
    }

    std::span<const std::byte> data_;
    std::array<HuffmanTable, 4> tables_;
};

// One row; `above` is null for the first.
bool decodeRow(BitReader& bits, const Frame& frame, const std::uint16_t* above,
               std::uint16_t* row) {
    const int n = frame.components, samples = n * frame.width;
    bool isSound = true;
    for (int c = 0; c < n; ++c) {
        const int start = above ? above[c] : 1 << (frame.precision - frame.shift - 1);
        row[c] =
            std::uint16_t(start + differenceFrom(bits, *frame.tables[std::size_t(c)], isSound));
    }
    // In the first row the left neighbour predicts whatever the header says.
    const int predictor = above ? frame.predictor : 1;
    if (predictor == 1) {
        std::array<int, kMaximumComponents> left{};
        std::copy_n(row, n, left.begin());
        for (int i = n; i < samples; i += n) {
            for (int c = 0; c < n; ++c) {
                int& value = left[std::size_t(c)];
                value = std::uint16_t(value +
                                      differenceFrom(bits, *frame.tables[std::size_t(c)], isSound));
                row[i + c] = std::uint16_t(value);
            }
        }
        return isSound;
    }
    for (int i = n; i < samples; ++i) {
        const int guess = predicted(predictor, row[i - n], above[i], above[i - n]);
        row[i] =
            std::uint16_t(guess + differenceFrom(bits, *frame.tables[std::size_t(i % n)], isSound));
    }
    return isSound;
}

} // namespace

struct LosslessRows::State {
    explicit State(std::span<const std::byte> data)
        : headers(data), coded(headers.read(frame)), bits(coded) {}
    Frame frame;
    Headers headers; // which own the frame's tables
    std::span<const std::byte> coded;
    BitReader bits;
    std::vector<std::uint16_t> rows[2];
    int done = 0;
};

LosslessRows::LosslessRows(std::span<const std::byte> data)
    : state_(std::make_unique<State>(data)) {
    for (auto& row : state_->rows)
        row.resize(std::size_t(samples()));
}

LosslessRows::~LosslessRows() = default;

bool LosslessRows::isSound() const {
    return !state_->coded.empty();
}

int LosslessRows::samples() const {
    return state_->frame.width * state_->frame.components;
}

int LosslessRows::count() const {
    return state_->frame.height;
}

const std::uint16_t* LosslessRows::next() {
    State& s = *state_;
    if (s.done == count()) return nullptr;
    std::uint16_t* row = s.rows[s.done & 1].data();
    const std::uint16_t* above = s.done > 0 ? s.rows[1 - (s.done & 1)].data() : nullptr;
    if (!decodeRow(s.bits, s.frame, above, row) || s.bits.isOver()) return nullptr;
    ++s.done;
    if (s.frame.shift == 0) return row;
    // The next row is predicted from what is not shifted yet.
    shifted_.resize(std::size_t(samples()));
    std::transform(row, row + samples(), shifted_.begin(),
                   [&](std::uint16_t v) { return std::uint16_t(v << s.frame.shift); });
    return shifted_.data();
}

bool decodeLosslessJpeg(std::span<const std::byte> data, int rowSamples,
                        const TileSamples& target) {
    LosslessRows rows(data);
    if (!rows.isSound() || rows.samples() != rowSamples || rowSamples < target.width ||
        rows.count() < target.height)
        return false;
    for (int y = 0; y < target.height; ++y) {
        const std::uint16_t* row = rows.next();
        if (!row) return false;
        std::copy_n(row, target.width, target.first + y * target.stride);
    }
    return true;
}

} // namespace kelvaro
