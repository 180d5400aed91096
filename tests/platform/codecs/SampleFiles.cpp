#include "platform/codecs/SampleFiles.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <jpeglib.h>
#include <png.h>
#include <tiffio.h>

namespace kelvaro::test {

namespace {

void append(Bytes& to, const void* from, std::size_t count) {
    if (count == 0) return;
    const std::size_t end = to.size();
    to.resize(end + count);
    std::memcpy(to.data() + end, from, count);
}

std::uint32_t quantised(double value, int bits) {
    return std::uint32_t(std::llround(value * (std::exp2(bits) - 1)));
}

// Puts samples of any whole number of bits side by side, as PNG (and TIFF below 8 bits) have them.
class BitPacker {
public:
    void put(std::uint32_t value, int bits) {
        for (int bit = bits - 1; bit >= 0; --bit) {
            if (used_ == 0) bytes_.push_back(std::byte{0});
            if (value >> bit & 1) bytes_.back() |= std::byte(0x80 >> used_);
            used_ = (used_ + 1) % 8;
        }
    }
    Bytes take() { return std::move(bytes_); }

private:
    Bytes bytes_;
    int used_ = 0;
};

} // namespace

Bytes exifBlock(int orientation, bool bigEndian) {
    Bytes block;
    const auto put = [&](std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            block.push_back(std::byte(value >> 8 * (bigEndian ? bytes - 1 - i : i)));
    };
    append(block, bigEndian ? "MM" : "II", 2);
    put(42, 2), put(8, 4), put(1, 2);
    put(274, 2), put(3, 2), put(1, 4), put(std::uint32_t(orientation), 2), put(0, 2);
    put(0, 4);
    return block;
}

Bytes makeJpeg(PixelSize size, const JpegOptions& options) {
    using Colour = JpegOptions::Colour;
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* memory = nullptr;
    unsigned long length = 0;
    jpeg_mem_dest(&info, &memory, &length);
    info.image_width = JDIMENSION(size.width);
    info.image_height = JDIMENSION(size.height);
    const bool ink = options.colour == Colour::cmyk || options.colour == Colour::ycck;
    info.input_components = options.colour == Colour::grey ? 1 : ink ? 4 : 3;
    info.in_color_space = options.colour == Colour::grey ? JCS_GRAYSCALE : ink ? JCS_CMYK : JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, options.quality, TRUE);
    if (options.colour == Colour::ycck) jpeg_set_colorspace(&info, JCS_YCCK);
    info.write_Adobe_marker = options.adobeInverted;
    info.comp_info[0].h_samp_factor = info.comp_info[0].v_samp_factor = options.subsampled ? 2 : 1;
    info.restart_in_rows = options.restartRows;
    if (ink) info.comp_info[3].h_samp_factor = info.comp_info[3].v_samp_factor = 1;
    if (options.progressive) jpeg_simple_progression(&info);
    jpeg_start_compress(&info, TRUE);
    if (options.orientation) {
        Bytes marker;
        append(marker, "Exif\0", 6);
        const Bytes block = exifBlock(options.orientation, options.orientation % 2 == 0);
        append(marker, block.data(), block.size());
        jpeg_write_marker(&info, JPEG_APP0 + 1, reinterpret_cast<const JOCTET*>(marker.data()),
                          unsigned(marker.size()));
    }
    if (!options.icc.empty())
        jpeg_write_icc_profile(&info, reinterpret_cast<const JOCTET*>(options.icc.data()),
                               unsigned(options.icc.size()));
    std::vector<JSAMPLE> row(std::size_t(size.width * info.input_components));
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x)
            for (int c = 0; c < info.input_components; ++c) {
                const auto value = JSAMPLE(quantised(patternAt(size, x, y, c), 8));
                row[std::size_t(x * info.input_components + c)] =
                    options.adobeInverted ? JSAMPLE(255 - value) : value;
            }
        JSAMPROW start = row.data();
        jpeg_write_scanlines(&info, &start, 1);
    }
    jpeg_finish_compress(&info);
    Bytes file;
    append(file, memory, length);
    jpeg_destroy_compress(&info);
    std::free(memory);
    return file;
}

