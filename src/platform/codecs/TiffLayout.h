// What the tags of one TIFF directory say about its pixels, read once and checked.
#pragma once

#include "platform/codecs/PictureBuilder.h"
#include "platform/codecs/TiffHandle.h"

namespace kelvaro {

struct TiffLayout {
    PixelSize size;
    int bits = 1;     // per sample as delivered
    int fileBits = 1; // per sample as the file says
    int samples = 1;  // per pixel, extra ones included
    int format = SAMPLEFORMAT_UINT;
    int photometric = PHOTOMETRIC_MINISBLACK;
    int compression = COMPRESSION_NONE;
    int orientation = 1;
    bool isPlanar = false; // each sample in a plane of its own
    bool isTiled = false;
    int tileWidth = 0, tileLength = 0;
    int rowsPerStrip = 0;
    AlphaKind alpha = AlphaKind::none;
    int alphaIndex = 0; // which sample it is
    // Left to libtiff's own conversion to 8-bit RGB: subsampled or old-style colour.
    bool byLibrary = false;

    int planes() const { return isPlanar ? samples : 1; }
    int samplesPerPlane() const { return isPlanar ? 1 : samples; }
};

// Goes to the first directory that is a full picture, neither reduced nor a mask, and reads it. The
// library is told to deliver JPEG data as RGB and logarithmic data as floats.
Result<TiffLayout> readLayout(const DecodeJob& job, TIFF* tiff);

// The colour model, the type of the samples after unpacking, and the rest; the profile included,
// which belongs to `tiff`.
Result<StoredPicture> storedPictureOf(const DecodeJob& job, TIFF* tiff, const TiffLayout& layout);

} // namespace kelvaro
