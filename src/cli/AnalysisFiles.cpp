#include "cli/AnalysisFiles.h"

#include "develop/PhotoAnalysis.h"
#include "develop/ToneAnalysis.h"

#include <nlohmann/json.hpp>

namespace kelvaro {

namespace {

constexpr ToneNeeds kEverything{
    .small = true, .guide = true, .sceneGuide = true, .levels = true, .haze = true};

Result<void> writeMap(const Image& map, const std::filesystem::path& file, Services& services) {
    if (!map) return {};
    BitmapFormat format;
    format.type = SampleType::f32;
    format.curve = TransferCurve::linear;
    auto pixels =
        services.renderer->renderBitmap(map, map.extent(), format, &services.cancellation);
    if (!pixels) return fail(std::move(pixels).error());
    auto pending = services.files->create(file);
    if (!pending) return fail(std::move(pending).error());
    const EncodeSettings settings{FileFormat::tiff, 1, OutputSpace::linearRec709};
    auto done = services.writer->encode(*pixels, settings, **pending, &services.cancellation);
    if (!done) return done;
    return (*pending)->commit();
}

nlohmann::json described(const ImageSource& source, const ToneMaps& maps) {
    nlohmann::json found;
    const auto levels =
        source.isRaw() ? source.rawToneAnalysis->known().levels : source.analysis->known().levels;
    if (levels) found["levels"] = {{"lo", levels->lo}, {"hi", levels->hi}};
    if (maps.endpoints)
        found["endpoints"] = {{"x", maps.endpoints->x},
                              {"y", maps.endpoints->y},
                              {"z", maps.endpoints->z},
                              {"w", maps.endpoints->w}};
    if (maps.haze) found["airlight"] = maps.airlight;
    if (source.isRaw()) {
        found["asShot"] = {{"temperature", source.asShotTemperature}, {"tint", source.asShotTint}};
        found["baselineExposure"] = source.baselineExposureStops;
    }
    return found;
}

} // namespace

Result<void> writeAnalysis(const ImageSource& source, const Adjustments& edit,
                           const std::filesystem::path& folder, Services& services) {
    auto maps = toneMaps(source, edit, kEverything, *services.renderer, &services.cancellation);
    if (!maps) return fail(std::move(maps).error());
    if (auto made = services.files->createFolder(folder); !made) return made;
    const std::pair<const char*, const Image&> images[] = {{"guide.tif", maps->guide},
                                                           {"scene-guide.tif", maps->sceneGuide},
                                                           {"haze.tif", maps->haze}};
    for (const auto& [name, image] : images)
        if (auto done = writeMap(image, folder / name, services); !done) return done;
    const std::string text = described(source, *maps).dump(2) + "\n";
    return writeAtomically(*services.files, folder / "analysis.json",
                           std::as_bytes(std::span(text)));
}

} // namespace kelvaro
