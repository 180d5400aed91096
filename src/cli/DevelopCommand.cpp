#include "cli/AnalysisFiles.h"
#include "cli/Commands.h"

#include "develop/BrushRaster.h"
#include "develop/CropGeometry.h"
#include "develop/PhaseTimes.h"
#include "develop/PhotoOpening.h"
#include "develop/ToneAnalysis.h"
#include "recipe/RecipeCoding.h"

#include <fmt/format.h>

namespace kelvaro {

namespace {

constexpr std::int64_t kLargestRecipe = 32 << 20; // bytes

// A request that cannot be carried out whatever the photo holds.
Result<FileFormat> checkedFormat(const DevelopRequest& request) {
    const auto format = formatOfExtension(request.output.extension().string());
    if (!format)
        return fail(
            FailureKind::unsupported,
            fmt::format("\"{}\" has no extension that names a format: jpg, heic, tif or png.",
                        request.output.string()));
    if ((request.linear || request.sceneStage) && *format != FileFormat::tiff)
        return fail(FailureKind::unsupported,
                    "A linear picture is written as TIFF: let the output's name end in .tif.");
    Adjustments probe;
    if (auto set = applySettings(probe, request.settings); !set)
        return fail(std::move(set).error());
    return *format;
}

// The output must not be the photo under any of its names.
Result<void> checkedTarget(const DevelopRequest& request) {
    std::error_code error;
    if (std::filesystem::equivalent(request.photo, request.output, error))
        return fail(FailureKind::unwritable,
                    fmt::format("\"{}\" is the photo itself; originals are never written.",
                                request.output.string()));
    return {};
}

Result<Adjustments> recipeOf(const DevelopRequest& request, Services& services) {
    Adjustments edit;
    if (request.recipe) {
        auto bytes = services.files->read(*request.recipe, kLargestRecipe);
        if (!bytes) return fail(std::move(bytes).error());
        auto decoded = decodeAdjustments(
            {reinterpret_cast<const char*>(bytes->data()), bytes->size()}, *services.random);
        if (!decoded)
            return fail(decoded.error().kind,
                        fmt::format("The recipe \"{}\" can't be used: {}", request.recipe->string(),
                                    decoded.error().message));
        edit = std::move(*decoded);
    } else if (!request.noSidecar) {
        auto stored = storedEdit(request.photo, services);
        if (!stored) return fail(std::move(stored).error());
        edit = std::move(stored->adjustments);
    }
    if (auto set = applySettings(edit, request.settings); !set) return fail(std::move(set).error());
    return edit;
}

struct Picture {
    Image image;
    BitmapFormat format;
    OutputSpace profile = OutputSpace::linearRec709;
};

BitmapFormat floatFormat() {
    BitmapFormat format;
    format.type = SampleType::f32;
    format.curve = TransferCurve::linear;
    format.alpha = BitmapFormat::Alpha::straight;
    return format;
}

Image reduced(const Image& image, const DevelopRequest& request) {
    return request.longEdge ? reducedToLongEdge(image, *request.longEdge) : image;
}

// The command's steps, each timed by name.
class Developing {
public:
    Developing(const DevelopRequest& request, FileFormat format, Services& services,
               PhaseTimes& times)
        : request_(request), format_(format), services_(services), times_(times) {}

    Result<void> run() {
        const TimedPhase total(&times_, "total");
        if (auto target = checkedTarget(request_); !target) return target;
        auto edit = recipeOf(request_, services_);
        if (!edit) return fail(std::move(edit).error());
        auto picture = request_.sceneStage ? sceneCapture() : developedPicture(*edit);
        if (!picture) return fail(std::move(picture).error());
        auto pixels = rendered(*picture);
        if (!pixels) return fail(std::move(pixels).error());
        return write(*pixels, picture->profile);
    }

private:
    const Cancellation* cancellation() const { return &services_.cancellation; }
    PhotoOpener opener() const { return {*services_.files, *services_.reader, *services_.raw}; }

    Result<ImageSource> opened(const Adjustments& edit) {
        const TimedPhase phase(&times_, "decode");
        return opener().open(request_.photo, edit, 1, cancellation());
    }

    Result<Picture> sceneCapture() {
        const TimedPhase phase(&times_, "decode");
        auto source = opener().openCapture(request_.photo, cancellation());
        if (!source) return fail(std::move(source).error());
        return Picture{reduced(source->linearCapture, request_), floatFormat()};
    }

    Result<Image> developed(const ImageSource& source, const Adjustments& edit) {
        return developedPhoto(source, edit, 1, *services_.renderer, *services_.brushes,
                              cancellation(), &times_);
    }

    Result<Picture> developedPicture(const Adjustments& edit) {
        auto source = opened(edit);
        if (!source) return fail(std::move(source).error());
        if (request_.analysis) {
            auto done = writeAnalysis(*source, edit, *request_.analysis, services_);
            if (!done) return fail(std::move(done).error());
        }
        auto photo = developed(*source, edit);
        if (!photo) return fail(std::move(photo).error());
        const Image image = reduced(straightenedAndCropped(*photo, edit), request_);
        if (request_.linear) return Picture{image, floatFormat()};

        using Alpha = BitmapFormat::Alpha;
        const bool bytes = format_ == FileFormat::jpeg || format_ == FileFormat::heic;
        const SampleType type = bytes ? SampleType::u8 : SampleType::u16;
        Picture picture{Pipeline::gamutMapped(image, request_.space),
                        Pipeline::bitmapFormat(request_.space, type),
                        Pipeline::profile(request_.space)};
        picture.format.alpha = bytes ? Alpha::overWhite : Alpha::straight;
        return picture;
    }

    Result<Bitmap> rendered(const Picture& picture) {
        const TimedPhase phase(&times_, "render");
        return services_.renderer->renderBitmap(picture.image, picture.image.extent(),
                                                picture.format, cancellation());
    }

    Result<void> write(const Bitmap& pixels, OutputSpace profile) {
        auto file = services_.files->create(request_.output);
        if (!file) return fail(std::move(file).error());
        {
            const TimedPhase phase(&times_, "encode");
            EncodeSettings settings{format_, request_.quality, profile};
            if (auto copied = services_.metadata->copy(request_.photo, pixels.size, profile))
                settings.metadata = std::move(*copied);
            auto done = services_.writer->encode(pixels, settings, **file, cancellation());
            if (!done) return done;
        }
        const TimedPhase phase(&times_, "flush");
        return (*file)->commit();
    }

    const DevelopRequest& request_;
    const FileFormat format_;
    Services& services_;
    PhaseTimes& times_;
};

} // namespace

ExitCode runDevelop(const DevelopRequest& request, Services& services) {
    const auto format = checkedFormat(request);
    if (!format) {
        report(format.error());
        return ExitCode::wrongUse;
    }
    PhaseTimes times;
    const auto done = Developing(request, *format, services, times).run();
    if (request.timings)
        for (const PhaseTimes::Phase& phase : times.phases())
            fmt::print(stderr, "{:<10}{:>9.1f} ms\n", phase.name, phase.milliseconds());
    if (done) return ExitCode::done;
    report(done.error());
    return ExitCode::someFailed;
}

} // namespace kelvaro
