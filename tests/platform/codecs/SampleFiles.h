// Small picture files of every kind, made with the libraries directly so that they do not depend on
// our own writers. All show patternAt of their stored size.
#pragma once

#include "platform/codecs/CodecTestSupport.h"

namespace kelvaro::test {

struct JpegOptions {
    enum class Colour { yCbCr, grey, cmyk, ycck } colour = Colour::yCbCr;
    bool progressive = false;
    bool adobeInverted = false; // CMYK with Adobe's marker, stored upside down as its programs do
    int orientation = 0;        // none
    Bytes icc;
    int quality = 95;
    bool subsampled = false; // colour, 2 × 2
    int restartRows = 0;     // rows of blocks between restart markers; 0 without
};
Bytes makeJpeg(PixelSize size, const JpegOptions& options);

struct PngOptions {
    int bits = 8;
    int colourType = 2; // PNG's own numbers
    bool interlaced = false;
    bool transparentKey =
        false; // tRNS: palette entry 0 half transparent, or the first pixel's colour
    int orientation = 0;
    double gamma = 0; // gAMA chunk
    bool sRGBChunk = false;
};
Bytes makePng(PixelSize size, const PngOptions& options);

struct TiffOptions {
    int bits = 8, samples = 3;
    int photometric = 2, compression = 1, format = 1, planar = 1, predictor = 1;
    int tile = 0; // side, 0 for strips of 7 rows
    int extraSample = -1;
    int orientation = 0;
    std::string mode = "w"; // libtiff's: b big-endian, 8 BigTIFF
    Bytes icc;
    bool reducedFirst = false; // a smaller first directory that must be passed over
    // Stored value 0 … 1 of a sample (floats: any); patternAt by default.
    std::function<double(int x, int y, int sample)> value;
};
Bytes makeTiff(PixelSize size, const TiffOptions& options);

// A minimal EXIF block with nothing but the orientation.
Bytes exifBlock(int orientation, bool bigEndian);

} // namespace kelvaro::test
