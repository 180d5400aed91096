#include "platform/raw/RawDecoder.h"

#include "platform/raw/BadPhotosites.h"
#include "platform/raw/EmbeddedBitmap.h"
#include "platform/raw/EmbeddedJpeg.h"
#include "platform/raw/LibRawAccess.h"
#include "platform/raw/PictureMeasure.h"
#include "platform/raw/SampleTiles.h"
#include "platform/raw/SensorStatistics.h"
#include "platform/raw/StandaloneJpeg.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace kelvaro {

namespace {

using namespace std::chrono_literals;

constexpr std::int64_t kMaximumPhotosites = 400'000'000;
// The best packing in use needs more than one byte for this many photosites of a real picture.
constexpr std::int64_t kMaximumPhotositesPerByte = 32;
constexpr std::int64_t kAlwaysAllowed = 1 << 20;
constexpr std::uint64_t kMaximumPreviewBytes = 128 << 20;
// Decoders look a little ahead; more than this missing means that the picture breaks off.
constexpr INT64 kMissingTolerated = 4096;
constexpr auto kTimeLimit = 9s;
constexpr float kStuckMargin = 0.02f, kLeastMargin = 0.002f; // of the range from black to white
constexpr double kDoubtOfZero = 0.5; // stops; previews are contrastier than the data by less
constexpr float kLongExposureSeconds = 1, kTimesNoise = 10;

int exifOrientation(int flip) {
    constexpr std::array<int, 8> codes{1, 2, 4, 3, 5, 8, 6, 7};
    return codes[std::size_t(flip & 7)];
}

} // namespace

Result<std::unique_ptr<RawDecoder>> RawDecoder::open(const std::filesystem::path& path) {
    auto stream = RawStream::open(path);
    if (!stream) return fail(stream.error());
    try {
        std::unique_ptr<RawDecoder> decoder(
            new RawDecoder(std::move(*stream), path.filename().string()));
        if (auto done = decoder->identify(); !done) return fail(done.error());
        return decoder;
    } catch (const std::bad_alloc&) {
        return fail(FailureKind::outOfMemory,
                    "There is not enough memory to open \"" + path.filename().string() + "\".");
    } catch (...) {
        return fail(FailureKind::malformed,
                    "The file \"" + path.filename().string() + "\" is damaged.");
    }
}

RawDecoder::RawDecoder(std::unique_ptr<RawStream> stream, std::string name)
    : name_(std::move(name)),
      stream_(std::move(stream)),
      library_(std::make_unique<LibRawAccess>()) {}

RawDecoder::~RawDecoder() = default;

Failure RawDecoder::failure(int code) const {
    std::string file = "\"";
    file.append(name_).append("\"");
    switch (code) {
    case LIBRAW_CANCELLED_BY_CALLBACK:
        if (stream_->wasCancelled()) {
            return {FailureKind::cancelled, "Decoding " + file + " was cancelled."};
        }
        return {FailureKind::malformed, "The file " + file + " takes too long to decode."};
    case LIBRAW_UNSUFFICIENT_MEMORY:
        return {FailureKind::outOfMemory, "There is not enough memory to decode " + file + "."};
    case LIBRAW_TOO_BIG:
        return {FailureKind::tooLarge, "The picture in " + file + " is too large."};
    case LIBRAW_FILE_UNSUPPORTED:
    case LIBRAW_NOT_IMPLEMENTED:
        return {FailureKind::unsupported,
                "The file " + file + " is not a RAW file that can be read."};
    default:
        return {FailureKind::malformed, "The file " + file + " is damaged or incomplete."};
    }
}

Result<void> RawDecoder::identify() {
    stream_->beginTask(nullptr, kTimeLimit);
    stream_->seek(0, SEEK_SET); // the library begins where the stream stands
    if (const int code = library_->open_datastream(stream_.get()); code != LIBRAW_SUCCESS) {
        return fail(failure(code));
    }
    const auto& sizes = library_->imgdata.sizes;
    if (sizes.raw_width == 0 || sizes.raw_height == 0) {
        return fail(failure(LIBRAW_FILE_UNSUPPORTED));
    }
    directories_ = std::make_unique<TiffFile>(
        [stream = stream_.get()](std::uint64_t offset, std::span<std::byte> bytes) {
            return stream->readAt(INT64(offset), bytes);
        });
    if (library_->imgdata.idata.dng_version != 0) {
        dng_ = readDngTags(*directories_, sizes.raw_width, sizes.raw_height,
                           std::uint64_t(stream_->size()));
    }
    if (auto checked = checkSize(); !checked) return checked;
    describe();
    return {};
}

