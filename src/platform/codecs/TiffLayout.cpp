#include "platform/codecs/TiffLayout.h"

#include <algorithm>

namespace kelvaro {

namespace {

constexpr int kMostDirectories = 64;
constexpr std::uint32_t kLongestSide = 1U << 28;

template<class Value>
Value tag(TIFF* tiff, std::uint32_t which, Value otherwise) {
    Value value{};
    return TIFFGetFieldDefaulted(tiff, which, &value) ? value : otherwise;
}

bool isFullPicture(TIFF* tiff) {
    const auto kind = tag<std::uint32_t>(tiff, TIFFTAG_SUBFILETYPE, 0);
    return !(kind & (FILETYPE_REDUCEDIMAGE | FILETYPE_MASK));
}

void goToFullPicture(TIFF* tiff) {
    for (int i = 0; i < kMostDirectories; ++i) {
        if (isFullPicture(tiff)) return;
        if (!TIFFReadDirectory(tiff)) break;
    }
    TIFFSetDirectory(tiff, 0);
}

int photometricOf(TIFF* tiff, int samples) {
    std::uint16_t value = 0;
    if (TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &value)) return value;
    return samples >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;
}

int colourSamplesOf(int photometric) {
    switch (photometric) {
    case PHOTOMETRIC_MINISWHITE:
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_PALETTE:
    case PHOTOMETRIC_LOGL:
        return 1;
    case PHOTOMETRIC_SEPARATED:
        return 4;
    case PHOTOMETRIC_RGB:
    case PHOTOMETRIC_YCBCR:
    case PHOTOMETRIC_CIELAB:
    case PHOTOMETRIC_ICCLAB:
    case PHOTOMETRIC_LOGLUV:
        return 3;
    default:
        return 0;
    }
}

// The first extra sample that says it is alpha; unspecified ones may hold anything.
void findAlpha(TIFF* tiff, TiffLayout& layout) {
    std::uint16_t count = 0;
    const std::uint16_t* kinds = nullptr;
    if (!TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds) || !kinds) return;
    const int colours = layout.samples - int(count);
    for (int i = 0; i < int(count) && layout.alpha == AlphaKind::none; ++i) {
        if (kinds[i] == EXTRASAMPLE_ASSOCALPHA) layout.alpha = AlphaKind::premultiplied;
        if (kinds[i] == EXTRASAMPLE_UNASSALPHA) layout.alpha = AlphaKind::straight;
        layout.alphaIndex = colours + i;
    }
}

void readTiling(TIFF* tiff, TiffLayout& layout) {
    layout.isTiled = TIFFIsTiled(tiff) != 0;
    const auto side = [&](std::uint32_t which) {
        return int(std::min(tag<std::uint32_t>(tiff, which, 0), kLongestSide));
    };
    layout.tileWidth = side(TIFFTAG_TILEWIDTH);
    layout.tileLength = side(TIFFTAG_TILELENGTH);
    const auto rows = tag<std::uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP, 0);
    layout.rowsPerStrip =
        rows == 0 ? layout.size.height : int(std::min(rows, std::uint32_t(layout.size.height)));
}

void chooseDelivery(TIFF* tiff, TiffLayout& layout) {
    const bool isJpeg = layout.compression == COMPRESSION_JPEG;
    if (layout.photometric == PHOTOMETRIC_YCBCR && isJpeg && !layout.isPlanar) {
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    } else if (layout.photometric == PHOTOMETRIC_YCBCR || layout.compression == COMPRESSION_OJPEG) {
        layout.byLibrary = true;
    } else if (layout.photometric == PHOTOMETRIC_LOGL || layout.photometric == PHOTOMETRIC_LOGLUV) {
        TIFFSetField(tiff, TIFFTAG_SGILOGDATAFMT, SGILOGDATAFMT_FLOAT);
        layout.bits = 32;
        layout.format = SAMPLEFORMAT_IEEEFP;
    }
}

// Unpacked bytes that one byte of the file can stand for at most.
double largestExpansion(int compression, int samples) {
    switch (compression) {
    case COMPRESSION_NONE:
        return 1;
    case COMPRESSION_PACKBITS:
        return 64; // two bytes for 128
    case COMPRESSION_LZW:
        return 2000; // 4,096 codes of up to 12 bits, the longest 3,840 bytes
    case COMPRESSION_ADOBE_DEFLATE:
    case COMPRESSION_DEFLATE:
        return 1040; // 1,032 : 1
    case COMPRESSION_JPEG:
        return 8 * 64 * 4.0 * samples; // a bit for a block, subsampled
    default:
        return 65536; // fax and others: no sound bound, but still one
    }
}

