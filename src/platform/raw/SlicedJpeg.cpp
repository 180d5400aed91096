#include "platform/raw/SlicedJpeg.h"

#include "platform/raw/LosslessJpeg.h"

#include <algorithm>

namespace kelvaro {

namespace {

// Puts samples where they belong, as they come.
class Filling {
public:
    explicit Filling(const SlicedPicture& picture) : picture_(picture) {
        const auto& [count, width, last] = picture.slices;
        if (count == 0) {
            sliceWidth_ = picture.width;
        } else {
            before_ = count;
            sliceWidth_ = width;
            lastWidth_ = last;
        }
        current_ = before_ > 0 ? sliceWidth_ : lastWidth();
    }
    bool covers() const {
        return before_ >= 0 && sliceWidth_ > 0 && lastWidth() > 0 && picture_.height > 0 &&
               std::int64_t(before_) * sliceWidth_ + lastWidth() == picture_.width;
    }
    bool isFull() const { return left_ >= picture_.width; }
    void add(const std::uint16_t* samples, int count) {
        while (count > 0 && !isFull()) {
            const int used = std::min(count, current_ - column_);
            std::copy_n(samples, used,
                        picture_.samples + std::ptrdiff_t(row_) * picture_.width + left_ + column_);
            samples += used;
            count -= used;
            column_ += used;
            if (column_ < current_) continue;
            column_ = 0;
            if (++row_ < picture_.height) continue;
            row_ = 0;
            left_ += current_;
            current_ = ++slice_ < before_ ? sliceWidth_ : lastWidth();
        }
    }

private:
    int lastWidth() const { return before_ > 0 ? lastWidth_ : sliceWidth_; }
    const SlicedPicture& picture_;
    int before_ = 0, sliceWidth_ = 0, lastWidth_ = 0;
    int slice_ = 0, current_ = 0, left_ = 0; // of the slice
    int row_ = 0, column_ = 0;               // in it
};

} // namespace

bool decodeSlicedJpeg(std::span<const std::byte> data, const SlicedPicture& picture,
                      const Cancellation* cancellation) {
    Filling filling(picture);
    LosslessRows rows(data);
    if (!filling.covers() || !rows.isSound()) return false;
    for (int y = 0; y < rows.count() && !filling.isFull(); ++y) {
        if (cancellation && y % 64 == 0 && cancellation->isCancelled()) return false;
        const std::uint16_t* row = rows.next();
        if (!row) return false;
        filling.add(row, rows.samples());
    }
    return filling.isFull();
}

} // namespace kelvaro
