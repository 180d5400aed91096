#include "CameraPictures.h"

#include "develop/CropGeometry.h"
#include "develop/PhotoOpening.h"
#include "develop/Pipeline.h"
#include "develop/ToneAnalysis.h"
#include "platform/PhotoKinds.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace kelvaro::report {

namespace {

constexpr int kCompared = 512, kThumb = 640, kCrop = 420;

std::vector<std::filesystem::path> rawFiles(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (photoKind(entry.path()) == PhotoKind::raw) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

template<class T>
T valueOf(Result<T> result) {
    if (!result) stop(result.error().message);
    return std::move(*result);
}

struct Opened {
    Image finished, linear; // display-linear; the scene without rendering, at our exposure
    Image preview;          // upright; none where the file has none
    double stops = 0;
};

Opened opened(const std::filesystem::path& path, Services& services) {
    auto file = valueOf(services.raw->open(path));
    const PhotoOpener opener{*services.files, *services.reader, *services.raw};
    const ImageSource source = valueOf(opener.open(path, {}, 1, nullptr));
    Opened all;
    const Image developed = valueOf(
        developedPhoto(source, {}, 1, *services.renderer, *services.brushes, nullptr, nullptr));
    all.finished = Pipeline::gamutMapped(developed, Pipeline::OutputSpace::sRGB);
    all.linear = source.linearCapture;
    if (const auto preview = valueOf(file->preview())) {
        auto picture = services.reader->decode(preview->bytes, path.filename().string());
        if (picture)
            all.preview =
                imageFrom(sourceFrom(std::move(picture->pixels), std::move(picture->colour)));
    }
    return all;
}

// The widest part in the middle that has the shape of `shape`, reduced to `size`: makers cut their
// previews differently and fill some up with bars.
Picture fitted(const Image& image, PixelSize size, Renderer& renderer) {
    const Picture whole = rendered(image, renderer);
    const auto isBar = [&](int row) {
        for (int x = 0; x < whole.size.width; x += 7)
            if (whole.at(x, row)[1] > 8) return false;
        return true;
    };
    int top = 0, bottom = whole.size.height;
    while (top < bottom / 4 && isBar(top))
        ++top;
    while (bottom > whole.size.height * 3 / 4 && isBar(bottom - 1))
        --bottom;
    double width = whole.size.width, height = bottom - top;
    const double shape = double(size.width) / size.height;
    if (std::abs(width / height - shape) > 0.004 * shape) {
        if (width / height > shape)
            width = height * shape;
        else
            height = width / shape;
    }
    const PixelSize cut{int(width + 0.5), int(height + 0.5)};
    Picture middle =
        whole.part((whole.size.width - cut.width) / 2, top + (bottom - top - cut.height) / 2, cut);
    Raster light({0, 0, middle.size.width, middle.size.height}, false);
    for (int y = 0; y < middle.size.height; ++y)
        for (int x = 0; x < middle.size.width; ++x)
            for (int c = 0; c < 3; ++c)
                light.row(c, y)[x] = float(lightOf(middle.at(x, y)[c] / 255.0));
    return rendered(lanczosResized(imageFrom(std::move(light)), size), renderer);
}

// At the shift of up to three pixels where the two agree best.
double medianDifference(const Picture& a, const Picture& b) {
    double best = 1000;
    constexpr int kShift = 3;
    for (int dy = -kShift; dy <= kShift; ++dy) {
        for (int dx = -kShift; dx <= kShift; ++dx) {
            std::vector<double> all;
            for (int y = 2 * kShift; y < a.size.height - 2 * kShift; y += 3)
                for (int x = 2 * kShift; x < a.size.width - 2 * kShift; x += 3)
                    all.push_back(difference(a.lab(x, y), b.lab(x + dx, y + dy)));
            std::nth_element(all.begin(), all.begin() + std::ptrdiff_t(all.size() / 2), all.end());
            best = std::min(best, all[all.size() / 2]);
        }
    }
    return best;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t n = values.size();
    return n == 0 ? 0 : (values[(n - 1) / 2] + values[n / 2]) / 2;
}

// The mean of Lab, to see veils and casts.
Lab meanOf(const Picture& picture) {
    Lab sum{};
    double count = 0;
    for (int y = 0; y < picture.size.height; y += 4) {
        for (int x = 0; x < picture.size.width; x += 4, ++count) {
            const Lab v = picture.lab(x, y);
            for (std::size_t i = 0; i < 3; ++i)
                sum[i] += v[i];
        }
    }
    for (double& v : sum)
        v /= count;
    return sum;
}

} // namespace

void printCameraMatch(const std::filesystem::path& raw, Services& services) {
    std::printf("Camera match: median CIEDE2000 against the embedded preview\n");
    std::printf("%-44s %7s %7s   %-22s %-22s\n", "file", "ours", "linear", "mean Lab ours",
                "mean Lab preview");
    std::vector<double> ours, linear;
    for (const auto& path : rawFiles(raw)) {
        const Opened all = opened(path, services);
        if (!all.preview) continue;
        const double longer = std::max(all.preview.extent().width, all.preview.extent().height);
        const double side = std::min<double>(kCompared, longer);
        Renderer& renderer = *services.renderer;
        const Picture mine = rendered(reducedToLongEdge(all.finished, side), renderer);
        const Picture plain = rendered(reducedToLongEdge(all.linear, side), renderer);
        const Picture camera = fitted(all.preview, mine.size, renderer);
        ours.push_back(medianDifference(camera, mine));
        linear.push_back(medianDifference(camera, plain));
        const Lab a = meanOf(mine), b = meanOf(camera);
        std::printf("%-44s %7.2f %7.2f   %6.1f %6.1f %6.1f   %6.1f %6.1f %6.1f%s\n",
                    path.filename().c_str(), ours.back(), linear.back(), a[0], a[1], a[2], b[0],
                    b[1], b[2], ours.back() > linear.back() ? "   worse than linear" : "");
    }
    std::printf("%-44s %7.2f %7.2f\n\n", "median", median(ours), median(linear));
}

void makeContactSheets(const std::filesystem::path& raw, const std::filesystem::path& folder,
                       Services& services) {
    std::filesystem::create_directories(folder);
    std::vector<Picture> rows;
    for (const auto& path : rawFiles(raw)) {
        const Opened all = opened(path, services);
        Renderer& renderer = *services.renderer;
        const Picture mine = rendered(reducedToLongEdge(all.finished, kThumb), renderer);
        const PixelRect& whole = all.finished.extent();
        const int side = std::min({kCrop, whole.width, whole.height});
        const auto crop = [&](double x, double y) {
            return renderedPart(
                all.finished,
                {int((whole.width - side) * x), int((whole.height - side) * y), side, side},
                renderer);
        };
        Picture row({2 * kThumb + 2 * kCrop + 30, std::max(mine.size.height, kCrop)}, 128);
        if (all.preview)
            row.place(rendered(reducedToLongEdge(all.preview, kThumb), renderer), 0, 0);
        row.place(mine, kThumb + 10, 0);
        row.place(crop(0.5, 0.5), 2 * kThumb + 20, 0);
        row.place(crop(0.25, 0.3), 2 * kThumb + kCrop + 30, 0);
        save(row, folder / (path.stem().string() + ".png"));
        std::printf("%zu %s\n", rows.size() + 1, path.filename().c_str());
        rows.push_back(std::move(row));
    }
    int width = 0, height = 0;
    for (const Picture& row : rows) {
        width = std::max(width, row.size.width);
        height += row.size.height + 10;
    }
    Picture sheet({width, height}, 255);
    int top = 0;
    for (const Picture& row : rows) {
        sheet.place(row, 0, top);
        top += row.size.height + 10;
    }
    save(sheet, folder / "sheet.png");
}

} // namespace kelvaro::report
