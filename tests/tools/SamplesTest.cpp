#include "samples/Dng.h"
#include "samples/Drawing.h"
#include "samples/Heic.h"
#include "samples/Metadata.h"

#include <gtest/gtest.h>

#include <libheif/heif.h>
#include <libraw/libraw.h>

#include <cmath>
#include <set>
#include <unistd.h>

namespace kelvaro::samples {
namespace {

class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& extension) {
        static int number = 0;
        path_ = std::filesystem::temp_directory_path() /
                ("kelvaro sample " + std::to_string(::getpid()) + "-" + std::to_string(number++) +
                 extension);
    }
    ~TemporaryFile() { std::filesystem::remove(path_); }
    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

Picture flat(PixelSize size, float r, float g, float b) {
    Picture picture{size, {}};
    for (int i = 0; i < size.width * size.height; ++i)
        picture.rgb.insert(picture.rgb.end(), {r, g, b});
    return picture;
}

PhotoRecord recordWith(FileKind kind, bool twoIlluminants) {
    for (PhotoRecord& record : sampleRecords(kStandardCount))
        if (record.kind == kind && sensorOf(record).twoIlluminants == twoIlluminants) return record;
    ADD_FAILURE() << "there is no such photo";
    return {};
}

} // namespace

TEST(Samples, namesAreUniqueEvenWithoutTheirExtension) {
    std::set<std::string> names;
    for (const PhotoRecord& record : sampleRecords(500)) {
        EXPECT_TRUE(names.insert(std::filesystem::path(record.name).stem()).second) << record.name;
        EXPECT_EQ(record.taken.size(), 19u) << record.taken;
    }
}

TEST(Samples, scenesAreFiniteRepeatableAndSpanManyStops) {
    for (int kind = 0; kind < kSceneKinds; ++kind) {
        const Picture picture = draw(SceneKind(kind), 3, {150, 100});
        EXPECT_EQ(picture.rgb, draw(SceneKind(kind), 3, {150, 100}).rgb);
        EXPECT_NE(picture.rgb, draw(SceneKind(kind), 4, {150, 100}).rgb);
        const auto [least, most] = std::minmax_element(picture.rgb.begin(), picture.rgb.end());
        EXPECT_GE(*least, 0) << Scene::title(SceneKind(kind));
        EXPECT_TRUE(std::isfinite(*most));
        EXPECT_GT(*most, 32 * std::max(*least, 1e-6f)) << Scene::title(SceneKind(kind));
    }
}

// EXIF 2.3, tag Orientation: where row 0 and column 0 of the stored picture lie when it is upright.
TEST(Samples, storedPixelsLieWhereTheOrientationSays) {
    Picture upright = flat({3, 2}, 0, 0, 0);
    const float red = 1, blue = 2; // top-left, top-right
    upright.pixel(0, 0)[0] = red;
    upright.pixel(2, 0)[0] = blue;
    struct Case {
        int orientation;
        PixelSize size;
        int redX, redY, blueX, blueY;
    };
    for (const Case& c : {Case{1, {3, 2}, 0, 0, 2, 0}, Case{3, {3, 2}, 2, 1, 0, 1},
                          Case{6, {2, 3}, 0, 2, 0, 0}, Case{8, {2, 3}, 1, 0, 1, 2}}) {
        const Picture result = stored(upright, c.orientation);
        EXPECT_EQ(result.size, c.size) << c.orientation;
        EXPECT_EQ(result.pixel(c.redX, c.redY)[0], red) << c.orientation;
        EXPECT_EQ(result.pixel(c.blueX, c.blueY)[0], blue) << c.orientation;
    }
}

// A grey card must give the neutral that the file claims, at the level that the exposure asks for,
// and the masked border must give the black level.
TEST(Samples, sensorSeesAGreyCardAsItsNeutral) {
    for (const bool twoIlluminants : {true, false}) {
        const PhotoRecord record = recordWith(FileKind::dng, twoIlluminants);
        const SensorModel sensor = sensorOf(record);
        const double grey = 0.18;
        const Mosaic mosaic = expose(flat({200, 200}, 0.18f, 0.18f, 0.18f), sensor, record, 5000);
        double sums[4] = {}, masked = 0;
        int maskedCount = 0;
        for (int y = 0; y < mosaic.size.height; ++y)
            for (int x = 0; x < mosaic.size.width; ++x) {
                const double value = mosaic.samples[std::size_t(y * mosaic.size.width + x)];
                if (x < sensor.maskedLeft || y < sensor.maskedTop)
                    masked += value, ++maskedCount;
                else
                    sums[(y & 1) * 2 + (x & 1)] += (value - sensor.black) / 10000;
            }
        EXPECT_NEAR(masked / maskedCount, sensor.black, 0.5);
        const double expected = grey * std::exp2(record.renderedStops - sensor.baselineStops) *
                                (sensor.white - sensor.black);
        EXPECT_NEAR(sums[0] / (expected * mosaic.neutral[0]), 1, 0.005);
        EXPECT_NEAR(sums[1] / expected, 1, 0.005);
        EXPECT_NEAR(sums[2] / expected, 1, 0.005);
        EXPECT_NEAR(sums[3] / (expected * mosaic.neutral[2]), 1, 0.005);
    }
}

