// How near what the screen shows is to what an export writes. Each photo is shown at full size and
// to fit, and exported as JPEG with the same recipe; all three are reduced to one size by one
// filter. Prints colour differences (CIEDE2000) of either view from the file; fails where at full
// size or to fit one in a hundred pixels differs by more than 1. Beside it stands what JPEG alone
// changes of the same pixels; with --png nothing is left of that.
//     screen_match OUT PHOTO... [--side PIXELS] [--quality 10…100] [--plain] [--png]
#include "app/ExportServices.h"
#include "app/RenderServices.h"
#include "base/MainLoop.h"
#include "develop/Recipes.h"
#include "platform/system/SystemClock.h"
#include "raw_report/Picture.h"
#include "render/RenderSession.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fmt/format.h>
#include <string>

using namespace kelvaro;

namespace {

constexpr double kPatience = 120; // seconds
constexpr double kLargestDifference = 1;

// Every kind of stage but grain, whose pattern is made for the full size.
Adjustments recipe() {
    Adjustments edit = test::typical();
    edit.temperature = 12;
    edit.dehaze = 10;
    edit.vignette = -20;
    return edit;
}

struct Match {
    Services& services;
    RenderServices& render;
    MainLoop& loop;
    std::filesystem::path out;
    Adjustments edit;
    int side = 1600;
    double quality = 92;
    ExportFormat format = ExportFormat::jpeg;

    // The whole picture: pixel for pixel, or to fit into `fit`.
    Result<Bitmap> shown(const std::filesystem::path& photo, std::optional<PixelSize> fit) {
        RenderSession canvas(render.engine(), render.sessions());
        Result<Bitmap> picture = fail(FailureKind::internal, "Nothing was shown.");
        bool done = false;
        canvas.open(photo);
        ViewRequest request;
        request.edit = edit;
        request.fit = fit;
        canvas.render(request, [&](const Result<RenderedView>& view) {
            done = !view || view->isFinal;
            if (!view) picture = fail(view.error());
            if (view && view->isFinal) picture = opaque(*view->pixels);
        });
        loop.runUntil([&] { return done; }, kPatience);
        return picture;
    }

    Result<std::filesystem::path> exported(const std::filesystem::path& photo, ExportFormat as) {
        Exporter exporter(exportParts(services, render.engine(), &render.analyses()), loop);
        ExportSettings settings;
        settings.quality = quality;
        settings.format = as;
        settings.destination = out.string();
        std::optional<std::filesystem::path> file;
        const auto ended = [&](const Exporter::PhotoOutcome& outcome) {
            if (outcome.file) file = outcome.file->url;
        };
        exporter.start({{photo, edit}}, settings, {}, {true, ended, nullptr});
        loop.runUntil([&] { return !exporter.state()->running; }, kPatience);
        for (const auto& failure : exporter.state()->failures)
            return fail(FailureKind::internal, failure.message + " " + failure.detail);
        return *file;
    }

    // In linear light, fitting into `side`, by one filter for all; not rounded to 8 bits again,
    // which would be seen in the darks.
    Raster reduced(Bitmap pixels, const ColourDecoding& colour) const {
        const Image photo = imageFrom(sourceFrom(std::move(pixels), colour));
        const PixelSize size = photo.extent().size();
        const double scale = std::min(1.0, double(side) / photo.extent().longerSide());
        const auto scaled = [&](int length) {
            return std::max(1, int(std::lround(length * scale)));
        };
        const PixelSize target{scaled(size.width), scaled(size.height)};
        const Image small = size == target ? photo : lanczosResized(photo, target);
        auto drawn = services.renderer->renderRaster(small, small.extent(), nullptr);
        if (!drawn) report::stop(drawn.error().message);
        return std::move(*drawn);
    }

    // Half and 99 in a hundred of all pixels differ by no more.
    struct Quantiles {
        double p50 = 0, p99 = 0;
    };
    static Quantiles quantiles(const Raster& a, const Raster& b) {
        const auto lab = [](const Raster& raster, int x, int y) {
            report::Lab light;
            for (int c = 0; c < 3; ++c)
                light[std::size_t(c)] = std::clamp(double(raster.row(c, y)[x]), 0.0, 1.0);
            return report::labOf(light);
        };
        std::vector<double> differences;
        for (int y = 0; y < std::min(a.extent().height, b.extent().height); ++y)
            for (int x = 0; x < std::min(a.extent().width, b.extent().width); ++x)
                differences.push_back(report::difference(lab(a, x, y), lab(b, x, y)));
        std::sort(differences.begin(), differences.end());
        const auto at = [&](double share) {
            return differences[std::size_t(share * double(differences.size() - 1))];
        };
        return {at(0.5), at(0.99)};
    }

