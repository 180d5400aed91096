// How soon photos come on the screen, how many thumbnails a second, and what a hand on a slider
// feels of an export. Prints one line a figure, with the aims of a quiet machine with two cores:
//     render_figures OUT PHOTO... [--only opening|thumbnails|frames]
// The first photo is the one that is opened; all of them get thumbnails.
#include "app/ExportServices.h"
#include "app/RenderServices.h"
#include "base/MainLoop.h"
#include "platform/PhotoKinds.h"
#include "platform/system/SystemClock.h"
#include "render/RenderSession.h"

#include <algorithm>
#include <ctime>
#include <fmt/format.h>
#include <optional>
#include <string_view>
#include <vector>

using namespace kelvaro;

namespace {

constexpr PixelSize kScreen{1920, 1200};
constexpr int kRepeats = 5, kFrames = 120;
constexpr std::size_t kExported = 50;
constexpr double kPatience = 120;
constexpr int kPreparedAim = 50; // milliseconds: as soon as the key is up

// Of all threads of the program: what a figure costs on a machine that is busy with other things.
double processorSeconds() {
    return double(std::clock()) / CLOCKS_PER_SEC;
}

double quantile(std::vector<double> values, double share) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1, std::size_t(share * double(values.size())))];
}

struct Bench {
    Services& services;
    RenderServices& render;
    MainLoop& loop;
    const Clock& clock;
    std::vector<std::filesystem::path> photos;

    // Milliseconds from the request to the first view of each stage, and to the last one.
    static constexpr std::size_t kFit = std::size_t(ViewStage::fit), kLast = 4;
    using Stages = std::array<std::optional<double>, kLast + 1>;
    Stages opened(RenderSession& canvas, const std::filesystem::path& photo, bool full) {
        Stages stages;
        bool done = false;
        const double begin = clock.monotonicSeconds();
        canvas.open(photo);
        ViewRequest request;
        if (full)
            request.rect = PixelRect{0, 0, kScreen.width, kScreen.height};
        else
            request.fit = kScreen;
        canvas.render(request, [&](const Result<RenderedView>& view) {
            if (!view) fmt::print(stderr, "{}\n", view.error().message);
            const double now = (clock.monotonicSeconds() - begin) * 1000;
            if (view && !stages[std::size_t(view->stage)]) stages[std::size_t(view->stage)] = now;
            if (view && view->isFinal) stages[kLast] = now;
            done = !view || view->isFinal;
        });
        loop.runUntil([&] { return done; }, kPatience);
        return stages;
    }

    void opening() {
        const char* names[] = {"preview", "coarse", "fit to view", "full size", "settled"};
        const char* aims[] = {"80", "200", "200", "400", "400"};
        for (const bool full : {false, true}) {
            std::array<std::vector<double>, kLast + 1> all;
            const double begin = processorSeconds();
            for (int i = 0; i < kRepeats; ++i) {
                render.sessions().forgetAll();
                RenderSession canvas(render.engine(), render.sessions());
                const auto stages = opened(canvas, photos.front(), full);
                for (std::size_t s = 0; s < stages.size(); ++s)
                    if (stages[s]) all[s].push_back(*stages[s]);
            }
            for (std::size_t s = 0; s < all.size(); ++s)
                if (!all[s].empty())
                    fmt::print("open, {}: {:<28}{:>8.1f} ms   aim {}\n", full ? "1:1" : "fit",
                               names[s], quantile(all[s], 0.5), aims[s]);
            fmt::print("         processor time {:<17}{:>8.1f} ms\n", "",
                       (processorSeconds() - begin) / kRepeats * 1000);
        }
        render.sessions().forgetAll();
        RenderSession canvas(render.engine(), render.sessions());
        canvas.prepare({{photos.front(), {}, kScreen}});
        canvas.waitUntilIdle();
        const auto stages = opened(canvas, photos.front(), false);
        fmt::print("next photo, prepared: {:<20}{:>8.1f} ms   aim {}\n", "",
                   stages[kFit].value_or(stages[kLast].value_or(0)), kPreparedAim);
    }

