// What every decoder is handed, and the sentences with which decoders fail. All decoders answer
// upright pictures through a PictureBuilder.
#pragma once

#include "platform/ImageFiles.h"
#include "platform/codecs/ByteSource.h"

#include <string>

namespace kelvaro {

struct DecodeJob {
    ByteSource& source;
    std::string name; // what messages call the file
    DecodeLimits limits;
    const Cancellation* cancellation = nullptr;

    bool isCancelled() const { return cancellation && cancellation->isCancelled(); }

    Failure damaged() const;                            // malformed content
    Failure brokenOff() const;                          // malformed: the end is missing
    Failure unsupported(const std::string& what) const; // "uses WHAT, which Kelvaro cannot read"
    Failure tooLarge() const;
    Failure outOfMemory() const;
    Failure cancelled() const;
    // What went wrong when a library gave up: a refusal of the system to read comes first.
    Failure afterLibraryError(Failure otherwise) const;
};

// Refuses a claimed size before memory is taken for it: tooLarge above the limits, malformed for an
// empty picture or one whose stored form would need more than the file's length times
// `largestExpansion` bytes (0 leaves that test out). `storedBytes` is the unpacked size.
Result<void> checkClaimedSize(const DecodeJob& job, std::int64_t width, std::int64_t height,
                              std::int64_t outputBytesPerPixel, double storedBytes,
                              double largestExpansion);

// One per format; the content is known to begin like that format.
Result<DecodedBitmap> decodeJpeg(const DecodeJob& job);
Result<DecodedBitmap> decodePng(const DecodeJob& job);
Result<DecodedBitmap> decodeTiff(const DecodeJob& job);
Result<DecodedBitmap> decodeHeif(const DecodeJob& job);

} // namespace kelvaro
