#include "render/SettlingChange.h"

#include "platform/ImageSpace.h"

#include <algorithm>
#include <tuple>

namespace kelvaro {

namespace {

// How far an 8-bit sample may move and still be changed as much, and how much farther until it is
// not changed at all.
constexpr int kNear = 8, kFadeBits = 4, kFade = 1 << kFadeBits;

// All in 16 bits, of which vectors hold most.
void changeRow(const std::uint8_t* now, const std::uint8_t* reduced, const std::uint8_t* settled,
               std::uint8_t* out, std::size_t count) {
    using Word = std::int16_t;
    for (std::size_t i = 0; i < count; ++i) {
        const Word is = now[i], was = reduced[i], became = settled[i];
        const Word moved = Word(is - was), far = std::max<Word>(moved, Word(-moved));
        const Word weight =
            std::min<Word>(std::max<Word>(Word(kNear + kFade - far), 0), Word(kFade));
        const Word change = Word(Word(became - was) * weight + kFade / 2) >> kFadeBits;
        const Word sum = Word(is + change);
        out[i] = std::uint8_t(std::min<Word>(std::max<Word>(sum, 0), 255));
    }
}

} // namespace

bool SettlingChange::describes(const ViewRequest& other, const Image& decode) const {
    const auto shape = [](const Adjustments& edit) {
        return std::tie(edit.cropLeft, edit.cropRight, edit.cropTop, edit.cropBottom,
                        edit.straighten);
    };
    return from == decode && request.looksFromWhere(other) &&
           shape(request.edit) == shape(other.edit);
}

std::shared_ptr<const Bitmap> SettlingChange::appliedTo(const Bitmap& now,
                                                        const PixelRect& part) const {
    if (!rect.contains(part) || now.channels != reduced->channels) return nullptr;
    const auto out = std::make_shared<Bitmap>(now.size, now.channels, now.type);
    const int firstRow = rowOfLine(rect, lineOfRow(part, 0));
    const std::size_t firstSample = std::size_t(part.x - rect.x) * std::size_t(now.channels);
    for (int row = 0; row < now.size.height; ++row) {
        changeRow(now.row<std::uint8_t>(row),
                  reduced->row<std::uint8_t>(firstRow + row) + firstSample,
                  settled->row<std::uint8_t>(firstRow + row) + firstSample,
                  out->row<std::uint8_t>(row), now.rowBytes());
    }
    return out;
}

} // namespace kelvaro
