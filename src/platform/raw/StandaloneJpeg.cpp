#include "platform/raw/StandaloneJpeg.h"

#include <lcms2.h>

#include <array>
#include <initializer_list>
#include <memory>
#include <new>

namespace kelvaro {

namespace {

using Bytes = std::vector<std::byte>;

void append(Bytes& out, std::initializer_list<int> values) {
    for (const int v : values)
        out.push_back(std::byte(v));
}

void append(Bytes& out, const char* text, std::size_t count) {
    const auto* bytes = reinterpret_cast<const std::byte*>(text);
    out.insert(out.end(), bytes, bytes + count);
}

// An EXIF segment of one directory with one tag: Orientation, 274, a SHORT.
void appendOrientation(Bytes& out, int orientation) {
    append(out, {0xff, 0xe1, 0, 34});
    append(out, "Exif\0\0MM\0\x2a", 10);
    append(out, {0, 0, 0, 8, 0, 1, 0x01, 0x12, 0, 3, 0, 0, 0, 1, 0, orientation, 0, 0, 0, 0, 0, 0});
}

struct ProfileCloser {
    void operator()(void* profile) const noexcept { cmsCloseProfile(profile); }
};

// Adobe RGB (1998), and ROMM RGB (ISO 22028-2) with its usual plain gamma.
Bytes profileOf(PreviewColour colour) {
    const bool isAdobe = colour == PreviewColour::adobeRgb;
    const cmsCIExyY white = isAdobe ? cmsCIExyY{0.3127, 0.3290, 1} : cmsCIExyY{0.3457, 0.3585, 1};
    const cmsCIExyYTRIPLE primaries =
        isAdobe ? cmsCIExyYTRIPLE{{0.64, 0.33, 1}, {0.21, 0.71, 1}, {0.15, 0.06, 1}}
                : cmsCIExyYTRIPLE{{0.7347, 0.2653, 1}, {0.1596, 0.8404, 1}, {0.0366, 0.0001, 1}};
    cmsToneCurve* curve = cmsBuildGamma(nullptr, isAdobe ? 563.0 / 256 : 1.8);
    if (!curve) throw std::bad_alloc();
    cmsToneCurve* const curves[] = {curve, curve, curve};
    const std::unique_ptr<void, ProfileCloser> profile(
        cmsCreateRGBProfile(&white, &primaries, curves));
    cmsFreeToneCurve(curve);
    cmsUInt32Number size = 0;
    if (!profile || !cmsSaveProfileToMem(profile.get(), nullptr, &size)) throw std::bad_alloc();
    Bytes bytes(size);
    if (!cmsSaveProfileToMem(profile.get(), bytes.data(), &size)) throw std::bad_alloc();
    return bytes;
}

void appendProfile(Bytes& out, PreviewColour colour) {
    const Bytes profile = profileOf(colour);
    const int length = int(profile.size()) + 16; // far below a segment's 65535
    append(out, {0xff, 0xe2, length >> 8, length & 0xff});
    append(out, "ICC_PROFILE\0\x01\x01", 14);
    out.insert(out.end(), profile.begin(), profile.end());
}

} // namespace

std::vector<std::byte> standaloneJpeg(std::vector<std::byte> jpeg, const JpegPlace& place,
                                      int orientation) {
    Bytes head;
    append(head, {0xff, 0xd8}); // some cameras spoil it
    // Readers take the first EXIF segment for the true one.
    if (!place.orientation && orientation != 1) appendOrientation(head, orientation);
    const auto colour = place.colour.value_or(PreviewColour::sRgb);
    if (!place.hasProfile && colour != PreviewColour::sRgb) appendProfile(head, colour);
    std::copy(head.begin(), head.begin() + 2, jpeg.begin());
    jpeg.insert(jpeg.begin() + 2, head.begin() + 2, head.end());
    return jpeg;
}

} // namespace kelvaro
