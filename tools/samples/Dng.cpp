#include "samples/Dng.h"

#include <tiffio.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace kelvaro::samples {
namespace {

constexpr int kIlluminantA = 17, kIlluminantD65 = 21;
// The outermost pixels of the lit area, which demosaicing cannot see all around.
constexpr int kCropMargin = 4;

// A TIFF file that is being written; every call that fails throws.
class TiffFile {
public:
    explicit TiffFile(const std::filesystem::path& file)
        : name_(file.filename().string()), tiff_(TIFFOpen(file.c_str(), "wl"), TIFFClose) {
        check(tiff_ != nullptr);
    }
    template<class... Values>
    void set(std::uint32_t tag, Values... values) {
        check(TIFFSetField(tiff_.get(), tag, values...) == 1);
    }
    void writeRow(const void* row, int y) {
        check(TIFFWriteScanline(tiff_.get(), const_cast<void*>(row), std::uint32_t(y)) == 1);
    }
    void endDirectory() { check(TIFFWriteDirectory(tiff_.get()) == 1); }

private:
    void check(bool done) const {
        if (!done) throw std::runtime_error("\"" + name_ + "\" cannot be written.");
    }
    std::string name_;
    std::unique_ptr<TIFF, void (*)(TIFF*)> tiff_;
};

void setMatrix(TiffFile& tiff, std::uint32_t tag, const Matrix3& matrix) {
    float values[9];
    for (int i = 0; i < 9; ++i)
        values[i] = float(matrix[std::size_t(i / 3)][std::size_t(i % 3)]);
    tiff.set(tag, 9, values);
}

// What holds for the whole file stands in the first directory, beside the preview.
void setColour(TiffFile& tiff, const Mosaic& mosaic, const SensorModel& sensor,
               const PhotoRecord& record) {
    static const std::uint8_t version[4] = {1, 4, 0, 0}, oldestReader[4] = {1, 3, 0, 0};
    tiff.set(TIFFTAG_DNGVERSION, version);
    tiff.set(TIFFTAG_DNGBACKWARDVERSION, oldestReader);
    tiff.set(TIFFTAG_MAKE, record.camera.make.c_str());
    tiff.set(TIFFTAG_MODEL, record.camera.model.c_str());
    tiff.set(TIFFTAG_UNIQUECAMERAMODEL, record.camera.model.c_str());
    tiff.set(TIFFTAG_ORIENTATION, record.orientation);
    if (sensor.twoIlluminants) {
        tiff.set(TIFFTAG_CALIBRATIONILLUMINANT1, kIlluminantA);
        tiff.set(TIFFTAG_CALIBRATIONILLUMINANT2, kIlluminantD65);
        setMatrix(tiff, TIFFTAG_COLORMATRIX1, sensor.underTungsten);
        setMatrix(tiff, TIFFTAG_COLORMATRIX2, sensor.underDaylight);
    } else {
        tiff.set(TIFFTAG_CALIBRATIONILLUMINANT1, kIlluminantD65);
        setMatrix(tiff, TIFFTAG_COLORMATRIX1, sensor.underDaylight);
    }
    const float neutral[3] = {float(mosaic.neutral[0]), float(mosaic.neutral[1]),
                              float(mosaic.neutral[2])};
    tiff.set(TIFFTAG_ASSHOTNEUTRAL, 3, neutral);
    tiff.set(TIFFTAG_BASELINEEXPOSURE, sensor.baselineStops);
}

void writePreview(TiffFile& tiff, const Bitmap& preview) {
    tiff.set(TIFFTAG_SUBFILETYPE, FILETYPE_REDUCEDIMAGE);
    tiff.set(TIFFTAG_IMAGEWIDTH, preview.size.width);
    tiff.set(TIFFTAG_IMAGELENGTH, preview.size.height);
    tiff.set(TIFFTAG_BITSPERSAMPLE, 8);
    tiff.set(TIFFTAG_SAMPLESPERPIXEL, 3);
    tiff.set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    tiff.set(TIFFTAG_COMPRESSION, COMPRESSION_JPEG);
    tiff.set(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_YCBCR);
    tiff.set(TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    tiff.set(TIFFTAG_JPEGQUALITY, 88);
    // One strip with its tables inside: a JPEG file as it stands.
    tiff.set(TIFFTAG_JPEGTABLESMODE, 0);
    tiff.set(TIFFTAG_ROWSPERSTRIP, preview.size.height);
    for (int y = 0; y < preview.size.height; ++y)
        tiff.writeRow(preview.row<std::uint8_t>(y), y);
}

void writeMosaic(TiffFile& tiff, const Mosaic& mosaic, const SensorModel& sensor) {
    tiff.set(TIFFTAG_SUBFILETYPE, 0);
    tiff.set(TIFFTAG_IMAGEWIDTH, mosaic.size.width);
    tiff.set(TIFFTAG_IMAGELENGTH, mosaic.size.height);
    tiff.set(TIFFTAG_BITSPERSAMPLE, 16);
    tiff.set(TIFFTAG_SAMPLESPERPIXEL, 1);
    tiff.set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    tiff.set(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    tiff.set(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_CFA);
    tiff.set(TIFFTAG_ROWSPERSTRIP, 64);
    static const std::uint16_t repeat[2] = {2, 2}, one[2] = {1, 1};
    static const std::uint8_t pattern[4] = {0, 1, 1, 2};
    tiff.set(TIFFTAG_CFAREPEATPATTERNDIM, repeat);
    tiff.set(TIFFTAG_CFAPATTERN, 4, pattern);
    tiff.set(TIFFTAG_CFALAYOUT, 1);
    tiff.set(TIFFTAG_BLACKLEVELREPEATDIM, one);
    const float black = float(sensor.black);
    const std::uint32_t white = std::uint32_t(sensor.white);
    tiff.set(TIFFTAG_BLACKLEVEL, 1, &black);
    tiff.set(TIFFTAG_WHITELEVEL, 1, &white);
    const std::uint32_t active[4] = {
        std::uint32_t(sensor.maskedTop), std::uint32_t(sensor.maskedLeft),
        std::uint32_t(mosaic.size.height), std::uint32_t(mosaic.size.width)};
    tiff.set(TIFFTAG_ACTIVEAREA, active);
    const float origin[2] = {kCropMargin, kCropMargin};
    const float size[2] = {float(mosaic.size.width - sensor.maskedLeft - 2 * kCropMargin),
                           float(mosaic.size.height - sensor.maskedTop - 2 * kCropMargin)};
    tiff.set(TIFFTAG_DEFAULTCROPORIGIN, origin);
    tiff.set(TIFFTAG_DEFAULTCROPSIZE, size);
    for (int y = 0; y < mosaic.size.height; ++y)
        tiff.writeRow(&mosaic.samples[std::size_t(y) * std::size_t(mosaic.size.width)], y);
}

} // namespace

void writeDng(const std::filesystem::path& file, const Mosaic& mosaic, const SensorModel& sensor,
              const Bitmap& preview, const PhotoRecord& record) {
    TiffFile tiff(file);
    const std::uint64_t mosaicDirectory[1] = {0}; // filled in when it is written
    setColour(tiff, mosaic, sensor, record);
    tiff.set(TIFFTAG_SUBIFD, 1, mosaicDirectory);
    writePreview(tiff, preview);
    tiff.endDirectory();
    writeMosaic(tiff, mosaic, sensor);
    tiff.endDirectory();
}

} // namespace kelvaro::samples
