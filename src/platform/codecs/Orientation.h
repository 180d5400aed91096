// EXIF orientation: finding it in a metadata block, and turning stored rows upright while a decoder
// delivers them, or afterwards. Rows are counted from the top.
#pragma once

#include "platform/Bitmap.h"

#include <span>
#include <vector>

namespace kelvaro {

// The Orientation tag (EXIF 2.3, tag 274) of the first directory in a TIFF-structured metadata
// block. 1 … 8; anything absent, out of range or out of bounds counts as 1.
int exifOrientation(std::span<const std::byte> block);

PixelSize uprightSize(PixelSize stored, int orientation);

// Takes stored rows from the top down and puts their pixels where the orientation says.
class UprightBitmap {
public:
    // Throws std::bad_alloc. `orientation` is 1 … 8.
    UprightBitmap(PixelSize stored, int orientation, int channels, SampleType type);

    // Where the next stored row (width × channels samples) is to be written, and the word that it
    // is.
    std::byte* row();
    void rowDone();
    // Where all stored rows are to be written, where that needs no turning; else null.
    std::byte* rows() { return orientation_ == 1 ? bitmap_.row<std::byte>(0) : nullptr; }
    // The picture, once all rows are there.
    Bitmap take();

private:
    void flush();

    PixelSize stored_;
    int orientation_;
    Bitmap bitmap_;
    std::vector<std::byte> band_; // rows on their way; empty where they go straight to the bitmap
    int bandRows_ = 0;            // rows in band_
    int nextRow_ = 0;
};

Bitmap upright(Bitmap stored, int orientation);

} // namespace kelvaro
