// The library's object with its settings made for us and its records turned into ours. Only
// RawDecoder uses it.
#pragma once

#include "base/Cancellation.h"
#include "base/Geometry.h"
#include "platform/raw/EmbeddedJpeg.h"
#include "platform/raw/SensorImage.h"

#include <libraw/libraw.h>

#include <optional>

namespace kelvaro {

class LibRawAccess : public LibRaw {
public:
    LibRawAccess(); // keeps every message to itself
    // Decoding stops soon after `cancellation` is set; null: never.
    void watch(const Cancellation* cancellation);

    SensorLayout layout();
    bool needsProcessing();
    PixelSize processedSize();                             // before orientation
    SensorRect cameraCrop(const SensorRect& active) const; // what the camera's own JPEG shows
    ColourFilters filters();
    CameraMatrices matrices() const;
    BlackLevels black();
    float white() const;
    // How far the maker means the samples to be brightened; none where the file does not say.
    std::optional<double> exposureStops() const;
    double sensitivity() const { return double(imgdata.other.iso_speed); } // ISO; 0: none stated
    bool isLossyDng();
    JpegPlace thumbnail(); // unchecked

    // After unpack(): points the image at the samples; false when there are none.
    bool attachSamples(SensorImage& image);
    // The same samples, to be repaired before anybody reads them; none when they are not integers.
    std::uint16_t* mutableSamples() { return imgdata.rawdata.raw_image; }
    // The library's own black level, balance and demosaic; returns its error code.
    int process(const ChannelValues& balance, bool half);
    void attachProcessed(SensorImage& image);

    // Called by unpack() before it calls the decoder that is named; the one for lossless JPEG
    // gives way to ours, which is faster and hands back what it does not know.
    int get_decoder_info(libraw_decoder_info_t* info) override;

private:
    using Decoder = void (LibRaw::*)();
    void loadLosslessJpeg();
    bool decodeLossless();
    Decoder replaced_ = nullptr;
    const Cancellation* cancellation_ = nullptr;
};

} // namespace kelvaro