Result<void> RawDecoder::checkSize() const {
    const auto& sizes = library_->imgdata.sizes;
    const auto photosites = std::int64_t(sizes.raw_width) * sizes.raw_height;
    if (photosites > kMaximumPhotosites) return fail(failure(LIBRAW_TOO_BIG));
    if (photosites > kAlwaysAllowed + kMaximumPhotositesPerByte * stream_->size()) {
        return fail(FailureKind::malformed,
                    "The file \"" + name_ + "\" is too short for the size of its picture.");
    }
    return {};
}

void RawDecoder::describe() {
    const auto& data = library_->imgdata;
    SensorImage& d = description_;
    d.width = data.sizes.raw_width;
    d.height = data.sizes.raw_height;
    const SensorRect whole{0, 0, d.width, d.height};
    d.active = intersection(whole, {data.sizes.left_margin, data.sizes.top_margin, data.sizes.width,
                                    data.sizes.height});
    if (dng_ && dng_->activeArea) d.active = *dng_->activeArea;
    if (d.active.isEmpty()) d.active = whole;
    d.crop = d.active;
    if (dng_ && dng_->defaultCrop) {
        SensorRect crop = *dng_->defaultCrop;
        crop.left += d.active.left;
        crop.top += d.active.top;
        // Rounded positions may stick out by one; more is nonsense, and the whole area is safer.
        const SensorRect inside = intersection(crop, d.active);
        if (!inside.isEmpty() && inside.width >= crop.width - 1 &&
            inside.height >= crop.height - 1) {
            d.crop = inside;
        }
    } else if (!dng_) {
        d.crop = library_->cameraCrop(d.active);
    }
    d.orientation = dng_ ? dng_->orientation : exifOrientation(data.sizes.flip);
    d.corrections = dng_ ? &dng_->corrections : nullptr;
    describeExposure();
    describeShape();
    d.layout = library_->layout();
    needsProcessing_ = library_->needsProcessing();
    if (needsProcessing_) {
        const PixelSize size = library_->processedSize();
        d.layout = SensorLayout::fullColour;
        d.width = size.width;
        d.height = size.height;
        // The library delivers its own visible area.
        const SensorRect visible{0, 0, size.width, size.height};
        SensorRect crop = d.crop;
        crop.left -= data.sizes.left_margin;
        crop.top -= data.sizes.top_margin;
        crop = intersection(visible, crop);
        d.active = visible;
        d.crop = crop.isEmpty() || library_->is_fuji_rotated() ? visible : crop;
    } else if (dng_ && dng_->filters && d.layout != SensorLayout::fullColour) {
        d.filters = *dng_->filters;
        for (int i = 0; i < d.filters.period * d.filters.period; ++i) {
            const int p = d.filters.period;
            const int row = (i / p + p * p - d.active.top % p) % p,
                      column = (i % p + p * p - d.active.left % p) % p;
            d.filters.channels[std::size_t(i)] = std::uint8_t(dng_->filters->at(row, column));
        }
    } else {
        d.filters = library_->filters();
    }
    camera_ = library_->matrices();
    if (dng_) {
        if (dng_->colour.first || dng_->colour.second) {
            camera_ = dng_->colour;
        } else if (dng_->colour.neutral) {
            camera_.neutral = dng_->colour.neutral;
        }
    }
    if (d.layout == SensorLayout::monochrome) camera_ = {1, {}, {}, {}, {}};
    describeColour();
    describeLevels();
}

void RawDecoder::describeExposure() {
    const auto stated = dng_ ? dng_->baselineExposureStops : library_->exposureStops();
    description_.exposureStops = stated.value_or(0);
    description_.sensitivity = library_->sensitivity();
    // 0 is also what programs write that know nothing of the camera.
    if (stated) exposureDoubtStops_ = *stated == 0 ? std::optional(kDoubtOfZero) : std::nullopt;
}

void RawDecoder::describeShape() {
    const auto scales = dng_ ? SquaringScales{dng_->rowScale, dng_->columnScale}
                             : squaringScales(library_->imgdata.sizes.pixel_aspect);
    description_.rowScale = scales.row;
    description_.columnScale = scales.column;
}

