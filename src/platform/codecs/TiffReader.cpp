// TIFF and BigTIFF through libtiff.
#include "platform/codecs/PictureBuilder.h"
#include "platform/codecs/TiffRows.h"
#include "platform/codecs/TiffSamples.h"

#include <algorithm>

namespace kelvaro {

namespace {

// The palette as bytes. Entries are 16 bits wide, but some old programs wrote bytes into them.
class Palette {
public:
    static std::optional<Palette> of(TIFF* tiff, int bits) {
        std::uint16_t *red = nullptr, *green = nullptr, *blue = nullptr;
        if (bits > 16 || !TIFFGetField(tiff, TIFFTAG_COLORMAP, &red, &green, &blue))
            return std::nullopt;
        if (!red || !green || !blue) return std::nullopt;
        Palette palette;
        const std::size_t count = std::size_t(1) << bits;
        const auto isWide = [&](const std::uint16_t* c) {
            return std::any_of(c, c + count, [](auto v) { return v > 255; });
        };
        const int shift = isWide(red) || isWide(green) || isWide(blue) ? 8 : 0;
        for (std::size_t i = 0; i < count; ++i)
            palette.entries_.push_back({std::uint8_t(red[i] >> shift),
                                        std::uint8_t(green[i] >> shift),
                                        std::uint8_t(blue[i] >> shift)});
        return palette;
    }
    const std::array<std::uint8_t, 3>& operator[](std::uint16_t i) const { return entries_[i]; }

private:
    std::vector<std::array<std::uint8_t, 3>> entries_;
};

// Turns the loaded packed row into what the builder takes.
class RowUnpacker {
public:
    RowUnpacker(const TiffLayout& layout, ColourModel model, SampleType type,
                std::optional<Palette> palette)
        : layout_(layout),
          model_(model),
          type_(type),
          palette_(std::move(palette)),
          colours_(palette_ ? 1 : channelsOf(model)) {
        const auto samples = std::size_t(layout.size.width) * std::size_t(layout.samplesPerPlane());
        if (layout.format == SAMPLEFORMAT_IEEEFP)
            floats_.resize(samples);
        else
            integers_.resize(samples);
    }

    void run(const TiffRows& rows, std::byte* to) {
        if (isCopy()) {
            const auto bytes =
                std::size_t(layout_.size.width * layout_.samples) * sampleBytes(type_);
            std::copy_n(rows.row(0), bytes, to);
            return;
        }
        for (int plane = 0; plane < layout_.planes(); ++plane) {
            unpack(rows.row(plane));
            for (int s = 0; s < layout_.samplesPerPlane(); ++s)
                place(plane + s, s, to);
        }
        if (layout_.photometric == PHOTOMETRIC_LOGLUV) toRec709(reinterpret_cast<float*>(to));
    }

private:
    int outputChannels() const { return channelsOf(model_) + (layout_.alpha != AlphaKind::none); }
    bool isCopy() const {
        const bool asTheyAre = layout_.bits == int(sampleBytes(type_)) * 8;
        return asTheyAre && !layout_.isPlanar && !palette_ && model_ != ColourModel::lab &&
               layout_.photometric != PHOTOMETRIC_MINISWHITE &&
               layout_.photometric != PHOTOMETRIC_LOGLUV && layout_.samples == outputChannels();
    }
    void unpack(const std::byte* packed) {
        if (integers_.empty())
            unpackFloats(packed, layout_.bits, floats_);
        else
            unpackIntegers(packed, layout_.bits, integers_);
    }

    // Puts sample `index` of each pixel, which stands at `within` in the unpacked plane, into its
    // channel; samples that are neither colour nor alpha are dropped.
    void place(int index, int within, std::byte* to) const {
        const bool isAlpha = layout_.alpha != AlphaKind::none && index == layout_.alphaIndex;
        if (index >= colours_ && !isAlpha) return;
        const int channel = isAlpha ? channelsOf(model_) : index;
        const int stride = layout_.samplesPerPlane(), outStride = outputChannels();
        for (int x = 0; x < layout_.size.width; ++x) {
            const auto from = std::size_t(x * stride + within);
            const auto out = std::size_t(x * outStride + channel);
            if (palette_ && !isAlpha)
                std::copy_n((*palette_)[integers_[from]].data(), 3,
                            reinterpret_cast<std::uint8_t*>(to) + x * outStride);
            else if (type_ == SampleType::f32)
                reinterpret_cast<float*>(to)[out] = floatAt(from, index, isAlpha);
            else
                storeInteger(to, out, integers_[from], isAlpha);
        }
    }
    float floatAt(std::size_t from, int index, bool isAlpha) const {
        if (integers_.empty()) {
            const float value = floats_[from];
            return layout_.photometric == PHOTOMETRIC_MINISWHITE && !isAlpha ? 1 - value : value;
        }
        return labOf(integers_[from], index, isAlpha);
    }
    // CIELAB has signed a* and b*; ICCLAB is offset and, at 16 bits, coded as in version 2
    // profiles.
    float labOf(std::uint16_t value, int index, bool isAlpha) const {
        const bool wide = layout_.bits > 8;
        const float full = wide ? 65535.0F : 255.0F, unit = wide ? 256.0F : 1.0F;
        if (isAlpha) return float(value) / full;
        const bool isIcc = layout_.photometric == PHOTOMETRIC_ICCLAB;
        if (index == 0) return float(value) * 100 / (isIcc && wide ? 65280.0F : full);
        if (isIcc) return float(value) / unit - 128;
        return wide ? float(std::int16_t(value)) / unit : float(std::int8_t(value));
    }
    void storeInteger(std::byte* to, std::size_t at, std::uint32_t value, bool isAlpha) const {
        const int bits = std::min(layout_.bits, 16); // wider ones are cut to 16 when unpacked
        const std::uint32_t full = type_ == SampleType::u8 ? 255 : 65535;
        const std::uint32_t most = (1U << bits) - 1;
        if (most != full) value = (value * full + most / 2) / most;
        if (layout_.photometric == PHOTOMETRIC_MINISWHITE && !isAlpha) value = full - value;
        if (type_ == SampleType::u8)
            reinterpret_cast<std::uint8_t*>(to)[at] = std::uint8_t(value);
        else
            reinterpret_cast<std::uint16_t*>(to)[at] = std::uint16_t(value);
    }
    // LogLuv comes as XYZ in which equal amounts are white.
    void toRec709(float* row) const {
        Chromaticities primaries = kRec709Primaries;
        primaries.whiteX = primaries.whiteY = 1 / 3.0;
        const Matrix3 m = *inverse(*primariesToXyz(primaries));
        for (int x = 0; x < layout_.size.width; ++x, row += outputChannels()) {
            const float xyz[] = {row[0], row[1], row[2]};
            for (std::size_t i = 0; i < 3; ++i)
                row[i] = float(m[i][0] * double(xyz[0]) + m[i][1] * double(xyz[1]) +
                               m[i][2] * double(xyz[2]));
        }
    }

