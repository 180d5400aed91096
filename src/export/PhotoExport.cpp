#include "export/PhotoExport.h"

#include "develop/CropGeometry.h"
#include "develop/PhotoOpening.h"
#include "develop/ToneAnalysis.h"
#include "export/CaptureDate.h"
#include "export/ExportLayout.h"
#include "export/Leftovers.h"
#include "export/RenderedStrips.h"
#include "export/Verification.h"

#include <new>

namespace kelvaro {

namespace {

Unexpected<PhotoFailure> failed(ExportError error, std::string detail) {
    return {PhotoFailure{false, error, std::move(detail)}};
}

Unexpected<PhotoFailure> failed(ExportError error, Failure failure) {
    return {
        PhotoFailure{failure.kind == FailureKind::cancelled, error, std::move(failure.message)}};
}

// 16 bits where nothing is lost, 8 where the encoder loses more than that anyway.
BitmapFormat outputFormat(const ExportSettings& settings, bool isOpaque) {
    using Alpha = BitmapFormat::Alpha;
    const bool isLossy = kelvaro::isLossy(settings.format);
    auto format =
        Pipeline::bitmapFormat(settings.colorSpace, isLossy ? SampleType::u8 : SampleType::u16);
    format.alpha = isOpaque ? Alpha::drop : isLossy ? Alpha::overWhite : Alpha::straight;
    return format;
}

} // namespace

Result<ExportedFile, PhotoFailure> PhotoExport::run(const ExportJob& job,
                                                    const ExportNames::Target& target,
                                                    const PhotoProperties& properties) const {
    try {
        if (auto sound = checkTarget(job, target); !sound) return Unexpected{sound.error()};
        auto picture = finished(job, properties);
        if (!picture) return Unexpected{picture.error()};
        auto encoding = encodeSettings(job, picture->picture.extent().size());
        if (!encoding) return Unexpected{encoding.error()};
        // Pixels and properties of two states of a file would make a picture that never was.
        if (auto same = checkUnchanged(job, picture->identity); !same)
            return Unexpected{same.error()};
        if (!parts.work.waitForQuiet(cancellation)) return Unexpected{checkNotCancelled().error()};
        return written(target, *picture, *encoding);
    } catch (const std::bad_alloc&) {
        return failed(ExportError::renderFailed, "There is not enough memory for this photo.");
    }
}

Result<void, PhotoFailure> PhotoExport::checkNotCancelled() const {
    if (cancellation && cancellation->isCancelled())
        return Unexpected{PhotoFailure{true, ExportError::renderFailed, {}}};
    return {};
}

Result<void, PhotoFailure> PhotoExport::checkTarget(const ExportJob& job,
                                                    const ExportNames::Target& target) const {
    if (resolvedPath(target.url) == resolvedPath(job.photo))
        return failed(ExportError::writeFailed, "The file would replace the photo itself.");
    if (!target.replaces && parts.files.linkStatus(target.url))
        return failed(ExportError::writeFailed, "Something of that name has appeared meanwhile.");
    return checkNotCancelled();
}

// Decoded and developed at full size, straightened and cropped.
Result<Image, PhotoFailure> PhotoExport::developed(const ExportJob& job) const {
    if (!parts.work.waitForQuiet(cancellation)) return Unexpected{checkNotCancelled().error()};
    const PhotoOpener opener{parts.files, parts.reader, parts.raw, true, parts.analyses};
    auto source = [&] {
        const TimedPhase phase(times, "decode");
        return opener.open(job.photo, job.edit, 1, cancellation);
    }();
    if (!source) return failed(ExportError::unreadable, source.error());
    auto photo =
        developedPhoto(*source, job.edit, 1, parts.renderer, parts.brushes, cancellation, times);
    if (!photo) return failed(ExportError::renderFailed, photo.error());
    if (parts.analyses) parts.analyses->remember(*source);
    return straightenedAndCropped(*photo, job.edit);
}

Result<PhotoExport::Finished, PhotoFailure>
PhotoExport::finished(const ExportJob& job, const PhotoProperties& properties) const {
    auto identity = photoIdentity(parts.files, job.photo);
    if (!identity) return failed(ExportError::unreadable, identity.error());
    auto photo = developed(job);
    if (!photo) return Unexpected{photo.error()};
    const bool isOpaque = !photo->hasAlpha() || settings.borderFraction() > 0;
    const Image shaped = resized(*photo, settings);
    const bool isReadOnce = shaped == *photo && job.edit.straighten == 0;

    Image picture = Pipeline::gamutMapped(shaped, settings.colorSpace);
    if (settings.dateStamp != DateStamp::Style::none) {
        const auto status = parts.files.status(job.photo);
        const auto day = captureDay(properties, status ? status->created : FileTime{});
        picture = DateStamp::imprinted(picture, DateStamp::text(settings.dateStamp, day));
    }
    return Finished{bordered(picture, settings), outputFormat(settings, isOpaque), isReadOnce,
                    std::move(*identity)};
}

Result<void, PhotoFailure> PhotoExport::checkUnchanged(const ExportJob& job,
                                                       const std::string& identity) const {
    const auto now = photoIdentity(parts.files, job.photo);
    if (!now) return failed(ExportError::unreadable, now.error());
    if (*now != identity)
        return failed(ExportError::unreadable, "The photo's file changed while it was read.");
    return {};
}

Result<EncodeSettings, PhotoFailure> PhotoExport::encodeSettings(const ExportJob& job,
                                                                 PixelSize size) const {
    EncodeSettings encoding{fileFormat(settings.format), settings.quality / 100,
                            Pipeline::profile(settings.colorSpace)};
    if (!settings.includeMetadata) return encoding;
    const TimedPhase phase(times, "metadata");
    auto copied = parts.metadata.copy(job.photo, size, encoding.space);
    if (!copied) return failed(ExportError::unreadable, copied.error());
    encoding.metadata = std::move(*copied);
    return encoding;
}

Result<ExportedFile, PhotoFailure> PhotoExport::written(const ExportNames::Target& target,
                                                        const Finished& finished,
                                                        const EncodeSettings& encoding) const {
    if (auto going = checkNotCancelled(); !going) return Unexpected{going.error()};
    // The file begins once there is something to write; strips are rendered while they are written.
    const bool inStrips = settings.format == ExportFormat::jpeg && finished.isReadOnce;
    Result<Bitmap, PhotoFailure> whole = inStrips ? Bitmap() : rendered(finished);
    if (!whole) return Unexpected{whole.error()};
    const auto temporary = temporaryExportName(parts.random, fileExtension(settings.format));
    const auto place = target.url.parent_path() / temporary;
    auto file = parts.files.createWith(target.url, {temporary, !target.replaces});
    if (!file) return failed(ExportError::writeFailed, file.error());
    auto encoded = inStrips ? encodedInStrips(finished, encoding, **file, place)
                            : encodedWhole(*whole, encoding, **file, place);
    if (!encoded) return Unexpected{encoded.error()};
    if (auto going = checkNotCancelled(); !going) return Unexpected{going.error()};
    // What was chosen for replacement was a file; links and folders are not replaced.
    const auto standing = parts.files.linkStatus(target.url);
    if (target.replaces && standing && standing->kind != FileStatus::Kind::file)
        return failed(ExportError::writeFailed, "Something of that name has appeared meanwhile.");
    const TimedPhase phase(times, "move");
    ExportedFile exported{target.url, finished.picture.extent().size(), (*file)->size()};
    if (auto moved = (*file)->commit(); !moved)
        return failed(ExportError::writeFailed, moved.error());
    return exported;
}

Result<Bitmap, PhotoFailure> PhotoExport::rendered(const Finished& finished) const {
    const TimedPhase phase(times, "render");
    auto pixels = parts.renderer.renderBitmap(finished.picture, finished.picture.extent(),
                                              finished.format, cancellation);
    if (!pixels) return failed(ExportError::renderFailed, pixels.error());
    return std::move(*pixels);
}

Result<void, PhotoFailure> PhotoExport::encodedWhole(const Bitmap& pixels,
                                                     const EncodeSettings& encoding,
                                                     PendingFile& file,
                                                     const std::filesystem::path& place) const {
    auto done = [&] {
        const TimedPhase phase(times, "encode");
        return parts.writer.encode(pixels, encoding, file, cancellation);
    }();
    if (!done) return failed(ExportError::writeFailed, done.error());
    return verified(place, pixels, encoding);
}

// Each strip is encoded while the next one is rendered, and forgotten.
Result<void, PhotoFailure> PhotoExport::encodedInStrips(const Finished& finished,
                                                        const EncodeSettings& encoding,
                                                        PendingFile& file,
                                                        const std::filesystem::path& place) const {
    const RenderedStrips strips(parts.renderer, finished.picture, finished.format, cancellation,
                                verifies);
    auto done = [&] {
        const TimedPhase phase(times, "render");
        return parts.writer.encodeStrips(strips, encoding, file, cancellation);
    }();
    if (const auto why = strips.failure()) return failed(ExportError::renderFailed, *why);
    if (!done) return failed(ExportError::writeFailed, done.error());
    return verified(place, strips, encoding);
}

// Reads back the file at `place`; nothing where that is not asked for.
template<class Rendered>
Result<void, PhotoFailure> PhotoExport::verified(const std::filesystem::path& place,
                                                 const Rendered& rendered,
                                                 const EncodeSettings& encoding) const {
    if (!verifies) return {};
    const TimedPhase phase(times, "verify");
    const auto read = parts.reader.decode(place, {}, cancellation);
    if (!read) return failed(ExportError::writeFailed, read.error());
    auto right = compare(rendered, encoding, *read);
    if (!right) return failed(ExportError::writeFailed, right.error());
    return {};
}

} // namespace kelvaro
