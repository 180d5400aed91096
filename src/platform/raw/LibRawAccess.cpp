#include "platform/raw/LibRawAccess.h"

#include "platform/raw/SlicedJpeg.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>
#include <numeric>
#include <string_view>
#include <utility>

namespace kelvaro {

namespace {

constexpr unsigned kMaximumMegabytes = 4096;

int stopWhenCancelled(void* data, LibRaw_progress, int, int) {
    return static_cast<const Cancellation*>(data)->isCancelled() ? 1 : 0;
}

bool isPositive(const float* values, int count) {
    return std::all_of(values, values + count, [](float v) { return std::isfinite(v) && v > 0; });
}

} // namespace

LibRawAccess::LibRawAccess()
    : LibRaw(LIBRAW_OPIONS_NO_MEMERR_CALLBACK | LIBRAW_OPIONS_NO_DATAERR_CALLBACK) {
    auto& p = imgdata.params;
    p.raw_processing_options &= ~unsigned(LIBRAW_PROCESSING_CONVERTFLOAT_TO_INT);
    p.max_raw_memory_mb = kMaximumMegabytes;
    p.use_rawspeed = 0;
    p.use_dngsdk = 0;
}

void LibRawAccess::watch(const Cancellation* cancellation) {
    cancellation_ = cancellation;
    set_progress_handler(cancellation ? stopWhenCancelled : nullptr,
                         const_cast<Cancellation*>(cancellation));
}

SensorLayout LibRawAccess::layout() {
    const auto& id = imgdata.idata;
    if (id.filters == LIBRAW_XTRANS) return SensorLayout::xTrans;
    if (id.filters != 0) return SensorLayout::bayer;
    return id.colors == 1 ? SensorLayout::monochrome : SensorLayout::fullColour;
}

bool LibRawAccess::needsProcessing() {
    const auto& id = imgdata.idata;
    if (id.is_foveon) return true;
    if (id.filters == 0 || id.filters == LIBRAW_XTRANS) return false;
    if (is_fuji_rotated() || id.colors != 3 || is_phaseone_compressed()) return true;
    // Ours repeats after two rows; some old sensors after eight.
    const unsigned row = id.filters & 0xff;
    return id.filters != row * 0x01010101u;
}

PixelSize LibRawAccess::processedSize() {
    if (!is_fuji_rotated()) return {imgdata.sizes.width, imgdata.sizes.height};
    const auto flip = imgdata.sizes.flip;
    imgdata.sizes.flip = 0;
    adjust_sizes_info_only();
    imgdata.sizes.flip = flip;
    return {imgdata.sizes.iwidth, imgdata.sizes.iheight};
}

SensorRect LibRawAccess::cameraCrop(const SensorRect& active) const {
    const auto& inset = imgdata.sizes.raw_inset_crop;
    const SensorRect crop{inset.cleft, inset.ctop, inset.cwidth, inset.cheight};
    // A much smaller one is a frame that the photographer chose in the camera, not the sensor's.
    const bool isWhole =
        crop.width * 10 >= active.width * 9 && crop.height * 10 >= active.height * 9;
    return active.contains(crop) && isWhole && crop.width > 0 ? crop : active;
}

ColourFilters LibRawAccess::filters() {
    ColourFilters filters;
    filters.period = imgdata.idata.filters == LIBRAW_XTRANS ? 6 : 2;
    const int p = filters.period;
    const auto& sizes = imgdata.sizes;
    for (int row = 0; row < p; ++row) {
        for (int column = 0; column < p; ++column) {
            // The library counts from the corner of its visible area.
            const int r = (row + p * p - sizes.top_margin % p) % p;
            const int c = (column + p * p - sizes.left_margin % p) % p;
            const int channel = COLOR(r, c);
            filters.channels[std::size_t(row * p + column)] =
                std::uint8_t(channel == 3 ? 1 : channel % 3);
        }
    }
    return filters;
}

CameraMatrices LibRawAccess::matrices() const {
    const auto& colour = imgdata.color;
    CameraMatrices result;
    result.channels = std::clamp(imgdata.idata.colors, 1, kMaximumChannels);
    const auto n = std::size_t(result.channels);
    Calibration calibration;
    double sum = 0;
    for (std::size_t c = 0; c < n; ++c) {
        for (std::size_t i = 0; i < 3; ++i) {
            calibration.cameraFromXyz[c][i] = colour.cam_xyz[c][i];
            sum += std::abs(double(colour.cam_xyz[c][i]));
        }
    }
    if (sum > 0) result.first = calibration;

    if (isPositive(colour.cam_mul, 3)) {
        ChannelValues neutral{1, 1, 1, 1};
        for (std::size_t c = 0; c < n; ++c) {
            const float multiplier = colour.cam_mul[c] > 0 ? colour.cam_mul[c] : colour.cam_mul[1];
            neutral[c] = 1.0 / double(multiplier);
        }
        result.neutral = neutral;
    }
    return result;
}

BlackLevels LibRawAccess::black() {
    const auto& colour = imgdata.color;
    BlackLevels black;
    black.originTop = imgdata.sizes.top_margin;
    black.originLeft = imgdata.sizes.left_margin;
    const unsigned rows = std::clamp(colour.cblack[4], 0u, 64u),
                   columns = std::clamp(colour.cblack[5], 0u, 64u);
    const bool hasTable = rows > 0 && columns > 0;
    const auto table = [&](int r, int c) {
        return hasTable
                   ? float(colour.cblack[6 + unsigned(r) % rows * columns + unsigned(c) % columns])
                   : 0.0f;
    };
    if (imgdata.idata.filters == 0) {
        black.channels = imgdata.idata.colors == 1 ? 1 : kMaximumChannels;
        black.table.resize(std::size_t(black.channels));
        for (int c = 0; c < black.channels; ++c) {
            black.table[std::size_t(c)] =
                float(colour.black) + float(colour.cblack[c]) + table(0, 0);
        }
        return black;
    }
    const int period = imgdata.idata.filters == LIBRAW_XTRANS ? 6 : 2;
    black.rows = std::lcm(period, hasTable ? int(rows) : 1);
    black.columns = std::lcm(period, hasTable ? int(columns) : 1);
    black.table.resize(std::size_t(black.rows) * std::size_t(black.columns));
    for (int r = 0; r < black.rows; ++r) {
        for (int c = 0; c < black.columns; ++c) {
            const int channel = std::clamp(COLOR(r, c), 0, 3);
            black.table[std::size_t(r * black.columns + c)] =
                float(colour.black) + float(colour.cblack[channel]) + table(r, c);
        }
    }
    return black;
}

float LibRawAccess::white() const {
    return float(imgdata.color.maximum);
}

std::optional<double> LibRawAccess::exposureStops() const {
    constexpr double kUnset = -900, kMost = 4;
    const auto& fuji = imgdata.makernotes.fuji;
    double stops = 0;
    bool isStated = false;
    const auto add = [&](double value) {
        isStated = true;
        stops += value;
    };
    // The middle of the range is moved down by what is to be added again.
    if (fuji.ExpoMidPointShift > kUnset) add(-double(fuji.ExpoMidPointShift));
    if (fuji.BrightnessCompensation > 0) add(double(fuji.BrightnessCompensation));
    if (imgdata.color.dng_levels.baseline_exposure > kUnset)
        add(double(imgdata.color.dng_levels.baseline_exposure));
    if (!isStated || !(std::abs(stops) <= kMost)) return std::nullopt;
    return stops;
}

bool LibRawAccess::isLossyDng() {
    const char* decoder = unpack_function_name();
    return decoder && std::string_view(decoder) == "lossy_dng_load_raw()";
}

JpegPlace LibRawAccess::thumbnail() {
    const auto& internal = get_internal_data_pointer()->internal_data;
    if (internal.toffset <= 0) return {};
    JpegPlace place;
    place.offset = std::uint64_t(internal.toffset);
    place.bytes = imgdata.thumbnail.tlength;
    return place;
}

bool LibRawAccess::attachSamples(SensorImage& image) {
    const auto& raw = imgdata.rawdata;
    const auto attach = [&](const auto* samples, auto& target, int channels) {
        target = samples;
        image.channels = channels;
        const std::size_t pixelBytes = std::size_t(channels) * sizeof *samples;
        const std::size_t pitch = imgdata.sizes.raw_pitch ? imgdata.sizes.raw_pitch
                                                          : std::size_t(image.width) * pixelBytes;
        image.stride = std::ptrdiff_t(pitch / sizeof *samples);
        return pitch >= std::size_t(image.width) * pixelBytes;
    };
    if (image.layout == SensorLayout::fullColour) {
        if (raw.color4_image) return attach(&raw.color4_image[0][0], image.integers, 4);
        if (raw.color3_image) return attach(&raw.color3_image[0][0], image.integers, 3);
        if (raw.float4_image) return attach(&raw.float4_image[0][0], image.floats, 4);
        if (raw.float3_image) return attach(&raw.float3_image[0][0], image.floats, 3);
        return false;
    }
    if (raw.raw_image) return attach(raw.raw_image, image.integers, 1);
    if (raw.float_image) return attach(raw.float_image, image.floats, 1);
    return false;
}

int LibRawAccess::process(const ChannelValues& balance, bool half) {
    auto& p = imgdata.params;
    for (std::size_t c = 0; c < 4; ++c)
        p.user_mul[c] = float(balance[c]);
    if (imgdata.idata.colors == 3) p.user_mul[3] = p.user_mul[1];
    p.highlight = 1; // scales so that no channel is clipped
    p.output_color = 0;
    p.adjust_maximum_thr = 0;
    p.no_auto_bright = 1;
    p.half_size = half ? 1 : 0;
    p.user_qual = 3;
    p.use_fuji_rotate = 1;
    imgdata.sizes.pixel_aspect = 1; // pixels are made square later
    return dcraw_process();
}

void LibRawAccess::attachProcessed(SensorImage& image) {
    const auto& sizes = imgdata.sizes;
    const bool isTurned = is_fuji_rotated() != 0;
    const int by = imgdata.params.half_size ? 2 : 1;
    image.width = isTurned ? sizes.width : sizes.iwidth;
    image.height = isTurned ? sizes.height : sizes.iheight;
    const SensorRect crop = image.crop;
    image.active = {0, 0, image.width, image.height};
    image.crop = intersection(image.active,
                              {crop.left / by, crop.top / by, crop.width / by, crop.height / by});
    image.integers = &imgdata.image[0][0];
    image.channels = 4;
    image.stride = std::ptrdiff_t(image.width) * 4;
    image.black = {};
    image.black.table.assign(1, 0.0f);
    const auto& balance = image.colour.balance;
    const double largest = *std::max_element(balance.begin(), balance.end());
    // The channel with the largest multiplier saturates at 65535; ours with the smallest one at 1.
    for (std::size_t c = 0; c < kMaximumChannels; ++c)
        image.white[c] = float(65535 / largest);
    image.colour.balance.fill(1);
}

int LibRawAccess::get_decoder_info(libraw_decoder_info_t* info) {
    if (replaced_) load_raw = std::exchange(replaced_, nullptr); // it is known by its own address
    const int code = LibRaw::get_decoder_info(info);
    const bool isLossless = code == LIBRAW_SUCCESS && info->decoder_name &&
                            std::string_view(info->decoder_name) == "lossless_jpeg_load_raw()";
    if (isLossless)
        replaced_ = std::exchange(load_raw, static_cast<Decoder>(&LibRawAccess::loadLosslessJpeg));
    return code;
}

void LibRawAccess::loadLosslessJpeg() {
    auto& input = *get_internal_data_pointer()->internal_data.input;
    const INT64 begin = input.tell();
    if (decodeLossless()) return;
    if (cancellation_ && cancellation_->isCancelled()) throw LIBRAW_EXCEPTION_CANCELLED_BY_CALLBACK;
    input.seek(begin, SEEK_SET);
    (this->*replaced_)();
}

// From where the file stands.
bool LibRawAccess::decodeLossless() {
    constexpr int kShiftedWidth = 3984; // one camera's rows begin two photosites early
    const auto& unpacker = get_internal_data_pointer()->unpacker_data;
    auto& input = *get_internal_data_pointer()->internal_data.input;
    const auto& curve = imgdata.color.curve;
    const auto& sizes = imgdata.sizes;
    SlicedPicture picture{sizes.raw_width, sizes.raw_height, {}, imgdata.rawdata.raw_image};
    for (std::size_t i = 0; i < 3; ++i)
        picture.slices[i] = unpacker.cr2_slice[i];
    bool isPlain = picture.samples && unpacker.load_flags == 0 && picture.width != kShiftedWidth &&
                   sizes.raw_pitch == 2u * sizes.raw_width;
    for (std::size_t i = 0; isPlain && i < std::size(curve); ++i)
        isPlain = curve[i] == i;
    if (!isPlain) return false;
    // More than incompressible samples with the longest codes take.
    const INT64 most = 4096 + INT64(5) * picture.width * picture.height;
    const auto bytes = std::size_t(std::clamp<INT64>(input.size() - input.tell(), 0, most));
    const auto data = std::make_unique_for_overwrite<std::byte[]>(bytes);
    if (bytes == 0 || input.read(data.get(), bytes, 1) != 1) return false;
    return decodeSlicedJpeg({data.get(), bytes}, picture, cancellation_);
}

} // namespace kelvaro
