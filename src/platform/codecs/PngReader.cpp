// PNG through libpng: every colour type and depth, interlaced or not.
#include "platform/codecs/PictureBuilder.h"
#include "platform/codecs/PngErrors.h"

#include <bit>
#include <cmath>

namespace kelvaro {

namespace {

constexpr int kRowsBetweenChecks = 32;
constexpr double kLargestDeflation = 1040; // deflate reaches 1,032 : 1

struct PngInput {
    explicit PngInput(const DecodeJob& decodeJob) : job(decodeJob) {
        // Errors while it is made cannot jump yet, but only running out of memory is one.
        if (setjmp(errors.jump) == 0)
            png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &errors, onPngError, onPngWarning);
        if (png) info = png_create_info_struct(png);
    }
    PngInput(const PngInput&) = delete;
    PngInput& operator=(const PngInput&) = delete;
    ~PngInput() { png_destroy_read_struct(&png, &info, nullptr); }

    static void read(png_structp png, png_bytep to, std::size_t count) {
        auto* input = static_cast<PngInput*>(png_get_io_ptr(png));
        const std::size_t got =
            input->job.source.readAt(input->offset, {reinterpret_cast<std::byte*>(to), count});
        input->offset += std::int64_t(got);
        if (got == count) return;
        input->reachedEnd = true;
        png_error(png, "end of file");
    }

    const DecodeJob& job;
    PngErrors errors;
    png_structp png = nullptr;
    png_infop info = nullptr;
    std::int64_t offset = 0;
    bool reachedEnd = false;
};

Failure failureOf(const PngInput& input) {
    const DecodeJob& job = input.job;
    return job.afterLibraryError(input.reachedEnd ? job.brokenOff() : job.damaged());
}

bool readHeader(PngInput& input) {
    return guarded(input.errors, [&input] {
        png_set_read_fn(input.png, &input, PngInput::read);
        png_set_user_limits(input.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX); // we have our own
        png_set_benign_errors(input.png, 1);
        png_read_info(input.png, input.info);
    });
}

// Less than a byte becomes a byte, palettes become colours, transparent colours become alpha.
bool unify(PngInput& input) {
    return guarded(input.errors, [&input] {
        png_set_expand(input.png);
        if constexpr (std::endian::native == std::endian::little) png_set_swap(input.png);
        png_set_interlace_handling(input.png);
        png_read_update_info(input.png, input.info);
    });
}

bool isSane(const Chromaticities& c) {
    for (const double v :
         {c.redX, c.redY, c.greenX, c.greenY, c.blueX, c.blueY, c.whiteX, c.whiteY})
        if (!(v >= 0 && v <= 1)) return false;
    return matrixToRec709(c).has_value();
}

// gAMA and cHRM count only without an sRGB or iCCP chunk. A gamma of 1/2.2 is taken as sRGB's
// curve: that is what programs which write it beside sRGB samples mean.
StandardColour standardColourOf(const PngInput& input) {
    StandardColour colour;
    if (png_get_valid(input.png, input.info, PNG_INFO_sRGB | PNG_INFO_iCCP)) return colour;
    double fileGamma = 0;
    if (png_get_gAMA(input.png, input.info, &fileGamma) && fileGamma >= 0.2 && fileGamma <= 2 &&
        std::abs(fileGamma * 2.2 - 1) > 0.01) {
        colour.transfer = Transfer::gamma;
        colour.gamma = 1 / fileGamma;
        colour.name = "PNG gamma";
    }
    Chromaticities c{};
    if (png_get_cHRM(input.png, input.info, &c.whiteX, &c.whiteY, &c.redX, &c.redY, &c.greenX,
                     &c.greenY, &c.blueX, &c.blueY) &&
        isSane(c)) {
        colour.primaries = c;
        if (!decodingOf(colour, SampleType::u8).matrixIsIdentity) colour.name = "PNG primaries";
    }
    return colour;
}

std::span<const std::byte> profileOf(const PngInput& input) {
    png_charp name = nullptr;
    png_bytep profile = nullptr;
    png_uint_32 size = 0;
    int method = 0;
    if (!png_get_iCCP(input.png, input.info, &name, &method, &profile, &size)) return {};
    return {reinterpret_cast<const std::byte*>(profile), size};
}

int orientationOf(const PngInput& input) {
    png_uint_32 size = 0;
    png_bytep block = nullptr;
    if (!png_get_eXIf_1(input.png, input.info, &size, &block) || !block) return 1;
    return exifOrientation({reinterpret_cast<const std::byte*>(block), size});
}

bool readRow(PngInput& input, std::byte* row) {
    return guarded(input.errors, [&input, row] {
        png_read_row(input.png, reinterpret_cast<png_bytep>(row), nullptr);
    });
}

// Interlaced pictures arrive in seven passes over the same rows.
Result<std::vector<std::byte>> readPasses(PngInput& input, std::size_t rowBytes, int height) {
    std::vector<std::byte> all(rowBytes * std::size_t(height));
    for (int pass = 0; pass < PNG_INTERLACE_ADAM7_PASSES; ++pass)
        for (int y = 0; y < height; ++y) {
            if (y % kRowsBetweenChecks == 0 && input.job.isCancelled())
                return fail(input.job.cancelled());
            if (!readRow(input, all.data() + rowBytes * std::size_t(y)))
                return fail(failureOf(input));
        }
    return all;
}

Result<void> readPicture(PngInput& input, PictureBuilder& builder, int height) {
    const std::size_t rowBytes = png_get_rowbytes(input.png, input.info);
    std::vector<std::byte> interlaced;
    if (png_get_interlace_type(input.png, input.info) != PNG_INTERLACE_NONE) {
        auto all = readPasses(input, rowBytes, height);
        if (!all) return fail(std::move(all).error());
        interlaced = std::move(*all);
    }
    for (int y = 0; y < height; ++y) {
        if (y % kRowsBetweenChecks == 0 && input.job.isCancelled())
            return fail(input.job.cancelled());
        if (!interlaced.empty())
            std::copy_n(interlaced.data() + rowBytes * std::size_t(y), rowBytes, builder.row());
        else if (!readRow(input, builder.row()))
            return fail(failureOf(input));
        builder.rowDone();
    }
    return {};
}

} // namespace