    void thumbnails(const char* name, const Adjustments& edit, int aim) {
        ThumbnailMaker maker(render.engine(),
                             {*services.files, *services.reader, *services.raw, *services.brushes,
                              render.analyses()},
                             render.sessions());
        render.sessions().forgetAll();
        int made = 0;
        const double processor = processorSeconds();
        const double begin = clock.monotonicSeconds();
        while (made < 3 * int(photos.size()) || clock.monotonicSeconds() - begin < 1) {
            const auto& photo = photos[std::size_t(made) % photos.size()];
            if (ThumbnailMaker::isAsShot(edit))
                static_cast<void>(maker.quick(photo, edit, 320, nullptr).has_value());
            else
                static_cast<void>(maker.developed(photo, edit, 320, nullptr).has_value());
            ++made;
        }
        fmt::print("thumbnails, {:<30}{:>8.1f} a second, {:.1f} a second and core, aim {}\n", name,
                   made / (clock.monotonicSeconds() - begin),
                   made / (processorSeconds() - processor), aim);
    }

    struct Frames {
        double p50 = 0, p99 = 0; // milliseconds
    };
    // A hand on the exposure slider, frame after frame, as the canvas draws them.
    Frames gesture(RenderSession& canvas) {
        std::vector<double> frames;
        for (int i = 0; i < kFrames; ++i) {
            ViewRequest request;
            request.fit = kScreen;
            request.edit.exposure = i * 0.01;
            request.edit.contrast = 20;
            request.edit.saturation = 15;
            request.interactive = true;
            bool done = false;
            const double begin = clock.monotonicSeconds();
            canvas.render(request, [&](const Result<RenderedView>&) { done = true; });
            loop.runUntil([&] { return done; }, kPatience);
            frames.push_back((clock.monotonicSeconds() - begin) * 1000);
        }
        return {quantile(frames, 0.5), quantile(frames, 0.99)};
    }

    // Turn by turn, so that both meet the same machine: with nothing else to do, and in the middle
    // of an export of many photos. The first frames meet the photo that is being exported.
    void gestures(const std::filesystem::path& out) {
        std::vector<double> ratios50, ratios99;
        Frames alone, exporting;
        for (int i = 0; i < kRepeats; ++i) {
            RenderSession canvas(render.engine(), render.sessions());
            opened(canvas, photos.front(), false);
            gesture(canvas);
            alone = gesture(canvas);

            ExportParts parts = exportParts(services, render.engine(), &render.analyses());
            parts.yields = true;
            Exporter exporter(parts, loop);
            ExportSettings settings;
            settings.destination = out.string();
            exporter.start(std::vector<ExportJob>(kExported, {photos.front(), {}}), settings, {});
            loop.runUntil([&] { return exporter.state()->done >= 1; }, kPatience);
            exporting = gesture(canvas);
            exporter.stop();
            loop.runUntil([&] { return !exporter.state()->running; }, kPatience);
            ratios50.push_back(exporting.p50 / alone.p50);
            ratios99.push_back(exporting.p99 / alone.p99);
        }
        fmt::print("frames, alone                 p50{:>7.1f} ms   p99{:>7.1f} ms\n", alone.p50,
                   alone.p99);
        fmt::print("frames, export of {:<12}p50{:>7.1f} ms   p99{:>7.1f} ms\n", kExported,
                   exporting.p50, exporting.p99);
        fmt::print("    times those alone (median)   {:>7.2f}          {:>7.2f}\n",
                   quantile(ratios50, 0.5), quantile(ratios99, 0.5));
    }
};

} // namespace

int main(int count, char** arguments) {
    std::string_view only;
    if (count > 3 && std::string_view(arguments[count - 2]) == "--only") {
        only = arguments[count - 1];
        count -= 2;
    }
    if (count < 3) {
        fmt::print(stderr, "render_figures OUT PHOTO... [--only opening|thumbnails|frames]\n");
        return 2;
    }
    const auto isAsked = [&](std::string_view part) { return only.empty() || only == part; };
    Cancellation never;
    const SystemClock clock;
    MainLoop loop;
    Services services = makeServices(never);
    UserFolders folders;
    folders.caches = std::filesystem::path(arguments[1]) / "caches";
    RenderServices render(services, clock, loop, folders, {});
    Bench bench{services, render, loop, clock, {arguments + 2, arguments + count}};
    if (isAsked("opening")) bench.opening();
    if (isAsked("thumbnails")) {
        bench.thumbnails("the cameras' own pictures", {}, 150);
        Adjustments edit;
        edit.exposure = 0.5;
        edit.contrast = 20;
        bench.thumbnails("developed", edit, 12);
    }
    if (!isAsked("frames")) return 0;
    bench.gestures(std::filesystem::path(arguments[1]) / "render-figures");
    std::filesystem::remove_all(std::filesystem::path(arguments[1]) / "render-figures");
    return 0;
}