void RawDecoder::describeColour() {
    SensorImage& d = description_;
    d.colours = camera_.channels;
    d.colour = cameraColour(camera_);
    for (std::size_t c = 0; c < kMaximumChannels; ++c)
        d.saturation[c] = float(d.colour.balance[c]);
}

void RawDecoder::setNeutral(const ChannelValues& neutral) {
    camera_.neutral = neutral;
    describeColour();
    if (isUnpacked_) measureSaturation();
    description_.measure = std::make_shared<PictureMeasure>();
}

void RawDecoder::describeLevels() {
    SensorImage& d = description_;
    d.black = library_->black();
    d.white.fill(library_->white());
    // A lossy DNG's own curve has been applied by the library, which then counts from 0 to 65535.
    if (dng_ && !library_->isLossyDng()) {
        if (dng_->black) d.black = *dng_->black;
        for (std::size_t c = 0; c < kMaximumChannels && !dng_->white.empty(); ++c) {
            d.white[c] = float(dng_->white[std::min(c, dng_->white.size() - 1)]);
        }
    }
    const float blackest = *std::max_element(d.black.table.begin(), d.black.table.end());
    for (float& white : d.white) {
        if (!(white > blackest)) white = library_->white();
        if (!(white > blackest)) white = blackest + 1;
    }
}

Result<void> RawDecoder::unpack(const Cancellation* cancellation) {
    if (isUnpacked_) return {};
    if (dng_ && dng_->reachesPastEnd) return fail(failure(LIBRAW_IO_ERROR));
    stream_->beginTask(cancellation, kTimeLimit);
    library_->watch(cancellation);
    const int code = unpackTiles(cancellation) ? int(LIBRAW_SUCCESS) : library_->unpack();
    library_->watch(nullptr);
    if (code != LIBRAW_SUCCESS) {
        // What is left of the library's state cannot be unpacked again.
        const Failure why = failure(code);
        library_ = std::make_unique<LibRawAccess>();
        if (auto again = identify(); !again) return again;
        return fail(why);
    }
    if (stream_->missingBytes() > kMissingTolerated) return fail(failure(LIBRAW_IO_ERROR));
    isUnpacked_ = true;
    describeLevels(); // some formats measure their levels while unpacking
    repair();
    measureGreens();
    measureSaturation();
    description_.measure = std::make_shared<PictureMeasure>();
    return {};
}

// What the library decodes sample after sample and tile after tile. What is damaged is left to it,
// which mends or refuses it.
bool RawDecoder::unpackTiles(const Cancellation* cancellation) {
    const bool isFullColour = description_.layout == SensorLayout::fullColour;
    if (!dng_ || needsProcessing_ || (dng_->samplesPerPixel == 3) != isFullColour ||
        dng_->width != description_.width || dng_->height != description_.height)
        return false;
    auto samples = decodeTiles(
        *dng_,
        [this](std::uint64_t offset, std::span<std::byte> bytes) {
            return stream_->readAt(INT64(offset), bytes);
        },
        cancellation);
    if (!samples) return false;
    ownSamples_ = std::move(*samples);
    return true;
}

bool RawDecoder::attachSamples(SensorImage& image) {
    if (ownSamples_.isEmpty()) return library_->attachSamples(image);
    image.integers = ownSamples_.data();
    image.channels = dng_->samplesPerPixel;
    image.stride = std::ptrdiff_t(image.width) * image.channels;
    return true;
}

void RawDecoder::measureGreens() {
    SensorImage image = description_;
    if (image.layout != SensorLayout::bayer || !attachSamples(image)) return;
    description_.greenRatio = greenRatio(image, MosaicReader(image));
}

void RawDecoder::measureSaturation() {
    SensorImage image = description_;
    if (needsProcessing_ || !attachSamples(image)) return;
    const auto levels = saturationLevels(image, measure(image));
    const float black = *std::max_element(image.black.table.begin(), image.black.table.end());
    for (std::size_t c = 0; c < 3; ++c) {
        description_.saturation[c] =
            float(image.colour.balance[c]) * (levels[c] - black) / (image.white[c] - black);
    }
}

