// Contact sheets for looking at what the pipeline does: one PNG for each adjustment, with a row for
// each photo and a column for each value (-100, -50, 0, +50, +100 of its range), and one of mask
// shapes. `--detail` shows the middle of each photo at full resolution instead of the whole,
// `--only NAME` makes one sheet.
#include "app/Services.h"
#include "develop/CropGeometry.h"
#include "develop/Guides.h"
#include "develop/MaskShapes.h"
#include "develop/PhotoOpening.h"
#include "develop/ToneAnalysis.h"
#include "recipe/AdjustmentCatalogue.h"

#include <fmt/format.h>

#include <cstdio>
#include <string>

namespace kelvaro {
namespace {

constexpr int kCell = 420, kGap = 6;
constexpr double kShares[] = {-1, -0.5, 0, 0.5, 1};

struct Sheet {
    std::string name;
    std::vector<Adjustments> columns;
    bool overlay = false; // show the masks' weight over the picture
};

template<class Change>
Sheet sheetOf(std::string name, Change change) {
    Sheet sheet{std::move(name), {}};
    for (const double share : kShares) {
        Adjustments edit;
        change(edit, share);
        sheet.columns.push_back(std::move(edit));
    }
    return sheet;
}

MaskComponent component(MaskComponent::Kind kind, MaskPoint start, MaskPoint end, double feather) {
    MaskComponent shape;
    shape.kind = kind;
    shape.start = start;
    shape.end = end;
    shape.angle = 20;
    shape.feather = feather;
    if (kind == MaskComponent::Kind::brush)
        shape.strokes.push_back(
            {{{0.2, 0.2}, {0.5, 0.45}, {0.8, 0.25}}, 0.08, feather, 100, false});
    return shape;
}

Adjustments masked(std::vector<MaskComponent> shapes, bool invert = false) {
    LocalMask mask;
    mask.exposure = 1.2;
    mask.saturation = 30;
    mask.invert = invert;
    mask.components = std::move(shapes);
    for (std::size_t i = 0; i < mask.components.size(); ++i)
        mask.components[i].id.bytes[0] = std::uint8_t(i + 1);
    Adjustments edit;
    edit.masks = {std::move(mask)};
    return edit;
}

// Each kind of shape with feather 0, 50 and 100 and inverted; then a brush put into an ellipse in
// each mode, and the overlay of those.
std::vector<Sheet> maskSheets() {
    using Kind = MaskComponent::Kind;
    std::vector<Sheet> sheets;
    for (const auto& [name, kind] : {std::pair{"mask-linear", Kind::linear},
                                     {"mask-radial", Kind::radial},
                                     {"mask-brush", Kind::brush}}) {
        const MaskPoint start = kind == Kind::linear ? MaskPoint{0.2, 0.6} : MaskPoint{0.5, 0.33};
        const MaskPoint end = kind == Kind::linear ? MaskPoint{0.5, 0.1} : MaskPoint{0.3, 0.18};
        Sheet sheet{name, {}};
        for (const double feather : {0.0, 50.0, 100.0})
            sheet.columns.push_back(masked({component(kind, start, end, feather)}));
        sheet.columns.push_back(masked({component(kind, start, end, 50)}, true));
        sheets.push_back(sheet);
    }
    Sheet modes{"mask-modes", {}};
    for (const auto mode : {MaskComponent::Mode::add, MaskComponent::Mode::subtract,
                            MaskComponent::Mode::intersect}) {
        auto ellipse = component(Kind::radial, {0.5, 0.33}, {0.3, 0.18}, 50);
        auto stroke = component(Kind::brush, {}, {}, 50);
        stroke.mode = mode;
        modes.columns.push_back(masked({ellipse, stroke}));
        stroke.invert = true;
        modes.columns.push_back(masked({ellipse, stroke}));
    }
    sheets.push_back(modes);
    modes.name = "mask-overlay";
    modes.overlay = true;
    sheets.push_back(modes);
    return sheets;
}

std::vector<Sheet> allSheets() {
    std::vector<Sheet> sheets;
    for (const AdjustmentSpec& spec : storedKeyCatalogue())
        if (spec.group != AdjustmentSpec::Group::crop && spec.id != "grainSize")
            sheets.push_back(sheetOf(std::string(spec.id), [&](Adjustments& edit, double share) {
                const double end = share < 0 ? -spec.range.lower : spec.range.upper;
                spec.setValue(edit, spec.range.clamped(share * end));
            }));
    sheets.push_back(sheetOf("grainSize", [](Adjustments& edit, double share) {
        edit.grain = 60;
        edit.grainSize = 100 * share;
    }));
    sheets.push_back(sheetOf("vignette-crop", [](Adjustments& edit, double share) {
        edit.vignette = 100 * share;
        edit.cropLeft = 0.3;
        edit.cropTop = 0.1;
        edit.straighten = 4;
    }));
    for (Sheet& sheet : maskSheets())
        sheets.push_back(std::move(sheet));
    return sheets;
}

class SheetMaker {
public:
    SheetMaker(Services& services, bool detail) : services_(services), detail_(detail) {}

