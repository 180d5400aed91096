// JPEG files whose scan is parted by restart markers, as ours are, decoded on all cores.
#pragma once

#include "platform/codecs/DecodeJob.h"
#include "platform/codecs/JpegErrors.h"

namespace kelvaro {

struct JpegTarget {
    J_COLOR_SPACE colour = JCS_RGB;
    unsigned reduction = 1; // 1, 2, 4 or 8
    PixelSize size;         // reduced
    std::byte* rows = nullptr;
    std::size_t rowBytes = 0;
};

// The same pixels that one thread would make. False where the file is not of that kind, or not
// sound, or the job is cancelled; the rows hold anything then. Throws std::bad_alloc.
bool decodeJpegInBands(const DecodeJob& job, const JpegTarget& target);

} // namespace kelvaro