void RawDecoder::repair() {
    SensorImage image = description_;
    std::uint16_t* samples =
        ownSamples_.isEmpty() ? library_->mutableSamples() : ownSamples_.data();
    if (needsProcessing_ || image.layout == SensorLayout::fullColour || !samples ||
        !attachSamples(image))
        return;
    const SensorRect& active = image.active;
    const MosaicSamples mosaic(samples + active.top * image.stride + active.left, image);
    if (dng_) {
        std::vector<BadPoint> points = dng_->corrections.badPoints;
        findConstants(mosaic, dng_->corrections.badConstants, points);
        repairListed(mosaic, points);
    }
    const float black = *std::max_element(image.black.table.begin(), image.black.table.end());
    const float range = std::clamp(image.white[1] - black, 0.0f, 65535.0f);
    StuckLimits limits;
    limits.black = std::uint16_t(std::clamp(black, 0.0f, 65535.0f));
    limits.margin = std::uint16_t(kStuckMargin * range);
    // Photosites that leak a little show after seconds of exposure; the longer, the more of them.
    if (library_->imgdata.other.shutter >= kLongExposureSeconds) {
        const float noise = darkNoise(image, MosaicReader(image)) * range;
        limits.margin = std::uint16_t(
            std::clamp(kTimesNoise * noise, kLeastMargin * range, kStuckMargin * range));
        limits.times = 2;
    }
    repairStuck(mosaic, limits);
}

Result<SensorImage> RawDecoder::samples(int reduction, const Cancellation* cancellation) {
    try {
        if (auto done = unpack(cancellation); !done) return fail(done.error());
        if (needsProcessing_) {
            stream_->beginTask(cancellation, kTimeLimit);
            library_->watch(cancellation);
            auto result = processed(reduction);
            library_->watch(nullptr);
            return result;
        }
        SensorImage image = description_;
        if (!attachSamples(image)) return fail(failure(LIBRAW_FILE_UNSUPPORTED));
        return image;
    } catch (const std::bad_alloc&) {
        return fail(failure(LIBRAW_UNSUFFICIENT_MEMORY));
    } catch (...) {
        return fail(failure(LIBRAW_DATA_ERROR));
    }
}

Result<SensorImage> RawDecoder::processed(int reduction) {
    const int code = library_->process(description_.colour.balance, reduction == 2);
    if (code != LIBRAW_SUCCESS) return fail(failure(code));
    SensorImage image = description_;
    image.measure.reset(); // every processing has samples of its own
    library_->attachProcessed(image);
    image.isReduced = reduction == 2;
    return image;
}

std::optional<DecodedBitmap> RawDecoder::bitmapPreview() const {
    return embeddedBitmap(
        *directories_,
        [this](std::uint64_t offset, std::span<std::byte> bytes) {
            return stream_->readAt(INT64(offset), bytes);
        },
        std::uint64_t(stream_->size()));
}

Result<std::optional<EmbeddedPreview>> RawDecoder::preview(int atLeastPx) {
    const ReadAt read = [this](std::uint64_t offset, std::span<std::byte> bytes) {
        return stream_->readAt(INT64(offset), bytes);
    };
    try {
        auto candidates = jpegCandidates(*directories_);
        candidates.push_back(library_->thumbnail());
        const auto colour = statedColour(*directories_);
        std::vector<JpegPlace> places;
        for (JpegPlace& candidate : candidates) {
            if (candidate.bytes == 0) continue;
            if (!candidate.colour) candidate.colour = colour;
            const auto found = jpegAt(read, candidate, std::uint64_t(stream_->size()));
            if (found && found->bytes <= kMaximumPreviewBytes) places.push_back(*found);
        }
        const JpegPlace* chosen = chosenJpeg(places, atLeastPx);
        if (!chosen) return std::optional<EmbeddedPreview>();
        std::vector<std::byte> bytes(chosen->bytes);
        if (read(chosen->offset, bytes) != bytes.size()) {
            return fail(FailureKind::unreadable, "The file \"" + name_ + "\" cannot be read.");
        }
        EmbeddedPreview preview;
        preview.bytes = standaloneJpeg(std::move(bytes), *chosen, description_.orientation);
        preview.size = chosen->size;
        if (chosen->orientation.value_or(description_.orientation) >= 5)
            std::swap(preview.size.width, preview.size.height);
        return std::optional(std::move(preview));
    } catch (const std::bad_alloc&) {
        return fail(failure(LIBRAW_UNSUFFICIENT_MEMORY));
    }
}

} // namespace kelvaro
