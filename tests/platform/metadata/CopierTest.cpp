// What an exported picture takes over from its photo, in every format: written by our writers and
// read back both by our reader and by the library.
#include "fakes/TemporaryFolder.h"
#include "places/Places.h"
#include "platform/codecs/CodecImageFiles.h"
#include "platform/metadata/ExifMetadataCopier.h"
#include "platform/metadata/ExifPropertyReader.h"
#include "platform/system/PosixFileSystem.h"

#include <cstdlib>
#include <cstring>
#include <exiv2/exiv2.hpp>
#include <gtest/gtest.h>

namespace kelvaro {
namespace {

namespace fs = std::filesystem;

constexpr struct {
    const char* name;
    FileFormat format;
} kFormats[] = {{"a.jpg", FileFormat::jpeg},
                {"a.heic", FileFormat::heic},
                {"a.tif", FileFormat::tiff},
                {"a.png", FileFormat::png}};

Bitmap grey(PixelSize size) {
    Bitmap pixels(size, 3, SampleType::u8);
    std::memset(pixels.samples.get(), 90, pixels.bytes());
    return pixels;
}

class CopierTest : public testing::Test {
protected:
    void write(const fs::path& path, FileFormat format, const EmbeddedMetadata& metadata) {
        auto file = files.create(path).value();
        EncodeSettings settings{format, 0.9, OutputSpace::sRGB, metadata};
        ASSERT_TRUE(makeImageWriter()->encode(grey({48, 32}), settings, *file)) << path;
        ASSERT_TRUE(file->commit());
    }

    // A JPEG file of a camera, with everything that must and must not travel.
    fs::path photo() {
        write(folder / "photo.jpg", FileFormat::jpeg, {});
        const auto image = Exiv2::ImageFactory::open((folder / "photo.jpg").string());
        image->readMetadata();
        Exiv2::ExifData& exif = image->exifData();
        exif["Exif.Image.Make"] = "Canon";
        exif["Exif.Image.Model"] = "Canon EOS 5D";
        exif["Exif.Image.Orientation"] = std::uint16_t(6);
        exif["Exif.Image.DateTime"] = "2024:03:07 10:11:12";
        exif["Exif.Image.Artist"] = "Zoë";
        exif["Exif.Image.XResolution"] = Exiv2::URational(240, 1);
        exif["Exif.Photo.ExposureTime"] = Exiv2::URational(1, 250);
        exif["Exif.Photo.DateTimeOriginal"] = "2024:03:07 10:11:12";
        exif["Exif.Photo.PixelXDimension"] = std::uint32_t(6000);
        exif["Exif.Photo.LensModel"] = "EF 50mm f/1.4";
        exif["Exif.Photo.UserComment"] = "charset=Ascii hello";
        exif["Exif.GPSInfo.GPSLatitudeRef"] = "S";
        exif["Exif.GPSInfo.GPSLatitude"] = "33/1 51/1 123/10";
        exif["Exif.Canon.OwnerName"] = "somebody with a long name";
        exif["Exif.CanonCs.LensType"] = std::uint16_t(21);
        exif["Exif.Canon.ThumbnailImageValidArea"] = "0 159 7 112";
        exif["Exif.Thumbnail.Compression"] = std::uint16_t(6);
        Exiv2::ExifThumb(exif).setJpegThumbnail(reinterpret_cast<const Exiv2::byte*>("old"), 3);
        image->iptcData()["Iptc.Application2.Headline"] = "A headline";
        image->iptcData()["Iptc.Application2.City"] = "Sydney";
        image->writeMetadata();
        return folder / "photo.jpg";
    }