bool isReadable(const TiffLayout& layout) {
    if (layout.format == SAMPLEFORMAT_IEEEFP)
        return layout.bits == 16 || layout.bits == 32 || layout.bits == 64;
    return layout.format == SAMPLEFORMAT_UINT &&
           ((layout.bits >= 1 && layout.bits <= 16) || layout.bits == 32);
}

SampleType unpackedType(const TiffLayout& layout) {
    if (layout.photometric == PHOTOMETRIC_PALETTE || layout.byLibrary) return SampleType::u8;
    if (layout.photometric == PHOTOMETRIC_CIELAB || layout.photometric == PHOTOMETRIC_ICCLAB)
        return SampleType::f32;
    if (layout.format == SAMPLEFORMAT_IEEEFP) return SampleType::f32;
    return layout.bits <= 8 ? SampleType::u8 : SampleType::u16;
}

ColourModel modelOf(int photometric) {
    switch (photometric) {
    case PHOTOMETRIC_MINISWHITE:
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_LOGL:
        return ColourModel::grey;
    case PHOTOMETRIC_SEPARATED:
        return ColourModel::cmyk;
    case PHOTOMETRIC_CIELAB:
    case PHOTOMETRIC_ICCLAB:
        return ColourModel::lab;
    default:
        return ColourModel::rgb;
    }
}

} // namespace

Result<TiffLayout> readLayout(const DecodeJob& job, TIFF* tiff) {
    goToFullPicture(tiff);
    const auto width = tag<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH, 0);
    const auto height = tag<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH, 0);
    if (auto sane = checkClaimedSize(job, width, height, 3, 0, 0); !sane)
        return fail(std::move(sane).error());
    TiffLayout layout;
    layout.size = {int(width), int(height)};
    layout.bits = tag<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    layout.samples = tag<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    layout.format = tag<std::uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    if (layout.format == SAMPLEFORMAT_VOID) layout.format = SAMPLEFORMAT_UINT;
    layout.photometric = photometricOf(tiff, layout.samples);
    layout.compression = tag<std::uint16_t>(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    const auto orientation = tag<std::uint16_t>(tiff, TIFFTAG_ORIENTATION, 1);
    layout.orientation = orientation >= 1 && orientation <= 8 ? orientation : 1;
    layout.isPlanar = layout.samples > 1 &&
                      tag<std::uint16_t>(tiff, TIFFTAG_PLANARCONFIG, 1) == PLANARCONFIG_SEPARATE;
    readTiling(tiff, layout);
    findAlpha(tiff, layout);
    if (!TIFFIsCODECConfigured(std::uint16_t(layout.compression)))
        return fail(job.unsupported("a rare kind of TIFF compression"));
    layout.fileBits = layout.bits;
    chooseDelivery(tiff, layout);
    const int colours = colourSamplesOf(layout.photometric);
    if (colours == 0) return fail(job.unsupported("a rare kind of TIFF colour"));
    if (layout.samples < colours || layout.samples > 64) return fail(job.damaged());
    if (!layout.byLibrary && !isReadable(layout))
        return fail(job.unsupported("a rare kind of TIFF samples"));
    return layout;
}

Result<StoredPicture> storedPictureOf(const DecodeJob& job, TIFF* tiff, const TiffLayout& layout) {
    StoredPicture stored;
    stored.size = layout.size;
    stored.model = modelOf(layout.photometric);
    stored.alpha = layout.byLibrary ? AlphaKind::none : layout.alpha;
    stored.type = unpackedType(layout);
    stored.orientation = layout.orientation;
    stored.fileBitsPerSample = layout.fileBits;
    std::uint32_t size = 0;
    const void* profile = nullptr;
    if (TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &size, &profile) && profile)
        stored.icc = {static_cast<const std::byte*>(profile), size};
    if (layout.byLibrary) stored.model = ColourModel::rgb;
    // Subsampled colour without compression is at most four times smaller than it claims.
    const double expansion =
        largestExpansion(layout.compression, layout.samples) * (layout.byLibrary ? 4 : 1);
    const double packed = double(layout.size.width) * layout.size.height *
                          (layout.byLibrary ? 1 : layout.samples * layout.bits / 8.0);
    const bool isLogarithmic = layout.compression == COMPRESSION_SGILOG;
    if (auto sane = checkClaimedSize(job, layout.size.width, layout.size.height, 3, packed,
                                     isLogarithmic ? 0 : expansion);
        !sane)
        return fail(std::move(sane).error());
    return stored;
}

} // namespace kelvaro
