#include "samples/Metadata.h"

#include <cmath>

namespace kelvaro::samples {
namespace {

Exiv2::Rational rational(double value, int denominator) {
    return {std::int32_t(std::lround(value * denominator)), denominator};
}

Exiv2::URational unsignedRational(double value, std::uint32_t denominator) {
    return {std::uint32_t(std::lround(value * denominator)), denominator};
}

// Degrees, minutes and hundredths of seconds.
void setAngle(Exiv2::ExifData& exif, const std::string& key, double degrees,
              const char* reference) {
    const auto hundredths = std::uint32_t(std::lround(std::abs(degrees) * 360000));
    Exiv2::URationalValue value;
    value.value_ = {
        {hundredths / 360000, 1}, {hundredths / 6000 % 60, 1}, {hundredths % 6000, 100}};
    exif.add(Exiv2::ExifKey(key), &value);
    exif[key + "Ref"] = reference;
}

void setPlace(Exiv2::ExifData& exif, const Place& place) {
    exif["Exif.GPSInfo.GPSVersionID"] = "2 3 0 0";
    setAngle(exif, "Exif.GPSInfo.GPSLatitude", place.latitude, place.latitude < 0 ? "S" : "N");
    setAngle(exif, "Exif.GPSInfo.GPSLongitude", place.longitude, place.longitude < 0 ? "W" : "E");
    exif["Exif.GPSInfo.GPSAltitudeRef"] = place.altitude < 0 ? "1" : "0";
    exif["Exif.GPSInfo.GPSAltitude"] = unsignedRational(std::abs(place.altitude), 10);
}

void setLens(Exiv2::ExifData& exif, const PhotoRecord& record) {
    const Lens& lens = record.lens;
    exif["Exif.Photo.LensMake"] = lens.make;
    exif["Exif.Photo.LensModel"] = lens.model;
    Exiv2::URationalValue range;
    range.value_ = {unsignedRational(lens.shortest, 10), unsignedRational(lens.longest, 10),
                    unsignedRational(lens.widest, 10), unsignedRational(lens.widestAtEnd, 10)};
    exif.add(Exiv2::ExifKey("Exif.Photo.LensSpecification"), &range);
    exif["Exif.Photo.MaxApertureValue"] = unsignedRational(2 * std::log2(lens.widest), 100);
    exif["Exif.Photo.FocalLength"] = unsignedRational(record.focalLength, 10);
    exif["Exif.Photo.FocalLengthIn35mmFilm"] =
        std::uint16_t(std::lround(record.focalLength * record.camera.cropFactor));
}

} // namespace

Exiv2::ExifData exifOf(const PhotoRecord& record, PixelSize storedSize) {
    Exiv2::ExifData exif;
    exif["Exif.Image.Make"] = record.camera.make;
    exif["Exif.Image.Model"] = record.camera.model;
    exif["Exif.Image.Software"] = record.camera.software;
    exif["Exif.Image.Orientation"] = std::uint16_t(record.orientation);
    exif["Exif.Image.ImageDescription"] = record.description;
    exif["Exif.Image.Artist"] = record.artist;
    exif["Exif.Image.Copyright"] = "(c) 2025 " + record.artist;
    exif["Exif.Image.DateTime"] = record.taken;

    exif["Exif.Image.XResolution"] = Exiv2::URational(300, 1);
    exif["Exif.Image.YResolution"] = Exiv2::URational(300, 1);
    exif["Exif.Image.ResolutionUnit"] = std::uint16_t(2);
    exif["Exif.Photo.ExifVersion"] = "48 50 51 50";
    exif["Exif.Photo.DateTimeOriginal"] = record.taken;
    exif["Exif.Photo.DateTimeDigitized"] = record.taken;
    exif["Exif.Photo.OffsetTime"] = record.offset;
    exif["Exif.Photo.OffsetTimeOriginal"] = record.offset;
    exif["Exif.Photo.OffsetTimeDigitized"] = record.offset;
    exif["Exif.Photo.SubSecTimeOriginal"] = std::to_string(100 + record.seed * 37 % 900);
    exif["Exif.Photo.ExposureTime"] = Exiv2::URational(std::uint32_t(record.exposureNumerator),
                                                       std::uint32_t(record.exposureDenominator));
    exif["Exif.Photo.FNumber"] = unsignedRational(record.fNumber, 10);
    exif["Exif.Photo.ISOSpeedRatings"] = std::uint16_t(record.iso);
    exif["Exif.Photo.SensitivityType"] = std::uint16_t(2);
    exif["Exif.Photo.ExposureProgram"] = std::uint16_t(record.camera.cropFactor > 2 ? 2 : 3);
    exif["Exif.Photo.ExposureBiasValue"] = rational(record.biasStops, 100);
    exif["Exif.Photo.MeteringMode"] = std::uint16_t(5);
    exif["Exif.Photo.Flash"] = std::uint16_t(record.camera.cropFactor > 2 ? 16 : 0);
    exif["Exif.Photo.WhiteBalance"] = std::uint16_t(0);
    exif["Exif.Photo.ColorSpace"] = std::uint16_t(1);
    exif["Exif.Photo.PixelXDimension"] = std::uint32_t(storedSize.width);
    exif["Exif.Photo.PixelYDimension"] = std::uint32_t(storedSize.height);
    if (!record.camera.serial.empty()) exif["Exif.Photo.BodySerialNumber"] = record.camera.serial;
    setLens(exif, record);
    if (record.place) setPlace(exif, *record.place);
    return exif;
}

void writeExif(const std::filesystem::path& file, const Exiv2::ExifData& exif) {
    const auto image = Exiv2::ImageFactory::open(file.string());
    image->readMetadata();
    for (const Exiv2::Exifdatum& datum : exif)
        image->exifData()[datum.key()] = datum.value();
    image->writeMetadata();
}

} // namespace kelvaro::samples
