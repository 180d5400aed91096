#include "platform/raw/LosslessJpeg.h"

#include "platform/raw/LosslessBits.h"

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

namespace kelvaro {

namespace {

constexpr int kMaximumComponents = 4;

struct Frame {
    int precision = 0, width = 0, height = 0, components = 0;
    int predictor = 0, shift = 0;
    std::array<int, kMaximumComponents> identifiers{};
    std::array<const HuffmanTable*, kMaximumComponents> tables{};
};

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

// Writes the differences of a row of `kComponents` side by side. Where `kSums`, each is added to
// the one before of its component, and the first to what the row begins with. Where `kShort`, the
// bits of one filling are enough for two.
template<int kComponents, bool kShort, bool kSums>
void readRow(BitReader& reader, const Frame& frame, std::uint16_t* row) {
    constexpr int kGroup = kComponents == 1 ? 2 : kComponents;
    // Copies, which stay in registers.
    BitReader bits = reader;
    const std::array tables = frame.tables;
    std::array<unsigned, kComponents> last{};
    std::copy_n(row, kComponents, last.begin());
    const auto next = [&](int i) __attribute__((always_inline)) {
        if (!kShort || i % 2 == 0) bits.fill();
        const auto c = std::size_t(i % kComponents);
        const auto difference = unsigned(bits.difference(*tables[c]));
        last[c] = kSums ? last[c] + difference : difference;
        return std::uint16_t(last[c]);
    };
    const int samples = kComponents * frame.width;
    int at = 0;
    for (; at + kGroup <= samples; at += kGroup) {
        for (int i = 0; i < kGroup; ++i)
            row[at + i] = next(i);
    }
    if (at < samples) row[at] = next(0);
    reader = bits;
}

using ReadRow = void (*)(BitReader&, const Frame&, std::uint16_t*);

template<bool kShort, bool kSums>
ReadRow readerOf(int components) {
    constexpr ReadRow kReaders[kMaximumComponents] = {
        readRow<1, kShort, kSums>, readRow<2, kShort, kSums>, readRow<3, kShort, kSums>,
        readRow<4, kShort, kSums>};
    return kReaders[components - 1];
}

// How the frame's rows are read, with sums of the differences or without.
std::array<ReadRow, 2> readersFor(const Frame& frame) {
    const int n = frame.components;
    int longest = 0;
    for (int c = 0; c < n; ++c)
        longest = std::max(longest, frame.tables[std::size_t(c)]->longest());
    if (2 * longest <= BitReader::kReady)
        return {readerOf<true, false>(n), readerOf<true, true>(n)};
    return {readerOf<false, false>(n), readerOf<false, true>(n)};
}

// Makes samples of a row of differences that are no sums.
template<int kPredictor>
void addPredictions(int components, int samples, const std::uint16_t* above, std::uint16_t* row) {
    for (int c = 0; c < components; ++c) {
        int left = row[c] = std::uint16_t(row[c] + above[c]), corner = above[c];
        for (int i = c + components; i < samples; i += components) {
            left = std::uint16_t(row[i] + predicted(kPredictor, left, above[i], corner));
            row[i] = std::uint16_t(left);
            corner = above[i];
        }
    }
}

using AddPredictions = void (*)(int, int, const std::uint16_t*, std::uint16_t*);
constexpr AddPredictions kAddPredictions[] = {
    nullptr,           addPredictions<1>, addPredictions<2>, addPredictions<3>,
    addPredictions<4>, addPredictions<5>, addPredictions<6>, addPredictions<7>};

} // namespace

struct LosslessRows::State {
    explicit State(std::span<const std::byte> data)
        : headers(data), coded(headers.read(frame)), bytes(coded, longestRow()) {
        if (!coded.empty()) readers = readersFor(frame);
    }
    // Bytes of a row, all of it in the longest codes with the longest differences.
    std::size_t longestRow() const {
        return std::size_t(frame.width) * std::size_t(frame.components) * sizeof(std::uint32_t) +
               BitReader::kAhead;
    }
    // `above` is null for the first row. False where the data are damaged.
    bool read(const std::uint16_t* above, std::uint16_t* row) {
        for (int c = 0; c < frame.components; ++c)
            row[c] = std::uint16_t(above ? above[c] : 1 << (frame.precision - frame.shift - 1));
        // In the first row the left neighbour predicts whatever the header says.
        const bool isSum = !above || frame.predictor == 1;
        BitReader bits(bytes.next(usedBits / 8, longestRow()), int(usedBits % 8));
        readers[isSum](bits, frame, row);
        usedBits = bits.used();
        if (!bits.isSound() || bytes.isOver(usedBits)) return false;
        if (!isSum) {
            kAddPredictions[frame.predictor](frame.components, frame.width * frame.components,
                                             above, row);
        }
        return true;
    }
    Frame frame;
    Headers headers; // which own the frame's tables
    std::span<const std::byte> coded;
    CodedBytes bytes;
    std::array<ReadRow, 2> readers{};
    std::size_t usedBits = 0; // of the bytes given last
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
    if (!s.read(above, row)) {
        s.done = count(); // nothing that follows can be right
        return nullptr;
    }
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
