// Fakes and pictures that the codec tests share.
#pragma once

#include "platform/codecs/CodecImageFiles.h"

#include <array>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace kelvaro::test {

using Bytes = std::vector<std::byte>;

// A pending file in memory. From call `failAt` on (counted from 1 over reads and writes) it answers
// that the disk is full.
class MemoryFile final : public PendingFile {
public:
    explicit MemoryFile(int failAt = 0) : failAt_(failAt) {}
    Result<void> writeAt(std::int64_t offset, std::span<const std::byte> bytes) override;
    Result<std::size_t> readAt(std::int64_t offset, std::span<std::byte> bytes) override;
    std::int64_t size() const override { return std::int64_t(content.size()); }
    Result<void> commit() override { return {}; }

    Bytes content;
    int calls = 0;

private:
    bool mustFail() { return ++calls >= failAt_ && failAt_ > 0; }
    int failAt_;
};
inline const Failure kDiskFull{FailureKind::diskFull, "The disk is full."};

// A picture whose corners, edges and channels all differ: 0 … 1 by position and channel (3 is
// alpha).
double patternAt(PixelSize size, int x, int y, int channel);
Bitmap pattern(PixelSize size, int channels, SampleType type);

// Sample as 0 … 1 (floats as they are).
double sampleAt(const Bitmap& bitmap, int x, int y, int channel);
// Linear Rec. 709.
std::array<double, 3> linearAt(const DecodedBitmap& decoded, int x, int y);

double sRGBToLinear(double encoded);
double linearToSRGB(double linear);

// Fails the test where decoding fails.
DecodedBitmap decoded(const Bytes& file, const std::string& what);
Bytes encoded(const Bitmap& pixels, const EncodeSettings& settings);

// Largest difference of a decoded sample from what `expected` says for its upright position.
double worstDifference(const Bitmap& bitmap,
                       const std::function<double(int x, int y, int channel)>& expected);

// Where upright pixel (x, y) lies in a file that is stored with this EXIF orientation; `stored` is
// the stored size. Written from the standard's table of corners, independent of the reader.
std::pair<int, int> storedPosition(PixelSize stored, int orientation, int x, int y);

} // namespace kelvaro::test