    TemporaryFolder folder;
    PosixFileSystem files;
    ExifMetadataCopier copier;
    ExifPropertyReader reader;
};

TEST_F(CopierTest, CarriesTheSameDictionariesInEveryFormat) {
    const auto copied = copier.copy(photo(), {48, 32}, OutputSpace::sRGB);
    ASSERT_TRUE(copied);
    for (const auto& [name, format] : kFormats) {
        write(folder / name, format, *copied);
        const auto read = reader.read(folder / name);
        ASSERT_TRUE(read) << name;
        EXPECT_EQ(read->tiff.text("Make"), "Canon") << name;
        EXPECT_EQ(read->tiff.text("Model"), "Canon EOS 5D") << name;
        EXPECT_EQ(read->tiff.text("Artist"), "Zoë") << name;
        EXPECT_EQ(read->tiff.number("XResolution"), 240) << name;
        EXPECT_EQ(read->exif.number("ExposureTime"), 1.0 / 250) << name;
        EXPECT_EQ(read->exif.text("DateTimeOriginal"), "2024:03:07 10:11:12") << name;
        EXPECT_EQ(read->exif.text("LensModel"), "EF 50mm f/1.4") << name;
        EXPECT_NEAR(read->gps.number("Latitude").value_or(0), 33 + 51 / 60.0 + 12.3 / 3600, 1e-9)
            << name;
        EXPECT_EQ(read->gps.text("LatitudeRef"), "S") << name;
        EXPECT_EQ(read->exif.integer("PixelXDimension"), 48) << name;
        EXPECT_EQ(read->exif.integer("PixelYDimension"), 32) << name;
        EXPECT_EQ(read->orientation, 1) << name;
        EXPECT_EQ(read->tiff.integer("Orientation"), 1) << name;
        if (format != FileFormat::heic) { // which has no place for IPTC records
            EXPECT_EQ(read->iptc.text("Headline"), "A headline") << name;
            EXPECT_EQ(read->iptc.text("City"), "Sydney") << name;
        }
    }
    EXPECT_NE(copied->xmp.find("A headline"), std::string::npos);
}

TEST_F(CopierTest, KeepsMakerNotesButNoPreviews) {
    const auto copied = copier.copy(photo(), {48, 32}, OutputSpace::sRGB);
    for (const char* name : {"a.jpg", "a.tif"}) {
        write(folder / name, *formatOfExtension(fs::path(name).extension()), *copied);
        const auto image = Exiv2::ImageFactory::open((folder / name).string());
        image->readMetadata();
        Exiv2::ExifData& exif = image->exifData();
        EXPECT_EQ(exif["Exif.Canon.OwnerName"].toString(), "somebody with a long name") << name;
        EXPECT_EQ(exif["Exif.CanonCs.LensType"].toString(), "21") << name;
        for (const auto& datum : exif) {
            EXPECT_EQ(datum.tagName().find("Thumbnail"), std::string::npos) << datum.key();
            EXPECT_NE(datum.groupName(), "Thumbnail") << datum.key();
        }
    }
}

TEST_F(CopierTest, NamesTheColourSpace) {
    const fs::path source = photo();
    for (const auto& [space, code] :
         {std::pair(OutputSpace::sRGB, 1), {OutputSpace::displayP3, 0xffff}}) {
        write(folder / "a.jpg", FileFormat::jpeg, *copier.copy(source, {48, 32}, space));
        EXPECT_EQ(reader.read(folder / "a.jpg")->exif.integer("ColorSpace"), code);
    }
}

TEST_F(CopierTest, DescribesThePictureOfAPhotoWithoutProperties) {
    write(folder / "plain.png", FileFormat::png, {});
    const auto copied = copier.copy(folder / "plain.png", {48, 32}, OutputSpace::sRGB);
    ASSERT_TRUE(copied);
    write(folder / "a.jpg", FileFormat::jpeg, *copied);
    const auto read = reader.read(folder / "a.jpg");
    EXPECT_EQ(read->exif.integer("PixelXDimension"), 48);
    EXPECT_FALSE(read->tiff.find("Make"));
    EXPECT_TRUE(copied->iptc.empty());
}

TEST_F(CopierTest, MakesRoomWhereThereIsTooMuch) {
    const fs::path source = photo();
    {
        const auto image = Exiv2::ImageFactory::open(source.string());
        image->readMetadata();
        image->exifData()["Exif.Photo.UserComment"] = "charset=Ascii " + std::string(30000, 'u');
        image->exifData()["Exif.Image.ImageDescription"] = std::string(30000, 'd');
        image->writeMetadata();
    }
    const auto copied = copier.copy(source, {48, 32}, OutputSpace::sRGB);
    ASSERT_TRUE(copied);
    EXPECT_LE(copied->exif.size(), 65527u);
    write(folder / "a.jpg", FileFormat::jpeg, *copied);
    EXPECT_EQ(reader.read(folder / "a.jpg")->tiff.text("Make"), "Canon");
}

TEST_F(CopierTest, SaysThatThePhotoIsGone) {
    EXPECT_EQ(copier.copy(folder / "none.jpg", {1, 1}, OutputSpace::sRGB).error().kind,
              FailureKind::notFound);
}

// Real photos of many makers: what the reader finds in the copy is what it found in the photo.
TEST_F(CopierTest, KeepsThePropertiesOfRealPhotos) {
    const fs::path photos = places::photos();
    if (!fs::exists(photos)) GTEST_SKIP() << "no photos";
    const auto same = [](const PropertyDictionary& found, const PropertyDictionary& original,
                         const std::string& what) {
        for (const auto& [key, value] : original.values()) {
            static const std::set<std::string> ofTheFile{"PixelXDimension", "PixelYDimension",
                                                         "ColorSpace",      "Orientation",
                                                         "MakerNote",       "InteroperabilityTag"};
            if (ofTheFile.count(key)) continue;
            ASSERT_TRUE(found.find(key)) << what << " " << key;
            const auto* number = std::get_if<double>(&value);
            const bool isNear = number && std::abs(found.number(key).value_or(0) - *number) < 5e-4;
            EXPECT_TRUE(isNear || *found.find(key) == value) << what << " " << key;
        }
    };
    int count = 0;
    for (const char* part : {"raw", "bitmap"})
        for (const auto& entry : fs::directory_iterator(photos / part)) {
            const auto original = reader.read(entry.path());
            const auto copied = copier.copy(entry.path(), {48, 32}, OutputSpace::sRGB);
            if (!original || !copied || original->exif.isEmpty()) continue;
            const auto& [name, format] = kFormats[std::size_t(count++) % 4];
            write(folder / name, format, *copied);
            const auto read = reader.read(folder / name);
            ASSERT_TRUE(read);
            const std::string what = entry.path().filename().string() + " as " + name;
            same(read->exif, original->exif, what);
            same(read->gps, original->gps, what);
            for (const char* key : {"Make", "Model", "DateTime", "Artist", "Copyright"})
                EXPECT_EQ(read->tiff.text(key), original->tiff.text(key)) << what;
        }
    EXPECT_GT(count, 20);
}

} // namespace
} // namespace kelvaro
