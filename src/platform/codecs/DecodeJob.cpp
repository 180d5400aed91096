#include "platform/codecs/DecodeJob.h"

namespace kelvaro {

Failure DecodeJob::damaged() const {
    return {FailureKind::malformed, "“" + name + "” is damaged and cannot be decoded."};
}
Failure DecodeJob::brokenOff() const {
    return {FailureKind::malformed, "“" + name + "” is incomplete: the picture breaks off."};
}
Failure DecodeJob::unsupported(const std::string& what) const {
    return {FailureKind::unsupported, "“" + name + "” uses " + what + ", which cannot be read."};
}
Failure DecodeJob::tooLarge() const {
    return {FailureKind::tooLarge, "“" + name + "” claims to be too large to decode."};
}
Failure DecodeJob::outOfMemory() const {
    return {FailureKind::outOfMemory, "There is not enough memory to decode “" + name + "”."};
}
Failure DecodeJob::cancelled() const {
    return {FailureKind::cancelled, "Decoding of “" + name + "” was cancelled."};
}

Failure DecodeJob::afterLibraryError(Failure otherwise) const {
    if (source.hasFailed())
        return {FailureKind::unreadable, "“" + name + "” could not be read to its end."};
    return otherwise;
}

Result<void> checkClaimedSize(const DecodeJob& job, std::int64_t width, std::int64_t height,
                              std::int64_t outputBytesPerPixel, double storedBytes,
                              double largestExpansion) {
    if (width <= 0 || height <= 0) return fail(job.damaged());
    constexpr std::int64_t kLongestSide = 1 << 28; // what image space can address
    if (width > kLongestSide || height > kLongestSide) return fail(job.tooLarge());
    const double pixels = double(width) * double(height);
    if (pixels > double(job.limits.maximumPixels)) return fail(job.tooLarge());
    if (pixels * double(outputBytesPerPixel) > double(job.limits.maximumBytes))
        return fail(job.tooLarge());
    if (largestExpansion > 0 && storedBytes > double(job.source.size()) * largestExpansion)
        return fail(job.brokenOff());
    return {};
}

} // namespace kelvaro