TEST(Samples, rawFileIsReadAsItWasMeant) {
    for (const bool twoIlluminants : {true, false}) {
        const PhotoRecord record = recordWith(FileKind::dng, twoIlluminants);
        const SensorModel sensor = sensorOf(record);
        const Picture light = draw(record.scene, record.seed, {240, 160});
        const Mosaic mosaic = expose(light, sensor, record, 5000);
        const TemporaryFile file(".dng");
        writeDng(file.path(), mosaic, sensor, rendered(reduced(light, 2), 0.5, SampleType::u8),
                 record);
        writeExif(file.path(), exifOf(record, light.size));

        LibRaw raw;
        ASSERT_EQ(raw.open_file(file.path().c_str()), LIBRAW_SUCCESS);
        const auto& data = raw.imgdata;
        EXPECT_EQ(data.sizes.width, 240);
        EXPECT_EQ(data.sizes.height, 160);
        EXPECT_EQ(data.idata.filters, 0xb4b4b4b4u); // R, G, second G, B from the top-left
        EXPECT_EQ(data.color.maximum, unsigned(sensor.white));
        EXPECT_EQ(data.sizes.flip, record.orientation == 8 ? 5 : 0);
        EXPECT_NEAR(data.color.cam_mul[0], 1 / mosaic.neutral[0], 1e-3);
        EXPECT_NEAR(data.color.cam_mul[2], 1 / mosaic.neutral[2], 1e-3);
        EXPECT_EQ(std::string(data.lens.Lens), record.lens.model);
        EXPECT_NEAR(data.color.dng_levels.baseline_exposure, sensor.baselineStops, 1e-6);
        ASSERT_EQ(raw.unpack(), LIBRAW_SUCCESS);
        EXPECT_EQ(raw.imgdata.color.black, unsigned(sensor.black));
        const std::size_t pitch = raw.imgdata.sizes.raw_pitch / 2u;
        bool equal = true;
        for (int y = 0; y < mosaic.size.height; ++y)
            equal = equal && std::equal(&mosaic.samples[std::size_t(y * mosaic.size.width)],
                                        &mosaic.samples[std::size_t(y * mosaic.size.width)] +
                                            mosaic.size.width,
                                        raw.imgdata.rawdata.raw_image + std::size_t(y) * pitch);
        EXPECT_TRUE(equal) << "the samples changed on their way";
        ASSERT_EQ(raw.unpack_thumb(), LIBRAW_SUCCESS);
        EXPECT_EQ(raw.imgdata.thumbnail.tformat, LIBRAW_THUMBNAIL_JPEG);
        EXPECT_EQ(raw.imgdata.thumbnail.twidth, 120);
    }
}

TEST(Samples, heicIsUprightForAReader) {
    PhotoRecord record = recordWith(FileKind::heic, false);
    Picture upright = flat({64, 128}, 0.02f, 0.02f, 0.02f);
    for (int y = 0; y < 32; ++y) // a red top
        for (int x = 0; x < 64; ++x)
            upright.pixel(x, y)[0] = 0.9f;
    for (const int orientation : {1, 3, 6, 8}) {
        const TemporaryFile file(".heic");
        Exiv2::ExifData exif = exifOf(record, {64, 128});
        Exiv2::Blob blob;
        Exiv2::ExifParser::encode(blob, Exiv2::littleEndian, exif);
        writeHeic(file.path(), rendered(stored(upright, orientation), 0, SampleType::u8),
                  orientation, blob);

        heif_context* context = heif_context_alloc();
        ASSERT_EQ(heif_context_read_from_file(context, file.path().c_str(), nullptr).code,
                  heif_error_Ok);
        heif_image_handle* handle = nullptr;
        ASSERT_EQ(heif_context_get_primary_image_handle(context, &handle).code, heif_error_Ok);
        heif_image* image = nullptr;
        ASSERT_EQ(heif_decode_image(handle, &image, heif_colorspace_RGB,
                                    heif_chroma_interleaved_RGB, nullptr)
                      .code,
                  heif_error_Ok);
        EXPECT_EQ(heif_image_get_primary_width(image), 64) << orientation;
        EXPECT_EQ(heif_image_get_primary_height(image), 128) << orientation;
        int stride = 0;
        const std::uint8_t* plane =
            heif_image_get_plane_readonly(image, heif_channel_interleaved, &stride);
        EXPECT_GT(plane[stride * 8 + 3 * 32], 200) << orientation;
        EXPECT_LT(plane[stride * 120 + 3 * 32], 80) << orientation;
        EXPECT_EQ(heif_image_handle_get_number_of_metadata_blocks(handle, "Exif"), 1);
        heif_image_release(image);
        heif_image_handle_release(handle);
        heif_context_free(context);
    }
}

} // namespace kelvaro::samples
