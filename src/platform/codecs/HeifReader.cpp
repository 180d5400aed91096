// HEIC and HEIF through libheif: the primary picture, 8 to 16 bits. libheif applies the container's
// own rotation and mirroring; the EXIF orientation beside it only repeats that and is not read.
#include "platform/codecs/HeifHandles.h"
#include "platform/codecs/PictureBuilder.h"

#include <algorithm>
#include <cstring>

namespace kelvaro {

namespace {

// Flat pictures reach some 8,000 pixels per byte of file. Below this many nothing is refused.
constexpr double kMostPixelsPerByte = 65536;

struct Client {
    ByteSource& source;
    std::int64_t position = 0;
};

Client& client(void* handle) {
    return *static_cast<Client*>(handle);
}

heif_reader makeReader() {
    heif_reader reader{};
    reader.reader_api_version = 1;
    reader.get_position = [](void* handle) { return client(handle).position; };
    reader.read = [](void* to, std::size_t count, void* handle) {
        auto& own = client(handle);
        const auto got = own.source.readAt(own.position, {static_cast<std::byte*>(to), count});
        own.position += std::int64_t(got);
        return got == count ? 0 : 1;
    };
    reader.seek = [](std::int64_t position, void* handle) {
        client(handle).position = position;
        return 0;
    };
    reader.wait_for_file_size = [](std::int64_t wanted, void* handle) {
        return wanted <= client(handle).source.size() ? heif_reader_grow_status_size_reached
                                                      : heif_reader_grow_status_size_beyond_eof;
    };
    return reader;
}

Failure failureOf(const DecodeJob& job, const heif_error& error) {
    switch (error.code) {
    case heif_error_Unsupported_filetype:
    case heif_error_Unsupported_feature:
        return job.unsupported("a kind of HEIF compression");
    case heif_error_Memory_allocation_error:
        return error.subcode == heif_suberror_Security_limit_exceeded ? job.tooLarge()
                                                                      : job.outOfMemory();
    default:
        return job.afterLibraryError(job.damaged());
    }
}

std::vector<std::byte> profileOf(const heif_image_handle* handle) {
    const auto type = heif_image_handle_get_color_profile_type(handle);
    if (type != heif_color_profile_type_prof && type != heif_color_profile_type_rICC) return {};
    std::vector<std::byte> profile(heif_image_handle_get_raw_color_profile_size(handle));
    const auto error = heif_image_handle_get_raw_color_profile(handle, profile.data());
    return error.code == heif_error_Ok ? profile : std::vector<std::byte>{};
}

void setTransfer(StandardColour& colour, heif_transfer_characteristics transfer) {
    switch (transfer) {
    case heif_transfer_characteristic_ITU_R_BT_709_5:
    case heif_transfer_characteristic_ITU_R_BT_601_6:
    case heif_transfer_characteristic_IEC_61966_2_4:
    case heif_transfer_characteristic_ITU_R_BT_1361:
    case heif_transfer_characteristic_ITU_R_BT_2020_2_10bit:
    case heif_transfer_characteristic_ITU_R_BT_2020_2_12bit:
        colour.transfer = Transfer::rec709;
        break;
    case heif_transfer_characteristic_ITU_R_BT_470_6_System_M:
        colour.transfer = Transfer::gamma;
        colour.gamma = 2.2;
        break;
    case heif_transfer_characteristic_ITU_R_BT_470_6_System_B_G:
        colour.transfer = Transfer::gamma;
        colour.gamma = 2.8;
        break;
    case heif_transfer_characteristic_linear:
        colour.transfer = Transfer::linear;
        break;
    case heif_transfer_characteristic_ITU_R_BT_2100_0_PQ:
        colour.transfer = Transfer::pq;
        break;
    case heif_transfer_characteristic_ITU_R_BT_2100_0_HLG:
        colour.transfer = Transfer::hlg;
        break;
    default:
        colour.transfer = Transfer::sRGB;
        break; // sRGB itself, unspecified, exotic ones
    }
}

// The coded colour of ISO/IEC 23091-2. libheif fills in the primaries' chromaticities.
StandardColour standardColourOf(const heif_image_handle* handle) {
    StandardColour colour;
    heif_color_profile_nclx* raw = nullptr;
    if (heif_image_handle_get_nclx_color_profile(handle, &raw).code != heif_error_Ok) return colour;
    const HeifPointer<heif_color_profile_nclx> nclx(raw);
    setTransfer(colour, nclx->transfer_characteristics);
    const Chromaticities c{
        double(nclx->color_primary_red_x),   double(nclx->color_primary_red_y),
        double(nclx->color_primary_green_x), double(nclx->color_primary_green_y),
        double(nclx->color_primary_blue_x),  double(nclx->color_primary_blue_y),
        double(nclx->color_primary_white_x), double(nclx->color_primary_white_y)};
    const bool isNamed = nclx->color_primaries != heif_color_primaries_unspecified;
    if (isNamed && matrixToRec709(c)) colour.primaries = c;
    const bool isP3 = nclx->color_primaries == heif_color_primaries_SMPTE_EG_432_1;
    const bool is2020 = nclx->color_primaries == heif_color_primaries_ITU_R_BT_2020_2_and_2100_0;
    colour.name = isP3 ? "Display P3" : is2020 ? "Rec. 2020" : "sRGB";
    if (colour.transfer == Transfer::pq) colour.name += " PQ";
    if (colour.transfer == Transfer::hlg) colour.name += " HLG";
    return colour;
}

heif_chroma layoutFor(bool wide, bool hasAlpha) {
    if (wide)
        return hasAlpha ? heif_chroma_interleaved_RRGGBBAA_LE : heif_chroma_interleaved_RRGGBB_LE;
    return hasAlpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB;
}

// 9 to 15 bits to 16, so that the largest value stays the largest: the upper bits fill the lower.
void widen(std::byte* row, int count, int bits) {
    for (int i = 0; i < count; ++i, row += 2) {
        const unsigned value = std::to_integer<unsigned>(row[0]) | std::to_integer<unsigned>(row[1])
                                                                       << 8;
        const auto wide = std::uint16_t(value << (16 - bits) | value >> (2 * bits - 16));
        std::memcpy(row, &wide, 2);
    }
}

struct Primary {
    HeifPointer<heif_context> context;
    HeifPointer<heif_image_handle> handle;
};

// The context reads from `own` as long as it lives.
Result<Primary> openPrimary(const DecodeJob& job, Client& own, const heif_reader& reader) {
    Primary primary;
    primary.context.reset(heif_context_alloc());
    if (!primary.context) return fail(job.outOfMemory());
    heif_context_set_maximum_image_size_limit(primary.context.get(), 32767);
    auto error = heif_context_read_from_reader(primary.context.get(), &reader, &own, nullptr);
    if (error.code != heif_error_Ok) return fail(failureOf(job, error));
    heif_image_handle* handle = nullptr;
    error = heif_context_get_primary_image_handle(primary.context.get(), &handle);
    primary.handle.reset(handle);
    if (error.code != heif_error_Ok) return fail(failureOf(job, error));
    return primary;
}

Result<DecodedBitmap> decodePicture(const DecodeJob& job, const heif_image_handle* handle) {
    const bool hasAlpha = heif_image_handle_has_alpha_channel(handle);
    const int fileBits = heif_image_handle_get_luma_bits_per_pixel(handle);
    if (fileBits < 1 || fileBits > 16) return fail(job.damaged());
    const bool wide = fileBits > 8;
    const int channels = hasAlpha ? 4 : 3;
    const double width = heif_image_handle_get_width(handle);
    const double height = heif_image_handle_get_height(handle);
    if (auto sane = checkClaimedSize(job, std::int64_t(width), std::int64_t(height),
                                     channels * (wide ? 2 : 1), width * height, kMostPixelsPerByte);
        !sane)
        return fail(std::move(sane).error());

    const HeifPointer<heif_decoding_options> options(heif_decoding_options_alloc());
    heif_image* raw = nullptr;
    const auto error = heif_decode_image(handle, &raw, heif_colorspace_RGB,
                                         layoutFor(wide, hasAlpha), options.get());
    const HeifPointer<heif_image> image(raw);
    if (error.code != heif_error_Ok) return fail(failureOf(job, error));

    int stride = 0;
    const auto* plane =
        heif_image_get_plane_readonly(image.get(), heif_channel_interleaved, &stride);
    const int bits = heif_image_get_bits_per_pixel_range(image.get(), heif_channel_interleaved);
    if (!plane || bits > 16 || (wide && bits < 9)) return fail(job.damaged());
    StoredPicture stored;
    stored.size = {heif_image_get_width(image.get(), heif_channel_interleaved),
                   heif_image_get_height(image.get(), heif_channel_interleaved)};
    stored.type = wide ? SampleType::u16 : SampleType::u8;
    stored.fileBitsPerSample = fileBits;
    if (hasAlpha)
        stored.alpha = heif_image_handle_is_premultiplied_alpha(handle) ? AlphaKind::premultiplied
                                                                        : AlphaKind::straight;
    const auto profile = profileOf(handle);
    stored.icc = profile;
    stored.standard = standardColourOf(handle);
    auto builder = PictureBuilder::begin(job, stored);
    if (!builder) return fail(std::move(builder).error());
    const int samples = stored.size.width * channels;
    for (int y = 0; y < stored.size.height; ++y) {
        if (y % 64 == 0 && job.isCancelled()) return fail(job.cancelled());
        std::byte* row = builder->row();
        std::memcpy(row, plane + std::ptrdiff_t(stride) * y,
                    std::size_t(samples) * sampleBytes(stored.type));
        if (wide) widen(row, samples, bits);
        builder->rowDone();
    }
    return builder->finish();
}

} // namespace

Result<DecodedBitmap> decodeHeif(const DecodeJob& job) {
    static const heif_reader reader = makeReader();
    Client own{job.source};
    const auto primary = openPrimary(job, own, reader);
    if (!primary) return fail(primary.error());
    if (job.isCancelled()) return fail(job.cancelled());
    return decodePicture(job, primary->handle.get());
}

} // namespace kelvaro