    TiffLayout layout_;
    ColourModel model_;
    SampleType type_;
    std::optional<Palette> palette_;
    int colours_; // samples of a pixel that are colour
    std::vector<std::uint16_t> integers_;
    std::vector<float> floats_;
};

Result<void> readOwnWay(const DecodeJob& job, TIFF* tiff, const TiffLayout& layout,
                        const StoredPicture& stored, PictureBuilder& builder) {
    std::optional<Palette> palette;
    if (layout.photometric == PHOTOMETRIC_PALETTE) {
        palette = Palette::of(tiff, layout.bits);
        if (!palette || layout.format != SAMPLEFORMAT_UINT) return fail(job.damaged());
    }
    auto rows = TiffRows::begin(job, tiff, layout);
    if (!rows) return fail(std::move(rows).error());
    RowUnpacker unpacker(layout, stored.model, stored.type, std::move(palette));
    for (int y = 0; y < layout.size.height; ++y) {
        if (auto loaded = rows->load(y); !loaded) return loaded;
        unpacker.run(*rows, builder.row());
        builder.rowDone();
    }
    return {};
}

// Bands of libtiff's own RGBA pixels, whose rows run upwards. One band is a strip or a row of
// tiles.
Result<void> readByLibrary(const DecodeJob& job, TIFF* tiff, const TiffLayout& layout,
                           PictureBuilder& builder) {
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT); // we turn it ourselves
    const int width = layout.size.width, height = layout.size.height;
    const int blockWidth = layout.isTiled ? layout.tileWidth : width;
    const int blockRows = layout.isTiled ? layout.tileLength : layout.rowsPerStrip;
    if (blockWidth <= 0 || blockRows <= 0) return fail(job.damaged());
    const int across = (width - 1) / blockWidth + 1;
    const double blockPixels = double(blockWidth) * blockRows;
    if (blockPixels * across * 4 > 16.0 * width * height + double(64 << 20))
        return fail(job.tooLarge());
    std::vector<std::uint32_t> band(std::size_t(blockPixels) * std::size_t(across));
    for (int top = 0; top < height; top += blockRows) {
        if (job.isCancelled()) return fail(job.cancelled());
        const int rows = std::min(blockRows, height - top);
        for (int i = 0; i < across; ++i) {
            auto* block = band.data() + std::size_t(blockPixels) * std::size_t(i);
            const auto x = std::uint32_t(i * blockWidth), y = std::uint32_t(top);
            if (!(layout.isTiled ? TIFFReadRGBATileExt(tiff, x, y, block, 1)
                                 : TIFFReadRGBAStripExt(tiff, y, block, 1)))
                return fail(job.afterLibraryError(job.damaged()));
        }
        for (int row = 0; row < rows; ++row) {
            const int up = (layout.isTiled ? blockRows : rows) - 1 - row;
            auto* to = reinterpret_cast<std::uint8_t*>(builder.row());
            for (int x = 0; x < width; ++x) {
                const std::uint32_t pixel =
                    band[std::size_t(blockPixels) * std::size_t(x / blockWidth) +
                         std::size_t(up) * std::size_t(blockWidth) + std::size_t(x % blockWidth)];
                *to++ = std::uint8_t(TIFFGetR(pixel));
                *to++ = std::uint8_t(TIFFGetG(pixel));
                *to++ = std::uint8_t(TIFFGetB(pixel));
            }
            builder.rowDone();
        }
    }
    return {};
}

} // namespace

Result<DecodedBitmap> decodeTiff(const DecodeJob& job) {
    TiffReadClient client{job.source};
    const TiffHandle tiff = openTiff(client);
    if (!tiff) return fail(job.afterLibraryError(job.damaged()));
    const auto layout = readLayout(job, tiff.get());
    if (!layout) return fail(layout.error());
    const auto stored = storedPictureOf(job, tiff.get(), *layout);
    if (!stored) return fail(stored.error());
    auto builder = PictureBuilder::begin(job, *stored);
    if (!builder) return fail(std::move(builder).error());
    auto read = layout->byLibrary ? readByLibrary(job, tiff.get(), *layout, *builder)
                                  : readOwnWay(job, tiff.get(), *layout, *stored, *builder);
    if (!read) return fail(std::move(read).error());
    return builder->finish();
}

} // namespace kelvaro
