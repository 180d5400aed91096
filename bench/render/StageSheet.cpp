// Writes what a canvas shows of photos while they open, and their developed thumbnails, as PNG
// files to look at side by side, with the times they took:
//     stage_sheet OUT [--exposure STOPS] [--side PIXELS] PHOTO...
#include "app/RenderServices.h"
#include "base/MainLoop.h"
#include "platform/system/SystemClock.h"
#include "render/RenderSession.h"

#include <cstdio>
#include <cstdlib>
#include <fmt/format.h>
#include <string>
#include <vector>

using namespace kelvaro;

namespace {

const char* nameOf(ViewStage stage) {
    switch (stage) {
    case ViewStage::preview:
        return "preview";
    case ViewStage::coarse:
        return "coarse";
    case ViewStage::fit:
        return "fit";
    case ViewStage::full:
        return "full";
    }
    return "";
}

struct Sheet {
    std::filesystem::path out;
    Adjustments edit;
    int side = 1600;
};

void write(Services& services, const std::filesystem::path& target, const Bitmap& pixels) {
    auto file = services.files->create(target);
    if (!file) return;
    if (services.writer->encode(pixels, {FileFormat::png, 1, OutputSpace::sRGB}, **file))
        static_cast<void>((*file)->commit());
}

// Opens the photo as a window would; every stage is written. The last request asks for all pixels.
void show(const Sheet& sheet, Services& services, RenderServices& render, MainLoop& loop,
          const Clock& clock, const std::filesystem::path& photo) {
    for (const bool full : {false, true}) {
        render.sessions().forgetAll();
        RenderSession canvas(render.engine(), render.sessions());
        const double begin = clock.monotonicSeconds();
        bool done = false;
        canvas.open(photo);
        ViewRequest request;
        request.edit = sheet.edit;
        if (!full) request.fit = PixelSize{sheet.side, sheet.side};
        canvas.render(request, [&](const Result<RenderedView>& view) {
            const double ms = (clock.monotonicSeconds() - begin) * 1000;
            const std::string name = photo.filename().string();
            if (!view) {
                fmt::print("{:<44} {}\n", name, view.error().message);
                done = true;
                return;
            }
            const char* stage = nameOf(view->stage);
            fmt::print("{:<44} {} {:<8}{:>7.0f} ms  {} x {} of {} x {}\n", name,
                       full ? "1:1" : "fit", stage, ms, view->pixels->size.width,
                       view->pixels->size.height, view->pictureSize.width,
                       view->pictureSize.height);
            done = view->isFinal;
            if (!full) write(services, sheet.out / (name + "." + stage + ".png"), *view->pixels);
        });
        loop.runUntil([&] { return done; }, 60);
    }
}

void showThumbnail(const Sheet& sheet, Services& services, RenderServices& render,
                   const std::filesystem::path& photo) {
    render.sessions().forgetAll();
    const ThumbnailMaker maker(
        render.engine(),
        {*services.files, *services.reader, *services.raw, *services.brushes, render.analyses()},
        render.sessions());
    const auto made = maker.developed(photo, sheet.edit, kThumbnailSizes[1], nullptr);
    const std::string name = photo.filename().string();
    if (made)
        write(services, sheet.out / (name + ".thumbnail.png"), *made);
    else
        fmt::print("{:<44} {}\n", name, made.error().message);
}

} // namespace

int main(int count, char** arguments) {
    Sheet sheet;
    std::vector<std::filesystem::path> photos;
    for (int i = 1; i < count; ++i) {
        const std::string word = arguments[i];
        if (word == "--exposure" && i + 1 < count)
            sheet.edit.exposure = std::atof(arguments[++i]);
        else if (word == "--side" && i + 1 < count)
            sheet.side = std::atoi(arguments[++i]);
        else if (sheet.out.empty())
            sheet.out = word;
        else
            photos.emplace_back(word);
    }
    if (photos.empty()) {
        fmt::print(stderr, "stage_sheet OUT [--exposure STOPS] [--side PIXELS] PHOTO...\n");
        return 2;
    }
    std::filesystem::create_directories(sheet.out);
    Cancellation never;
    const SystemClock clock;
    MainLoop loop;
    Services services = makeServices(never);
    UserFolders folders;
    folders.caches = sheet.out / "caches";
    RenderServices render(services, clock, loop, folders, {true, true});
    for (const std::filesystem::path& photo : photos) {
        showThumbnail(sheet, services, render, photo);
        show(sheet, services, render, loop, clock, photo);
    }
    return 0;
}
