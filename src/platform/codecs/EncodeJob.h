// What every encoder is handed, and the sentences with which encoders fail when the file that they
// write to is not to blame.
#pragma once

#include "platform/ImageFiles.h"
#include "platform/codecs/OutputSink.h"

namespace kelvaro {

struct EncodeJob {
    const Bitmap& pixels; // without samples where the picture comes in strips
    EncodeSettings settings;
    OutputSink& sink;
    const Cancellation* cancellation = nullptr;
    const StripSource* strips = nullptr; // JPEG only

    bool isCancelled() const { return cancellation && cancellation->isCancelled(); }
    Failure cancelled() const {
        return {FailureKind::cancelled, "Writing of the picture was cancelled."};
    }
    Failure outOfMemory() const {
        return {FailureKind::outOfMemory, "There is not enough memory to write the picture."};
    }
    Failure notEncoded() const {
        return {FailureKind::internal, "The picture could not be encoded."};
    }
    // What went wrong when a library gave up: the file's own failure comes first.
    Failure afterLibraryError() const { return afterError(notEncoded()); }
    Failure afterError(Failure other) const {
        return isCancelled() ? cancelled() : sink.failureOr(std::move(other));
    }
};

// One per format; samples and channels are of a kind that the format takes.
Result<void> encodeJpeg(const EncodeJob& job);
Result<void> encodePng(const EncodeJob& job);
Result<void> encodeTiff(const EncodeJob& job);
Result<void> encodeHeif(const EncodeJob& job);

} // namespace kelvaro
