// Reading and writing of ordinary picture files (JPEG, PNG, TIFF, HEIC). Thread-safe and blocking.
#pragma once

#include "base/Cancellation.h"
#include "base/Result.h"
#include "platform/Bitmap.h"
#include "platform/FileSystem.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace kelvaro {

// One decoded picture, upright (the file's orientation is applied).
struct DecodedBitmap {
    Bitmap pixels;
    ColourDecoding colour;
    std::string
        profileName; // of the embedded profile; "sRGB" or "Linear Rec. 709" where there is none
    int fileBitsPerSample = 8;
    PixelSize fullSize = {}; // upright; larger than `pixels` where less was enough
};

struct DecodeLimits {
    std::int64_t maximumPixels = 1'000'000'000; // claimed sizes above are refused before allocation
    std::int64_t maximumBytes = std::int64_t(8) << 30; // of decoded samples
    // Where the format allows it (JPEG) the picture is reduced by 2, 4 or 8 while it is decoded, as
    // long as its longer side keeps so many pixels. 0 asks for all of them.
    int enoughSide = 0;
};

class ImageReader {
public:
    virtual ~ImageReader() = default;
    // The kind of file is told from its content, never from its name. Non-finite float samples
    // become 0. A picture that breaks off in the middle is a failure, not half a picture, except
    // that a JPEG or PNG with damage that its decoder can mend counts as readable.
    virtual Result<DecodedBitmap> decode(const std::filesystem::path& path,
                                         const DecodeLimits& limits = {},
                                         const Cancellation* cancellation = nullptr) = 0;
    // The same from bytes in memory, for embedded previews; `name` is what messages call them.
    virtual Result<DecodedBitmap> decode(std::span<const std::byte> bytes, const std::string& name,
                                         const DecodeLimits& limits = {},
                                         const Cancellation* cancellation = nullptr) = 0;
};

enum class OutputSpace { sRGB, displayP3, linearRec709 };
// As its profile names itself: "sRGB", "Display P3" or "Linear Rec. 709".
const char* profileNameOf(OutputSpace space);

enum class FileFormat { jpeg, heic, tiff, png };

// "jpg", "jpeg", "heic", "heif", "tif", "tiff", "png", in any case, with or without the dot.
std::optional<FileFormat> formatOfExtension(const std::string& extension);

// Properties as the formats embed them; empty parts are left out.
struct EmbeddedMetadata {
    // A little-endian TIFF structure with its first directory at byte 8, as EXIF 2.32 has it: at
    // most 65,527 bytes.
    std::vector<std::byte> exif;
    std::vector<std::byte> iptc; // IPTC-IIM records
    std::string xmp;             // the same as `iptc`, for formats that have no place for records
    bool operator==(const EmbeddedMetadata&) const = default;
};

struct EncodeSettings {
    FileFormat format = FileFormat::jpeg;
    double quality = 0.9; // 0 … 1, for JPEG and HEIC
    OutputSpace space =
        OutputSpace::sRGB; // tells which profile to embed; the samples are in it already
    EmbeddedMetadata metadata = {};
};

// A picture that is made in strips where it is written, and so is never in memory as a whole.
class StripSource {
public:
    virtual ~StripSource() = default;
    virtual PixelSize size() const = 0;
    virtual int channels() const = 0;
    virtual SampleType type() const = 0;
    // Rows top … top + count − 1, counted from the picture's upper edge. From any thread, and about
    // in the order of the rows.
    virtual Result<Bitmap> rows(int top, int count) const = 0;
};

class ImageWriter {
public:
    virtual ~ImageWriter() = default;
    // Writes `pixels` into `file` from offset 0, without committing it. JPEG and HEIC take u8, PNG
    // u8 and u16, TIFF u8, u16 and f32 (linear). JPEG and HEIC refuse alpha (flatten first).
    virtual Result<void> encode(const Bitmap& pixels, const EncodeSettings& settings,
                                PendingFile& file, const Cancellation* cancellation = nullptr) = 0;
    // The same file from strips. Fails as they do. Formats that need the whole picture make it.
    virtual Result<void> encodeStrips(const StripSource& strips, const EncodeSettings& settings,
                                      PendingFile& file,
                                      const Cancellation* cancellation = nullptr) {
        const auto whole = strips.rows(0, strips.size().height);
        if (!whole) return fail(whole.error());
        return encode(*whole, settings, file, cancellation);
    }
};

} // namespace kelvaro