    // False where what was shown and the file are too far apart.
    bool compare(const std::filesystem::path& photo) {
        const std::string name = photo.filename().string();
        auto fitting = shown(photo, PixelSize{side, side});
        auto whole = shown(photo, std::nullopt);
        auto file = exported(photo, format);
        if (!fitting || !whole || !file) {
            fmt::print("{:<44}  {}\n", name,
                       !fitting ? fitting.error().message
                       : !whole ? whole.error().message
                                : file.error().message);
            return false;
        }
        const auto lossless = exported(photo, ExportFormat::png);
        if (!lossless) return false;
        auto decoded = services.reader->decode(*file),
             rendered = services.reader->decode(*lossless);
        if (!decoded || !rendered) return false;
        const ColourDecoding colour = ofBytes(decoded->colour);
        const auto written = reduced(std::move(decoded->pixels), decoded->colour);
        const auto screen = reduced(std::move(*whole), colour);
        const auto fit = reduced(std::move(*fitting), colour);
        const auto exact = reduced(std::move(rendered->pixels), rendered->colour);
        const Quantiles atFull = quantiles(screen, written), atFit = quantiles(fit, written);
        const Quantiles byFormat = quantiles(exact, written);
        const bool isNear = screen.extent() == written.extent() &&
                            std::max(atFull.p99, atFit.p99) <= kLargestDifference;
        fmt::print("{:<44}{:>8.3f}{:>8.3f}{:>10.3f}{:>8.3f}{:>10.3f}{:>8.3f}  {} x {}{}\n", name,
                   atFull.p50, atFull.p99, atFit.p50, atFit.p99, byFormat.p50, byFormat.p99,
                   written.extent().width, written.extent().height, isNear ? "" : "  too far");
        return isNear;
    }

    // The same colours for samples of 8 bits.
    static ColourDecoding ofBytes(ColourDecoding colour) {
        for (auto& tone : colour.tone) {
            const std::size_t step = (tone->size() - 1) / 255;
            std::vector<float> fewer;
            for (std::size_t i = 0; i < 256; ++i)
                fewer.push_back((*tone)[i * step]);
            tone = std::make_shared<const std::vector<float>>(std::move(fewer));
        }
        return colour;
    }

    static Bitmap opaque(const Bitmap& pixels) {
        Bitmap copy(pixels.size, 3, SampleType::u8);
        for (int y = 0; y < pixels.size.height; ++y)
            for (int x = 0; x < pixels.size.width; ++x)
                std::copy_n(pixels.row<std::uint8_t>(y) + pixels.channels * x, 3,
                            copy.row<std::uint8_t>(y) + 3 * x);
        return copy;
    }
};

} // namespace

int main(int count, char** arguments) {
    Cancellation never;
    const SystemClock clock;
    MainLoop loop;
    Services services = makeServices(never);
    std::vector<std::filesystem::path> photos;
    std::filesystem::path out;
    int side = 1600;
    double quality = 92;
    ExportFormat format = ExportFormat::jpeg;
    Adjustments edit = recipe();
    for (int i = 1; i < count; ++i) {
        const std::string word = arguments[i];
        if (word == "--plain")
            edit = {};
        else if (word == "--png")
            format = ExportFormat::png;
        else if (word == "--side" && i + 1 < count)
            side = std::atoi(arguments[++i]);
        else if (word == "--quality" && i + 1 < count)
            quality = std::atof(arguments[++i]);
        else if (out.empty())
            out = word;
        else
            photos.emplace_back(word);
    }
    if (photos.empty() || side < 1) {
        fmt::print(stderr, "screen_match OUT PHOTO... [--side PIXELS] [--quality 10…100] "
                           "[--plain] [--png]\n");
        return 2;
    }
    UserFolders folders;
    folders.caches = out / "caches";
    RenderServices render(services, clock, loop, folders, {});
    Match match{services, render, loop, out, edit, side, quality, format};
    fmt::print("{:<44}{:>8}{:>8}{:>10}{:>8}{:>10}{:>8}\n", "ΔE 2000 of the file from the screen",
               "full p50", "p99", "fit p50", "p99", "file p50", "p99");
    bool allNear = true;
    for (const auto& photo : photos)
        allNear = match.compare(photo) && allNear;
    return allNear ? 0 : 1;
}
