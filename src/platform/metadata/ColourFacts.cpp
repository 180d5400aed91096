#include "platform/metadata/ColourFacts.h"

#include <lcms2.h>

#include <array>
#include <memory>

namespace kelvaro {

std::optional<std::string> profileName(std::span<const std::byte> profile) {
    if (profile.empty()) return std::nullopt;
    const std::unique_ptr<void, decltype(&cmsCloseProfile)> opened(
        cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size())),
        cmsCloseProfile);
    if (!opened) return std::nullopt;
    std::array<char, 128> text{};
    cmsGetProfileInfoASCII(opened.get(), cmsInfoDescription, "en", "US", text.data(),
                           static_cast<cmsUInt32Number>(text.size() - 1));
    return text[0] ? std::optional<std::string>(text.data()) : std::nullopt;
}

std::optional<std::string> primariesName(int code) {
    switch (code) {
    case 1:
        return "sRGB IEC61966-2.1";
    case 9:
        return "Rec. ITU-R BT.2020";
    case 12:
        return "Display P3";
    default:
        return std::nullopt;
    }
}

} // namespace kelvaro
