// How soon photos come on the screen, how many thumbnails a second, and what a hand on a slider
// feels of work in the background. Prints one line a figure:
//     render_figures OUT PHOTO...
// The first photo is the one that is opened; all of them get thumbnails.
#include "app/RenderServices.h"
#include "base/MainLoop.h"
#include "platform/PhotoKinds.h"
#include "platform/system/SystemClock.h"
#include "render/RenderSession.h"

#include <algorithm>
#include <ctime>
#include <fmt/format.h>
#include <optional>
#include <thread>
#include <vector>

using namespace kelvaro;

namespace {

constexpr PixelSize kScreen{1920, 1200};
constexpr int kRepeats = 5, kFrames = 120;
constexpr double kPatience = 120;

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

    // Milliseconds from the request to each stage of it.
    std::array<std::optional<double>, 4> opened(RenderSession& canvas,
                                                const std::filesystem::path& photo, bool full) {
        std::array<std::optional<double>, 4> stages;
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
            if (view) stages[std::size_t(view->stage)] = (clock.monotonicSeconds() - begin) * 1000;
            done = !view || view->isFinal;
        });
        loop.runUntil([&] { return done; }, kPatience);
        return stages;
    }

    void opening() {
        const char* names[] = {"preview", "coarse", "fit to view", "full size"};
        for (const bool full : {false, true}) {
            std::array<std::vector<double>, 4> all;
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
                    fmt::print("open, {}: {:<28}{:>8.1f} ms\n", full ? "1:1" : "fit", names[s],
                               quantile(all[s], 0.5));
            fmt::print("         processor time {:<17}{:>8.1f} ms\n", "",
                       (processorSeconds() - begin) / kRepeats * 1000);
        }
        render.sessions().forgetAll();
        RenderSession canvas(render.engine(), render.sessions());
        canvas.prepare({{photos.front(), {}, kScreen}});
        canvas.waitUntilIdle();
        const auto stages = opened(canvas, photos.front(), false);
        fmt::print("next photo, prepared: {:<20}{:>8.1f} ms\n", "", stages[2].value_or(0));
    }

    void thumbnails(const char* name, const Adjustments& edit) {
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
        fmt::print("thumbnails, {:<30}{:>8.1f} a second, {:.1f} a second and core\n", name,
                   made / (clock.monotonicSeconds() - begin),
                   made / (processorSeconds() - processor));
    }

    // A hand on the exposure slider, frame after frame; in the background what `busy` says waits.
    void gesture(const char* name, int backgroundJobs) {
        RenderSession canvas(render.engine(), render.sessions());
        opened(canvas, photos.front(), false);
        render.engine().work().setEditing(true);
        Cancellation end;
        std::vector<std::thread> background;
        for (int i = 0; i < backgroundJobs; ++i)
            background.emplace_back([&] {
                while (const auto admission =
                           render.engine().work().waitForAdmission(std::int64_t(200) << 20, &end))
                    static_cast<void>(services.reader->decode(photos.back(), {}, &end).has_value());
            });
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
            if (i >= 10) frames.push_back((clock.monotonicSeconds() - begin) * 1000);
        }
        end.cancel();
        for (std::thread& thread : background)
            thread.join();
        render.engine().work().setEditing(false);
        fmt::print("frames, {:<24} p50{:>7.1f} ms   p99{:>7.1f} ms\n", name, quantile(frames, 0.5),
                   quantile(frames, 0.99));
    }
};

} // namespace

int main(int count, char** arguments) {
    if (count < 3) {
        fmt::print(stderr, "render_figures OUT PHOTO...\n");
        return 2;
    }
    Cancellation never;
    const SystemClock clock;
    MainLoop loop;
    Services services = makeServices(never);
    UserFolders folders;
    folders.caches = std::filesystem::path(arguments[1]) / "caches";
    RenderServices render(services, clock, loop, folders, {});
    Bench bench{services, render, loop, clock, {arguments + 2, arguments + count}};
    bench.opening();
    bench.thumbnails("the cameras' own pictures", {});
    Adjustments edit;
    edit.exposure = 0.5;
    edit.contrast = 20;
    bench.thumbnails("developed", edit);
    bench.gesture("alone", 0);
    bench.gesture("8 jobs waiting behind", 8);
    return 0;
}
