#include "export/PhotoExport.h"

#include "develop/CropGeometry.h"
#include "develop/PhotoOpening.h"
#include "develop/ToneAnalysis.h"
#include "export/CaptureDate.h"
#include "export/ExportLayout.h"
#include "export/Leftovers.h"
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
        auto picture = rendered(job, properties);
        if (!picture) return Unexpected{picture.error()};
        auto encoding = encodeSettings(job, picture->pixels);
        if (!encoding) return Unexpected{encoding.error()};
        // Pixels and properties of two states of a file would make a picture that never was.
        if (auto same = checkUnchanged(job, picture->identity); !same)
            return Unexpected{same.error()};
        return written(target, picture->pixels, *encoding);
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
    const PhotoOpener opener{parts.files, parts.reader, parts.raw, true};
    auto source = [&] {
        const TimedPhase phase(times, "decode");
        return opener.open(job.photo, job.edit, 1, cancellation);
    }();
    if (!source) return failed(ExportError::unreadable, source.error());
    if (parts.analyses) parts.analyses->recall(*source);
    auto photo =
        developedPhoto(*source, job.edit, 1, parts.renderer, parts.brushes, cancellation, times);
    if (!photo) return failed(ExportError::renderFailed, photo.error());
    if (parts.analyses) parts.analyses->remember(*source);
    return straightenedAndCropped(*photo, job.edit);
}

Result<PhotoExport::Rendered, PhotoFailure>
PhotoExport::rendered(const ExportJob& job, const PhotoProperties& properties) const {
    auto identity = photoIdentity(parts.files, job.photo);
    if (!identity) return failed(ExportError::unreadable, identity.error());
    auto photo = developed(job);
    if (!photo) return Unexpected{photo.error()};
    const bool isOpaque = !photo->hasAlpha() || settings.borderFraction() > 0;

    Image picture = Pipeline::gamutMapped(resized(*photo, settings), settings.colorSpace);
    if (settings.dateStamp != DateStamp::Style::none) {
        const auto status = parts.files.status(job.photo);
        const auto day = captureDay(properties, status ? status->created : FileTime{});
        picture = DateStamp::imprinted(picture, DateStamp::text(settings.dateStamp, day));
    }
    picture = bordered(picture, settings);

    if (!parts.work.waitForQuiet(cancellation)) return Unexpected{checkNotCancelled().error()};
    const TimedPhase phase(times, "render");
    auto pixels = parts.renderer.renderBitmap(picture, picture.extent(),
                                              outputFormat(settings, isOpaque), cancellation);
    if (!pixels) return failed(ExportError::renderFailed, pixels.error());
    return Rendered{std::move(*pixels), std::move(*identity)};
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
                                                                 const Bitmap& pixels) const {
    EncodeSettings encoding{fileFormat(settings.format), settings.quality / 100,
                            Pipeline::profile(settings.colorSpace)};
    if (!settings.includeMetadata) return encoding;
    auto copied = parts.metadata.copy(job.photo, pixels.size, encoding.space);
    if (!copied) return failed(ExportError::unreadable, copied.error());
    encoding.metadata = std::move(*copied);
    return encoding;
}

Result<ExportedFile, PhotoFailure> PhotoExport::written(const ExportNames::Target& target,
                                                        const Bitmap& pixels,
                                                        const EncodeSettings& encoding) const {
    if (auto going = checkNotCancelled(); !going) return Unexpected{going.error()};
    const auto temporary = temporaryExportName(parts.random, fileExtension(settings.format));
    auto file = parts.files.createWith(target.url, {temporary, !target.replaces});
    if (!file) return failed(ExportError::writeFailed, file.error());
    {
        const TimedPhase phase(times, "encode");
        auto done = parts.writer.encode(pixels, encoding, **file, cancellation);
        if (!done) return failed(ExportError::writeFailed, done.error());
    }
    if (verifies) {
        auto right = verified(target.url.parent_path() / temporary, pixels, encoding);
        if (!right) return Unexpected{right.error()};
    }
    if (auto going = checkNotCancelled(); !going) return Unexpected{going.error()};
    // What was chosen for replacement was a file; links and folders are not replaced.
    const auto standing = parts.files.linkStatus(target.url);
    if (target.replaces && standing && standing->kind != FileStatus::Kind::file)
        return failed(ExportError::writeFailed, "Something of that name has appeared meanwhile.");
    const TimedPhase phase(times, "move");
    ExportedFile exported{target.url, pixels.size, (*file)->size()};
    if (auto moved = (*file)->commit(); !moved)
        return failed(ExportError::writeFailed, moved.error());
    return exported;
}

Result<void, PhotoFailure> PhotoExport::verified(const std::filesystem::path& file,
                                                 const Bitmap& pixels,
                                                 const EncodeSettings& encoding) const {
    const TimedPhase phase(times, "verify");
    const auto read = parts.reader.decode(file, {}, cancellation);
    if (!read) return failed(ExportError::writeFailed, read.error());
    if (auto wrong = mismatch(pixels, encoding, *read))
        return failed(ExportError::writeFailed, std::move(*wrong));
    return {};
}

} // namespace kelvaro
