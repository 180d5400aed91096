#include "platform/raw/CameraRawEngine.h"

#include "platform/raw/BinnedPicture.h"
#include "platform/raw/BrightnessMatch.h"
#include "platform/raw/Development.h"
#include "platform/raw/RasterSource.h"
#include "platform/raw/RawDecoder.h"
#include "platform/raw/StreamedSource.h"
#include "platform/raw/WhiteMatch.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace kelvaro {

namespace {

class CameraRawFile final : public RawFile {
public:
    CameraRawFile(std::unique_ptr<RawDecoder> decoder, std::shared_ptr<ImageReader> previews)
        : decoder_(std::move(decoder)), previews_(std::move(previews)) {
        const SensorImage& sensor = decoder_->description();
        properties_.size = developedSize(sensor, 1);
        describeWhite();
        properties_.baselineExposureStops = sensor.exposureStops;
        properties_.supportsSharpness = true;
        properties_.defaultSharpness = kDefaultSharpness;
    }

    const RawProperties& properties() const override { return properties_; }

    Result<std::shared_ptr<const PixelSource>> develop(const RawDevelopSettings& asked,
                                                       const Cancellation* cancellation) override {
        RawDevelopSettings settings = asked;
        settings.reduction = std::min(asked.reduction, 2);
        auto sensor = decoder_->samples(settings.reduction, cancellation);
        if (!sensor) return fail(sensor.error());
        try {
            if (!isMatched_) {
                isMatched_ = match(*sensor, cancellation);
                sensor = decoder_->samples(settings.reduction, cancellation);
                if (!sensor) return fail(sensor.error());
            }
            sensor->exposureStops = properties_.baselineExposureStops;
            if (asked.reduction > 2 && asked.captureOnly && isBinnable(*sensor)) {
                auto binned = binnedPicture(*sensor, cancellation);
                if (!binned) return fail(cancelled());
                return std::make_shared<const RasterSource>(std::move(*binned));
            }
            // What the library itself processed is lost with its next picture.
            if (settings.streamed && !decoder_->processesItself())
                return std::make_shared<const StreamedSource>(*sensor, settings, decoder_,
                                                              tileMemory_);
            auto raster = kelvaro::develop(*sensor, settings, cancellation);
            if (!raster) return fail(cancelled());
            return std::make_shared<const RasterSource>(std::move(*raster));
        } catch (const std::bad_alloc&) {
            return fail(FailureKind::outOfMemory,
                        "There is not enough memory to develop \"" + decoder_->name() + "\".");
        }
    }

    using RawFile::preview;
    Result<std::optional<EmbeddedPreview>> preview(int atLeastPx) override {
        return decoder_->preview(atLeastPx);
    }

private:
    Failure cancelled() const {
        return {FailureKind::cancelled, "Developing \"" + decoder_->name() + "\" was cancelled."};
    }

    // Takes from the embedded preview what the file leaves open: the white and the brightness.
    // False when it was cancelled and should be tried again.
    bool match(SensorImage sensor, const Cancellation* cancellation) {
        if (!previews_ || (!decoder_->exposureDoubtStops() && decoder_->statesWhite())) return true;
        constexpr int kMatchPixels = 512; // along the longer side; every 64th pixel is looked at
        const auto preview = decoder_->preview(kMatchPixels);
        if (!preview || !*preview) {
            if (const auto bitmap = decoder_->bitmapPreview()) matchExposure(*bitmap, sensor);
            return true;
        }
        constexpr DecodeLimits kLimits{100'000'000, std::int64_t(1) << 29};
        const auto picture =
            previews_->decode((*preview)->bytes, decoder_->name(), kLimits, cancellation);
        if (!picture) return picture.error().kind != FailureKind::cancelled;
        if (!decoder_->statesWhite() && sensor.colours == 3) {
            const auto small = kelvaro::develop(sensor, {0, true, 2}, cancellation);
            if (!small) return false;
            if (const auto neutral = matchedNeutral(*small, sensor.colour, *picture)) {
                decoder_->setNeutral(*neutral);
                describeWhite();
                auto balanced = decoder_->samples(1, cancellation);
                if (!balanced) return false;
                sensor = std::move(*balanced);
            }
        }
        matchExposure(*picture, sensor);
        return true;
    }

    void matchExposure(const DecodedBitmap& picture, const SensorImage& sensor) {
        const auto doubt = decoder_->exposureDoubtStops();
        if (!doubt) return;
        const auto stops = matchedStops(previewLuminance(picture), sensorLuminance(sensor));
        if (stops && std::abs(*stops) >= *doubt) properties_.baselineExposureStops = *stops;
    }

    void describeWhite() {
        properties_.asShotTemperature = decoder_->description().colour.asShot.kelvin;
        properties_.asShotTint = decoder_->description().colour.asShot.tint;
    }

    std::shared_ptr<RawDecoder> decoder_; // with streamed sources
    std::shared_ptr<ImageReader> previews_;
    std::shared_ptr<TileMemory> tileMemory_ = std::make_shared<TileMemory>();
    bool isMatched_ = false;
    RawProperties properties_;
};

} // namespace

Result<std::unique_ptr<RawFile>> CameraRawEngine::open(const std::filesystem::path& path) {
    auto decoder = RawDecoder::open(path);
    if (!decoder) return fail(decoder.error());
    return std::unique_ptr<RawFile>(
        std::make_unique<CameraRawFile>(std::move(*decoder), previews_));
}

} // namespace kelvaro
