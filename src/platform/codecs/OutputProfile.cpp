#include "platform/codecs/OutputProfile.h"

#include "platform/codecs/StandardColour.h"

#include <cstring>
#include <new>

namespace kelvaro {

namespace {

struct TextDeleter {
    void operator()(cmsMLU* text) const noexcept { cmsMLUfree(text); }
};
using LcmsText = std::unique_ptr<cmsMLU, TextDeleter>;

LcmsText textOf(cmsContext context, const char* ascii) {
    LcmsText text(cmsMLUalloc(context, 1));
    if (text) cmsMLUsetASCII(text.get(), "en", "US", ascii);
    return text;
}

LcmsCurve curveOf(cmsContext context, OutputSpace space) {
    if (space == OutputSpace::linearRec709) return LcmsCurve(cmsBuildGamma(context, 1.0));
    // IEC 61966-2-1 as ICC's parametric curve of type 3 (LittleCMS counts from 1).
    const double sRGB[] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    return LcmsCurve(cmsBuildParametricToneCurve(context, 4, sRGB));
}

std::vector<std::byte> serialised(OutputSpace space) {
    const auto context = makeLcmsContext();
    const LcmsProfile profile = makeLcmsProfile(context.get(), space);
    cmsUInt32Number size = 0;
    if (!profile || !cmsSaveProfileToMem(profile.get(), nullptr, &size)) throw std::bad_alloc();
    std::vector<std::byte> bytes(size);
    if (!cmsSaveProfileToMem(profile.get(), bytes.data(), &size)) throw std::bad_alloc();
    // The header's creation date would make every start of the program write other files.
    const unsigned char created[12] = {0x07, 0xE8, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0}; // 2024-01-01
    std::memcpy(bytes.data() + 24, created, sizeof created);
    return bytes;
}

} // namespace

LcmsProfile makeLcmsProfile(cmsContext context, OutputSpace space) {
    const Chromaticities& c =
        space == OutputSpace::displayP3 ? kDisplayP3Primaries : kRec709Primaries;
    const cmsCIExyY white{c.whiteX, c.whiteY, 1};
    const cmsCIExyYTRIPLE primaries{
        {c.redX, c.redY, 1}, {c.greenX, c.greenY, 1}, {c.blueX, c.blueY, 1}};
    const LcmsCurve curve = curveOf(context, space);
    if (!curve) return nullptr;
    cmsToneCurve* curves[] = {curve.get(), curve.get(), curve.get()};
    LcmsProfile profile(cmsCreateRGBProfileTHR(context, &white, &primaries, curves));
    if (!profile) return nullptr;
    cmsSetProfileVersion(profile.get(), 4.2);
    const LcmsText name = textOf(context, profileNameOf(space));
    const LcmsText rights = textOf(context, "No copyright, use freely");
    if (!name || !rights || !cmsWriteTag(profile.get(), cmsSigProfileDescriptionTag, name.get()) ||
        !cmsWriteTag(profile.get(), cmsSigCopyrightTag, rights.get()))
        return nullptr;
    return profile;
}

const std::vector<std::byte>& outputProfile(OutputSpace space) {
    static const std::vector<std::byte> sRGB = serialised(OutputSpace::sRGB),
                                        displayP3 = serialised(OutputSpace::displayP3),
                                        linear = serialised(OutputSpace::linearRec709);
    return space == OutputSpace::displayP3      ? displayP3
           : space == OutputSpace::linearRec709 ? linear
                                                : sRGB;
}

} // namespace kelvaro