Result<DecodedBitmap> decodePng(const DecodeJob& job) {
    PngInput input(job);
    if (!input.png || !input.info) return fail(job.outOfMemory());
    if (!readHeader(input)) return fail(failureOf(input));
    StoredPicture stored;
    stored.fileBitsPerSample = png_get_bit_depth(input.png, input.info);
    stored.size = {int(png_get_image_width(input.png, input.info)),
                   int(png_get_image_height(input.png, input.info))};
    stored.standard = standardColourOf(input);
    stored.icc = profileOf(input);
    // Packed samples take at least one bit, a palette index stands for up to four bytes.
    stored.largestExpansion = kLargestDeflation * 8 * 4;
    if (auto sane =
            checkClaimedSize(job, stored.size.width, stored.size.height, 1,
                             double(png_get_rowbytes(input.png, input.info)) * stored.size.height,
                             kLargestDeflation);
        !sane)
        return fail(std::move(sane).error());
    if (!unify(input)) return fail(failureOf(input));
    const int colourType = png_get_color_type(input.png, input.info);
    stored.model = colourType & PNG_COLOR_MASK_COLOR ? ColourModel::rgb : ColourModel::grey;
    stored.alpha = colourType & PNG_COLOR_MASK_ALPHA ? AlphaKind::straight : AlphaKind::none;
    stored.type = png_get_bit_depth(input.png, input.info) == 16 ? SampleType::u16 : SampleType::u8;
    auto builder = PictureBuilder::begin(job, stored);
    if (!builder) return fail(std::move(builder).error());
    if (auto read = readPicture(input, *builder, stored.size.height); !read)
        return fail(std::move(read).error());
    // The EXIF block may follow the pixels, so what comes after them is read too; damage there
    // costs nothing.
    (void)guarded(input.errors, [&input] { png_read_end(input.png, input.info); });
    DecodedBitmap decoded = builder->finish();
    decoded.pixels = upright(std::move(decoded.pixels), orientationOf(input));
    return decoded;
}

} // namespace kelvaro
