// Embedded profiles against values worked out by hand from their definitions.
#include "platform/codecs/SampleFiles.h"

#include <cmath>
#include <lcms2.h>

namespace kelvaro::test {
namespace {

Bytes saved(cmsHPROFILE profile) {
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    Bytes bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

cmsHPROFILE rgbProfile(cmsCIExyYTRIPLE primaries, cmsToneCurve* curve) {
    const cmsCIExyY d65{0.3127, 0.3290, 1};
    cmsToneCurve* curves[] = {curve, curve, curve};
    cmsHPROFILE profile = cmsCreateRGBProfile(&d65, &primaries, curves);
    cmsFreeToneCurve(curve);
    return profile;
}
constexpr cmsCIExyYTRIPLE kP3{{0.680, 0.320, 1}, {0.265, 0.690, 1}, {0.150, 0.060, 1}};
constexpr cmsCIExyYTRIPLE kAdobe{{0.64, 0.33, 1}, {0.21, 0.71, 1}, {0.15, 0.06, 1}};

cmsHPROFILE p3Profile() {
    return rgbProfile(kP3, cmsBuildGamma(nullptr, 2.2));
}

// The same space as a table from RGB to Lab, so that it has to go through LittleCMS.
Bytes p3TableProfile() {
    cmsHPROFILE matrix = p3Profile(), lab = cmsCreateLab4Profile(nullptr);
    cmsHTRANSFORM toLab =
        cmsCreateTransform(matrix, TYPE_RGB_16, lab, TYPE_Lab_16, INTENT_RELATIVE_COLORIMETRIC, 0);
    cmsPipeline* pipeline = cmsPipelineAlloc(nullptr, 3, 3);
    cmsStage* table = cmsStageAllocCLut16bit(nullptr, 33, 3, 3, nullptr);
    cmsStageSampleCLut16bit(
        table,
        [](const cmsUInt16Number* in, cmsUInt16Number* out, void* transform) -> cmsInt32Number {
            cmsDoTransform(transform, in, out, 1);
            return 1;
        },
        toLab, 0);
    // The format wants curves around a table; these are straight.
    cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 3, nullptr));
    cmsPipelineInsertStage(pipeline, cmsAT_END, table);
    cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 3, nullptr));
    cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
    cmsSetProfileVersion(profile, 4.2);
    cmsSetDeviceClass(profile, cmsSigInputClass);
    cmsSetColorSpace(profile, cmsSigRgbData);
    cmsSetPCS(profile, cmsSigLabData);
    cmsWriteTag(profile, cmsSigMediaWhitePointTag, cmsD50_XYZ());
    cmsWriteTag(profile, cmsSigAToB0Tag, pipeline);
    cmsPipelineFree(pipeline);
    cmsDeleteTransform(toLab);
    cmsCloseProfile(matrix);
    cmsCloseProfile(lab);
    return saved(profile);
}

Bytes greyProfile(double gamma) {
    cmsToneCurve* curve = cmsBuildGamma(nullptr, gamma);
    cmsHPROFILE profile = cmsCreateGrayProfile(cmsD50_xyY(), curve);
    cmsFreeToneCurve(curve);
    return saved(profile);
}

// Two pixels, full red and grey 0.5, as TIFF of any depth.
Bytes redAndGrey(const Bytes& icc, int bits) {
    TiffOptions options;
    options.icc = icc, options.bits = bits;
    if (bits == 32) options.format = 3;
    options.value = [](int x, int, int s) { return x == 0 ? (s == 0 ? 1.0 : 0.0) : 0.5; };
    return makeTiff({2, 1}, options);
}

// Red of each space in linear Rec. 709: M(Rec. 709)^-1 M(space) applied to (1, 0, 0), white D65 in
// both.
TEST(Colour, WidePrimariesLieOutsideRec709) {
    const struct {
        const char* name;
        Bytes icc;
        double red[3], tolerance;
        bool isTable;
    } cases[] = {
        {"Display P3", saved(p3Profile()), {1.22494, -0.04206, -0.01964}, 2e-4, false},
        {"Adobe RGB",
         saved(rgbProfile(kAdobe, cmsBuildGamma(nullptr, 2.2))),
         {1.39836, 0, 0},
         3e-4,
         false},
        {"P3 as a table", p3TableProfile(), {1.22494, -0.04206, -0.01964}, 0.01, true},
    };
    const double grey = std::pow(0.5, 2.2);
    for (const auto& c : cases)
        for (const int bits : {8, 16, 32}) {
            const auto picture = decoded(redAndGrey(c.icc, bits), c.name);
            const bool isFloat = c.isTable || bits == 32;
            EXPECT_EQ(picture.pixels.type == SampleType::f32, isFloat) << c.name << bits;
            const auto red = linearAt(picture, 0, 0), mid = linearAt(picture, 1, 0);
            const double step = bits == 8 ? 0.003 : 0; // 0.5 falls between two of 255 steps
            for (std::size_t i = 0; i < 3; ++i) {
                EXPECT_NEAR(red[i], c.red[i], c.tolerance) << c.name << bits;
                EXPECT_NEAR(mid[i], grey, c.tolerance + step) << c.name << bits;
            }
        }
}

