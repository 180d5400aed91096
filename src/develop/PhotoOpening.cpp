#include "develop/PhotoOpening.h"

#include "develop/Guides.h"
#include "develop/PreparedControls.h"
#include "develop/ToneMeasurement.h"
#include "platform/PhotoKinds.h"

namespace kelvaro {

namespace {

std::string quoted(const std::filesystem::path& photo) {
    return "“" + photo.filename().string() + "”";
}

Result<ImageSource> developedRaw(RawFile& file, const std::filesystem::path& photo,
                                 std::string identity, const RawDevelopSettings& settings,
                                 const Cancellation* cancellation) {
    auto pixels = file.develop(settings, cancellation);
    if (!pixels) return fail(std::move(pixels).error());
    return rawSource(photo, std::move(identity), imageFrom(std::move(*pixels)), file.properties());
}

// The measurement looks at 512 pixels, of which noise and sharpness tell nothing.
Result<Image> analysisImage(RawFile& file, const Cancellation* cancellation) {
    auto pixels = file.develop(smallCapture(file.properties(), kAnalysisLongerSide), cancellation);
    if (!pixels) return fail(std::move(pixels).error());
    return imageFrom(std::move(*pixels));
}

} // namespace

Result<std::string> photoIdentity(FileSystem& files, const std::filesystem::path& photo) {
    const auto status = files.status(photo);
    if (!status) return fail(status.error());
    return photoIdentity(status->size, status->modified);
}

std::string photoIdentity(std::int64_t size, FileTime modified) {
    return std::to_string(size) + "-" + std::to_string(modified.nanoseconds);
}

Result<ImageSource> PhotoOpener::open(const std::filesystem::path& photo, const Adjustments& edit,
                                      double scale, const Cancellation* cancellation) const {
    const auto kind = photoKind(photo);
    if (!kind)
        return fail(FailureKind::unsupported, quoted(photo) + " isn't a photo that Kelvaro knows.");
    auto identity = photoIdentity(files, photo);
    if (!identity) return fail(std::move(identity).error());
    if (*kind == PhotoKind::raw) {
        auto file = raw.open(photo);
        if (!file) return fail(std::move(file).error());
        auto settings = rawSettings(edit, (*file)->properties(), scale);
        settings.streamed = streams && settings.reduction == 1;
        auto source = developedRaw(**file, photo, std::move(*identity), settings, cancellation);
        if (!source) return source;
        if (analyses) analyses->recall(*source);
        const auto needs = ToneNeeds::of(edit).onCapture();
        if (settings.streamed && !source->rawToneAnalysis->known().covers(needs)) {
            auto measured = analysisImage(**file, cancellation);
            if (!measured) return fail(std::move(measured).error());
            source->measured = std::move(*measured);
        }
        return source;
    }
    auto decoded = reader.decode(photo, {}, cancellation);
    if (!decoded) return fail(std::move(decoded).error());
    const PixelSize size = decoded->pixels.size;
    auto source = bitmapSource(
        photo, std::move(*identity),
        imageFrom(sourceFrom(std::move(decoded->pixels), std::move(decoded->colour))), size);
    if (analyses) analyses->recall(source);
    return source;
}

Result<ImageSource> PhotoOpener::openCapture(const std::filesystem::path& photo,
                                             const Cancellation* cancellation) const {
    if (photoKind(photo) != PhotoKind::raw)
        return fail(FailureKind::unsupported,
                    quoted(photo) + " isn't a RAW file, so it has no scene-linear capture.");
    auto identity = photoIdentity(files, photo);
    if (!identity) return fail(std::move(identity).error());
    auto file = raw.open(photo);
    if (!file) return fail(std::move(file).error());
    RawDevelopSettings settings;
    settings.captureOnly = true;
    return developedRaw(**file, photo, std::move(*identity), settings, cancellation);
}

} // namespace kelvaro