    Result<void> add(const std::filesystem::path& photo) {
        auto source = opened(photo, {});
        if (!source) return fail(std::move(source).error());
        photos_.push_back(std::move(*source));
        return {};
    }

    Result<void> write(const Sheet& sheet, const std::filesystem::path& folder) {
        Image page = constantColour({0.5f, 0.5f, 0.5f, 1});
        int y = kGap, width = 0;
        for (auto photo = photos_.rbegin(); photo != photos_.rend(); ++photo) { // from below
            int x = kGap, height = 0;
            for (const Adjustments& edit : sheet.columns) {
                auto cell = drawn(*photo, edit, sheet.overlay);
                if (!cell) return fail(std::move(cell).error());
                page = compositedOver(translated(*cell, x, y), page);
                x += cell->extent().width + kGap;
                height = std::max(height, cell->extent().height);
            }
            y += height + kGap;
            width = std::max(width, x);
        }
        auto pixels = services_.renderer->renderBitmap(page, {0, 0, width, y}, {});
        if (!pixels) return fail(std::move(pixels).error());
        auto file = services_.files->create(folder / (sheet.name + ".png"));
        if (!file) return fail(std::move(file).error());
        auto done = services_.writer->encode(*pixels, {FileFormat::png, 1, OutputSpace::sRGB},
                                             **file, nullptr);
        return done ? (*file)->commit() : std::move(done);
    }

private:
    Result<ImageSource> opened(const std::filesystem::path& photo, const Adjustments& edit) {
        const PhotoOpener opener{*services_.files, *services_.reader, *services_.raw};
        return opener.open(photo, edit, 1, &services_.cancellation);
    }

    Result<Image> drawn(const ImageSource& photo, const Adjustments& edit, bool overlay) {
        if (photo.supportsSharpness && edit.sharpness != 0) { // the decoder's own work
            auto sharp = opened(photo.url, edit);
            return sharp ? drawnAsIs(*sharp, edit, overlay) : fail(std::move(sharp).error());
        }
        return drawnAsIs(photo, edit, overlay);
    }

    Result<Image> drawnAsIs(const ImageSource& photo, const Adjustments& edit, bool overlay) {
        const double scale = detail_ ? 1 : double(kCell) / photo.extent.longerSide();
        auto developed =
            developedPhoto(photo, edit, scale, *services_.renderer, *services_.brushes, nullptr);
        if (!developed) return developed;
        Image image = straightenedAndCropped(*developed, edit);
        if (detail_) {
            const PixelRect whole = image.extent();
            const PixelRect middle{(whole.width - kCell) / 2, (whole.height - kCell) / 2, kCell,
                                   kCell};
            const PixelRect part = intersection(middle, whole);
            image = translated(cropped(image, part), -part.x, -part.y);
        }
        image = Pipeline::gamutMapped(image, Pipeline::OutputSpace::sRGB);
        if (overlay)
            image = Pipeline::withMaskShown(
                image,
                overlayWeight(edit.masks, {.all = true}, developed->extent(), *services_.brushes));
        return materialised(image, *services_.renderer, nullptr);
    }

    Services& services_;
    const bool detail_;
    std::vector<ImageSource> photos_;
};

int run(const std::vector<std::string>& words) {
    std::string only;
    bool detail = false;
    std::size_t first = 0;
    for (; first < words.size() && words[first].starts_with("--"); ++first) {
        detail = detail || words[first] == "--detail";
        if (words[first] == "--only" && first + 1 < words.size()) only = words[++first];
    }
    if (words.size() < first + 2) {
        fmt::print(stderr, "usage: contact_sheets [--detail] [--only NAME] FOLDER PHOTO...\n");
        return 2;
    }
    const Cancellation cancellation;
    Services services = makeServices(cancellation);
    SheetMaker maker(services, detail);
    const auto told = [](const Result<void>& done) {
        if (!done) fmt::print(stderr, "contact_sheets: {}\n", done.error().message);
        return done.has_value();
    };
    if (!told(services.files->createFolder(words[first]))) return 1;
    for (std::size_t i = first + 1; i < words.size(); ++i)
        if (!told(maker.add(words[i]))) return 1;
    for (const Sheet& sheet : allSheets())
        if ((only.empty() || only == sheet.name) && !told(maker.write(sheet, words[first])))
            return 1;
    return 0;
}

} // namespace
} // namespace kelvaro

int main(int argc, char** argv) {
    return kelvaro::run({argv + 1, argv + argc});
}