TEST(Colour, SRGBProfilesAreExactlySRGB) {
    // LittleCMS's own, and one of 1,024 table entries like the old version 2 profiles.
    std::vector<cmsUInt16Number> table(1024);
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = cmsUInt16Number(std::lround(65535 * sRGBToLinear(double(i) / 1023)));
    const cmsCIExyYTRIPLE rec709{{0.64, 0.33, 1}, {0.30, 0.60, 1}, {0.15, 0.06, 1}};
    const Bytes profiles[] = {
        saved(cmsCreate_sRGBProfile()),
        saved(rgbProfile(rec709, cmsBuildTabulatedToneCurve16(nullptr, 1024, table.data())))};
    const auto plain = decoded(redAndGrey({}, 8), "plain");
    for (const auto& icc : profiles) {
        const auto picture = decoded(redAndGrey(icc, 8), "sRGB");
        EXPECT_TRUE(picture.colour.matrixIsIdentity);
        for (std::size_t c = 0; c < 3; ++c)
            EXPECT_EQ(*picture.colour.tone[c], *plain.colour.tone[c]);
        EXPECT_EQ(picture.colour.tone[0], picture.colour.tone[2]); // one table for equal channels
    }
    for (std::size_t i = 0; i < 256; ++i)
        ASSERT_NEAR(double((*plain.colour.tone[0])[i]), sRGBToLinear(double(i) / 255), 1e-7);
}

TEST(Colour, GreyProfilesHaveTheirOwnCurve) {
    for (const int bits : {8, 16}) {
        TiffOptions options;
        options.samples = 1, options.photometric = 1, options.bits = bits,
        options.icc = greyProfile(1.8);
        options.value = [](int, int, int) { return 0.6; };
        const auto picture = decoded(makeTiff({1, 1}, options), "grey");
        for (const double channel : linearAt(picture, 0, 0))
            EXPECT_NEAR(channel, std::pow(0.6, 1.8), 1e-4);
        EXPECT_TRUE(picture.colour.matrixIsIdentity);
    }
}

TEST(Colour, LongProfilesInSeveralJpegMarkersAreJoined) {
    cmsHPROFILE profile = p3Profile();
    cmsMLU* padding = cmsMLUalloc(nullptr, 1); // a text of 150 kB makes three markers necessary
    cmsMLUsetASCII(padding, "en", "US", std::string(75'000, 'x').c_str());
    cmsWriteTag(profile, cmsSigCopyrightTag, padding);
    cmsMLUfree(padding);
    JpegOptions options;
    options.icc = saved(profile);
    ASSERT_GT(options.icc.size(), 131'072U);
    const auto picture = decoded(makeJpeg({8, 8}, options), "long profile");
    EXPECT_NEAR(double(picture.colour.toWorking[0][0]), 1.22494, 2e-4);
    EXPECT_FALSE(picture.colour.matrixIsIdentity);
}

TEST(Colour, BrokenAndForeignProfilesArePassedOver) {
    Bytes cut = saved(p3Profile());
    cut.resize(cut.size() / 2);
    Bytes zeroed = saved(p3Profile());
    std::fill(zeroed.begin() + 128, zeroed.end(), std::byte{0});
    const Bytes profiles[] = {Bytes(300, std::byte{0x5A}), cut, zeroed, Bytes(3)};
    for (std::size_t i = 0; i < std::size(profiles); ++i) {
        const auto picture = decoded(redAndGrey(profiles[i], 8), "broken");
        EXPECT_EQ(picture.profileName, "sRGB") << i;
        EXPECT_TRUE(picture.colour.matrixIsIdentity) << i;
    }
    TiffOptions inks; // an RGB profile says nothing about ink
    inks.samples = 4, inks.photometric = 5, inks.icc = saved(p3Profile());
    EXPECT_EQ(decoded(makeTiff({4, 4}, inks), "foreign").profileName, "sRGB");
}

} // namespace
} // namespace kelvaro::test
