// How near what the screen shows is to what an export writes: each photo is shown to fit, exported
// as JPEG with the same recipe, and the file reduced to the size of the view. Prints colour
// differences (CIEDE2000), and fails where one in a hundred pixels differs by more than 1.
//     screen_match OUT PHOTO... [--side PIXELS] [--quality 10…100] [--plain]
#include "app/ExportServices.h"
#include "app/RenderServices.h"
#include "base/MainLoop.h"
#include "develop/ImageSource.h"
#include "platform/system/SystemClock.h"
#include "raw_report/Picture.h"
#include "render/RenderSession.h"

#include <algorithm>
#include <cstdlib>
#include <fmt/format.h>
#include <string>

using namespace kelvaro;

namespace {

constexpr double kPatience = 120; // seconds
constexpr double kLargestDifference = 1;

// Every kind of stage but grain, whose pattern is made for the full size.
Adjustments recipe() {
    Adjustments edit;
    edit.exposure = 0.3;
    edit.temperature = 12;
    edit.contrast = 20;
    edit.highlights = -30;
    edit.shadows = 30;
    edit.clarity = 15;
    edit.vibrance = 20;
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

    Result<report::Picture> shown(const std::filesystem::path& photo) {
        RenderSession canvas(render.engine(), render.sessions());
        Result<report::Picture> picture = fail(FailureKind::internal, "Nothing was shown.");
        bool done = false;
        canvas.open(photo);
        ViewRequest request;
        request.edit = edit;
        request.fit = PixelSize{side, side};
        canvas.render(request, [&](const Result<RenderedView>& view) {
            done = !view || view->isFinal;
            if (!view) picture = fail(view.error());
            if (view && view->isFinal) picture = copied(*view->pixels);
        });
        loop.runUntil([&] { return done; }, kPatience);
        return picture;
    }

    Result<std::filesystem::path> exported(const std::filesystem::path& photo) {
        Exporter exporter(exportParts(services, render.engine(), &render.analyses()), loop);
        ExportSettings settings;
        settings.quality = quality;
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

    // The file in linear light, reduced by the filter that the screen's picture is reduced with.
    Result<report::Picture> reduced(const std::filesystem::path& file, PixelSize size) {
        auto decoded = services.reader->decode(file);
        if (!decoded) return fail(std::move(decoded).error());
        const Image photo =
            imageFrom(sourceFrom(std::move(decoded->pixels), std::move(decoded->colour)));
        const Image small = photo.extent().size() == size ? photo : lanczosResized(photo, size);
        return report::rendered(small, *services.renderer);
    }

    // False where the two are too far apart.
    bool compare(const std::filesystem::path& photo) {
        const std::string name = photo.filename().string();
        auto screen = shown(photo);
        auto file = exported(photo);
        if (!screen || !file) {
            fmt::print("{:<44}  {}\n", name,
                       !screen ? screen.error().message : file.error().message);
            return false;
        }
        auto written = reduced(*file, screen->size);
        if (!written) return false;
        std::vector<double> differences;
        for (int y = 0; y < screen->size.height; ++y)
            for (int x = 0; x < screen->size.width; ++x)
                differences.push_back(report::difference(screen->lab(x, y), written->lab(x, y)));
        std::sort(differences.begin(), differences.end());
        const auto quantile = [&](double share) {
            return differences[std::size_t(share * double(differences.size() - 1))];
        };
        const bool isNear = quantile(0.99) <= kLargestDifference;
        fmt::print("{:<44}{:>8.3f}{:>8.3f}{:>8.3f}  {} x {}{}\n", name, quantile(0.5),
                   quantile(0.99), differences.back(), screen->size.width, screen->size.height,
                   isNear ? "" : "  too far");
        report::save(*screen, out / (name + ".screen.png"));
        report::save(*written, out / (name + ".export.png"));
        return isNear;
    }

    static report::Picture copied(const Bitmap& pixels) {
        report::Picture picture(pixels.size);
        for (int y = 0; y < pixels.size.height; ++y)
            for (int x = 0; x < pixels.size.width; ++x)
                std::copy_n(pixels.row<std::uint8_t>(y) + pixels.channels * x, 3, picture.at(x, y));
        return picture;
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
    Adjustments edit = recipe();
    for (int i = 1; i < count; ++i) {
        const std::string word = arguments[i];
        if (word == "--plain")
            edit = {};
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
                           "[--plain]\n");
        return 2;
    }
    UserFolders folders;
    folders.caches = out / "caches";
    RenderServices render(services, clock, loop, folders, {});
    Match match{services, render, loop, out, edit, side, quality};
    fmt::print("{:<44}{:>8}{:>8}{:>8}\n", "ΔE 2000", "p50", "p99", "worst");
    bool allNear = true;
    for (const auto& photo : photos)
        allNear = match.compare(photo) && allNear;
    return allNear ? 0 : 1;
}