Bytes makePng(PixelSize size, const PngOptions& options) {
    Bytes file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(
        png, &file,
        [](png_structp p, png_bytep from, std::size_t count) {
            append(*static_cast<Bytes*>(png_get_io_ptr(p)), from, count);
        },
        [](png_structp) {});
    png_set_IHDR(png, info, png_uint_32(size.width), png_uint_32(size.height), options.bits,
                 options.colourType, options.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    const int levels = 1 << std::min(options.bits, 8);
    if (options.colourType == PNG_COLOR_TYPE_PALETTE) {
        std::vector<png_color> palette;
        for (int i = 0; i < levels; ++i) // entry i: red rises, green falls, blue is fixed
            palette.push_back(
                {png_byte(i * 255 / (levels - 1)), png_byte(255 - i * 255 / (levels - 1)), 77});
        png_set_PLTE(png, info, palette.data(), levels);
        png_byte half = 128;
        if (options.transparentKey) png_set_tRNS(png, info, &half, 1, nullptr);
    } else if (options.transparentKey) {
        png_color_16 key{};
        const auto at = [&](int c) {
            return png_uint_16(quantised(patternAt(size, 0, 0, c), options.bits));
        };
        key.red = key.gray = at(0);
        key.green = at(1), key.blue = at(2);
        png_set_tRNS(png, info, nullptr, 0, &key);
    }
    Bytes exif = exifBlock(options.orientation, true);
    if (options.orientation)
        png_set_eXIf_1(png, info, png_uint_32(exif.size()),
                       reinterpret_cast<png_bytep>(exif.data()));
    if (options.sRGBChunk) png_set_sRGB(png, info, PNG_sRGB_INTENT_PERCEPTUAL);
    png_write_info(png, info);
    if (options.gamma > 0) { // the library would refuse senseless and contradictory values
        const auto value = std::uint32_t(options.gamma * 100'000);
        const png_byte data[] = {png_byte(value >> 24), png_byte(value >> 16), png_byte(value >> 8),
                                 png_byte(value)};
        png_write_chunk(png, reinterpret_cast<png_const_bytep>("gAMA"), data, sizeof data);
    }
    const bool alpha = options.colourType & PNG_COLOR_MASK_ALPHA;
    const bool colour = options.colourType & PNG_COLOR_MASK_COLOR;
    const bool palette = options.colourType == PNG_COLOR_TYPE_PALETTE;
    const int channels = (colour && !palette ? 3 : 1) + alpha;
    std::vector<Bytes> rows;
    for (int y = 0; y < size.height; ++y) {
        BitPacker packer;
        for (int x = 0; x < size.width; ++x)
            for (int c = 0; c < channels; ++c)
                packer.put(quantised(patternAt(size, x, y, alpha && c == channels - 1 ? 3 : c),
                                     options.bits),
                           options.bits);
        rows.push_back(packer.take());
    }
    std::vector<png_bytep> pointers;
    for (auto& row : rows)
        pointers.push_back(reinterpret_cast<png_bytep>(row.data()));
    png_write_image(png, pointers.data());
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return file;
}

namespace {

struct TiffMemory {
    Bytes content;
    std::int64_t position = 0;
};

TiffMemory& at(thandle_t handle) {
    return *static_cast<TiffMemory*>(handle);
}

TIFF* openMemory(TiffMemory& memory, const std::string& mode) {
    return TIFFClientOpen(
        "memory", mode.c_str(), &memory,
        [](thandle_t h, void* to, tmsize_t count) -> tmsize_t {
            auto& m = at(h);
            const auto left =
                std::max<std::int64_t>(0, std::int64_t(m.content.size()) - m.position);
            const auto got = std::min<std::int64_t>(count, left);
            std::memcpy(to, m.content.data() + m.position, std::size_t(got));
            m.position += got;
            return got;
        },
        [](thandle_t h, void* from, tmsize_t count) -> tmsize_t {
            auto& m = at(h);
            if (std::size_t(m.position + count) > m.content.size())
                m.content.resize(std::size_t(m.position + count));
            std::memcpy(m.content.data() + m.position, from, std::size_t(count));
            m.position += count;
            return count;
        },
        [](thandle_t h, toff_t offset, int from) -> toff_t {
            auto& m = at(h);
            const auto base = from == SEEK_SET   ? 0
                              : from == SEEK_CUR ? m.position
                                                 : std::int64_t(m.content.size());
            m.position = base + std::int64_t(offset);
            return toff_t(m.position);
        },
        [](thandle_t) { return 0; }, [](thandle_t h) -> toff_t { return at(h).content.size(); },
        nullptr, nullptr);
}

Bytes packedSamples(const TiffOptions& options, int x0, int y0, PixelSize block, PixelSize size,
                    int firstSample, int samples) {
    Bytes out;
    for (int y = y0; y < y0 + block.height; ++y) {
        BitPacker packer;
        for (int x = x0; x < x0 + block.width; ++x)
            for (int s = firstSample; s < firstSample + samples; ++s) {
                const int px = std::min(x, size.width - 1), py = std::min(y, size.height - 1);
                const double value =
                    options.value ? options.value(px, py, s) : patternAt(size, px, py, s);
                if (options.format == SAMPLEFORMAT_IEEEFP && options.bits == 64) {
                    append(out, &value, sizeof value);
                } else if (options.format == SAMPLEFORMAT_IEEEFP && options.bits == 32) {
                    const auto narrow = float(value);
                    append(out, &narrow, sizeof narrow);
                } else if (options.bits == 16) { // a half arrives as its bits
                    const auto word = std::uint16_t(
                        options.format == SAMPLEFORMAT_IEEEFP ? value : quantised(value, 16));
                    append(out, &word, sizeof word);
                } else if (options.bits == 32) {
                    const std::uint32_t word = quantised(value, 32);
                    append(out, &word, sizeof word);
                } else {
                    packer.put(quantised(value, options.bits), options.bits);
                }
            }
        const Bytes row = packer.take();
        append(out, row.data(), row.size());
    }
    return out;
}

void writeBlocks(TIFF* tiff, const TiffOptions& options, PixelSize size) {
    const int planes = options.planar == PLANARCONFIG_SEPARATE ? options.samples : 1;
    const int samples = options.samples / planes;
    for (int plane = 0; plane < planes; ++plane) {
        const int height = options.tile ? options.tile : 7,
                  width = options.tile ? options.tile : size.width;
        for (int y = 0; y < size.height; y += height)
            for (int x = 0; x < size.width; x += width) {
                const int rows = options.tile ? height : std::min(height, size.height - y);
                Bytes block = packedSamples(options, x, y, {width, rows}, size, plane, samples);
                const auto bytes = tmsize_t(block.size());
                const auto py = std::uint32_t(y), px = std::uint32_t(x);
                const auto ps = std::uint16_t(plane);
                if (options.tile)
                    TIFFWriteEncodedTile(tiff, TIFFComputeTile(tiff, px, py, 0, ps), block.data(),
                                         bytes);
                else
                    TIFFWriteEncodedStrip(tiff, TIFFComputeStrip(tiff, py, ps), block.data(),
                                          bytes);
            }
    }
}

} // namespace

Bytes makeTiff(PixelSize size, const TiffOptions& options) {
    TiffMemory memory;
    TIFF* tiff = openMemory(memory, options.mode);
    if (options.reducedFirst) {
        TiffOptions small;
        TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, FILETYPE_REDUCEDIMAGE);
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 3), TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 2);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8),
            TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 3);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
        TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 7);
        writeBlocks(tiff, small, {3, 2});
        TIFFWriteDirectory(tiff);
    }
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, size.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, size.height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, options.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, options.samples);
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, options.format);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, options.photometric);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, options.compression);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, options.planar);
    if (options.predictor > 1) TIFFSetField(tiff, TIFFTAG_PREDICTOR, options.predictor);
    if (options.compression == COMPRESSION_JPEG && options.photometric == PHOTOMETRIC_YCBCR)
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    if (options.tile) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, options.tile);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, options.tile);
    } else {
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, options.compression == COMPRESSION_JPEG ? 64 : 7);
    }
    if (options.orientation) TIFFSetField(tiff, TIFFTAG_ORIENTATION, options.orientation);
    if (options.extraSample >= 0) {
        const auto kind = std::uint16_t(options.extraSample);
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
    }
    if (!options.icc.empty())
        TIFFSetField(tiff, TIFFTAG_ICCPROFILE, std::uint32_t(options.icc.size()),
                     options.icc.data());
    std::vector<std::uint16_t> red, green, blue;
    if (options.photometric == PHOTOMETRIC_PALETTE) {
        const int count = 1 << options.bits;
        for (int i = 0; i < count; ++i) {
            red.push_back(std::uint16_t(i * 65535 / (count - 1)));
            green.push_back(std::uint16_t(65535 - red.back()));
            blue.push_back(77 * 257);
        }
        TIFFSetField(tiff, TIFFTAG_COLORMAP, red.data(), green.data(), blue.data());
    }
    if (options.compression == COMPRESSION_JPEG) { // the codec wants whole rows of blocks
        for (int y = 0; y < size.height; ++y) {
            Bytes row = packedSamples(options, 0, y, {size.width, 1}, size, 0, options.samples);
            TIFFWriteScanline(tiff, row.data(), std::uint32_t(y), 0);
        }
    } else {
        writeBlocks(tiff, options, size);
    }
    TIFFClose(tiff);
    return memory.content;
}

} // namespace kelvaro::test
