// LibRaw behind one door: opens a file, describes its sensor, unpacks its samples and finds its
// preview. All exceptions and error codes of the library end here as failures that name the file;
// it prints nothing. One thread at a time.
#pragma once

#include "base/Cancellation.h"
#include "base/Result.h"
#include "platform/ImageFiles.h"
#include "platform/RawEngine.h"
#include "platform/raw/DngTags.h"
#include "platform/raw/RawStream.h"
#include "platform/raw/SensorImage.h"
#include "platform/raw/StoredSamples.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace kelvaro {

class LibRawAccess; // the library's object, with what it protects

class RawDecoder {
public:
    // Failures: those of RawStream, unsupported, malformed, tooLarge, outOfMemory.
    static Result<std::unique_ptr<RawDecoder>> open(const std::filesystem::path& path);
    ~RawDecoder();

    // The sensor without samples.
    const SensorImage& description() const { return description_; }
    // The samples, valid until the next call or the decoder's end. Filters that our own development
    // does not know (more than three colours, sensors turned by 45°) come back from the library's
    // own processing: linear, full colour, already balanced, at half size when `reduction` is 2.
    // Failures: malformed (damaged or cut off), tooLarge, outOfMemory, cancelled.
    Result<SensorImage> samples(int reduction, const Cancellation* cancellation);
    // See RawFile::preview.
    Result<std::optional<EmbeddedPreview>> preview(int atLeastPx);
    // A small picture of the photo that is no JPEG; see EmbeddedBitmap.h.
    std::optional<DecodedBitmap> bitmapPreview() const;
    // By how many stops a preview must differ to be believed rather than the file about how far to
    // brighten; none where the file alone decides.
    std::optional<double> exposureDoubtStops() const { return exposureDoubtStops_; }
    // Whether it says which white the camera took; if not, it can be told later, as the camera
    // values of a white surface.
    bool statesWhite() const { return camera_.neutral || camera_.whiteXy; }
    void setNeutral(const ChannelValues& neutral);
    // Whether samples() come from the library's own processing; if not, they stay as they are once
    // they were unpacked.
    bool processesItself() const { return needsProcessing_; }
    const std::string& name() const { return name_; } // of the file, for messages

private:
    RawDecoder(std::unique_ptr<RawStream> stream, std::string name);
    Result<void> identify();
    void describe();
    void describeExposure();
    void describeShape();
    void describeLevels();
    void describeColour();
    Result<void> checkSize() const;
    Result<void> unpack(const Cancellation* cancellation);
    bool unpackTiles(const Cancellation* cancellation);
    bool attachSamples(SensorImage& image);
    void repair();
    void measureGreens();
    void measureSaturation();
    Result<SensorImage> processed(int reduction);
    Failure failure(int code) const;

    std::string name_;
    std::unique_ptr<RawStream> stream_;
    std::unique_ptr<LibRawAccess> library_;
    std::unique_ptr<TiffFile> directories_;
    std::optional<DngTags> dng_;
    CameraMatrices camera_;
    SensorImage description_;
    StoredSamples ownSamples_; // decoded by us; else the library has them
    bool needsProcessing_ = false;
    std::optional<double> exposureDoubtStops_ = 0;
    bool isUnpacked_ = false;
};

} // namespace kelvaro
