// Exiv2's data as dictionaries with the standards' own key names.
#pragma once

#include "platform/PhotoProperties.h"

#include <exiv2/exif.hpp>
#include <exiv2/iptc.hpp>
#include <exiv2/xmp_exiv2.hpp>

namespace kelvaro {

// EXIF, TIFF, GPS and, for lens and body, auxiliary properties. GPS positions become decimal
// degrees; rationals with denominator 0, binary values and values of more than 64 numbers are left
// out.
void addExif(const Exiv2::ExifData& data, PhotoProperties& properties);
// The namespace http://ns.adobe.com/exif/1.0/aux/; "Lens" is also the auxiliary LensModel.
void addXmp(const Exiv2::XmpData& data, PhotoProperties& properties);
// Repeated entries are joined with ", ".
void addIptc(const Exiv2::IptcData& data, PhotoProperties& properties);

} // namespace kelvaro
