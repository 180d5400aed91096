#include "develop/AnalysisCache.h"

#include "develop/AnalysisFile.h"
#include "platform/CacheFolder.h"

#include <fmt/format.h>

#include <algorithm>

namespace kelvaro {

namespace {

constexpr std::string_view kEnding = ".analysis";

std::string keyOf(const ImageSource& source) {
    std::string key = source.isRaw() ? "raw\n" : "bitmap\n";
    return key + source.url.native() + '\n' + source.analysis->identity();
}

ToneMeasurement knownOf(const ImageSource& source) {
    return source.isRaw() ? source.rawToneAnalysis->known() : source.analysis->known();
}

// How much is known, so that nothing is kept twice.
int partsKnown(const ToneMeasurement& m) {
    return int(bool(m.small)) + int(bool(m.guide)) + int(bool(m.sceneGuide)) +
           int(m.levels.has_value()) + int(m.hazeSought);
}

// Only RAW photos still need the reduced picture itself, for the guide of each new development.
Result<StoredAnalysis> stored(const ToneMeasurement& m, bool keepsSmall, Renderer& renderer) {
    StoredAnalysis analysis;
    analysis.levels = m.levels;
    analysis.hazeSought = m.hazeSought;
    if (m.haze) analysis.airlight = m.haze->airlight;
    const std::pair<AnalysisImage, Image> images[] = {
        {AnalysisImage::small, keepsSmall ? m.small : Image{}},
        {AnalysisImage::guide, m.guide},
        {AnalysisImage::sceneGuide, m.sceneGuide},
        {AnalysisImage::haze, m.haze ? m.haze->hazeMap : Image{}}};
    for (const auto& [role, image] : images) {
        if (!image) continue;
        auto raster = renderer.renderRaster(image, image.extent());
        if (!raster) return fail(raster.error());
        analysis.images.insert_or_assign(role, std::move(*raster));
    }
    return analysis;
}

ToneMeasurement measurementFrom(StoredAnalysis analysis, bool isRaw) {
    const auto image = [&](AnalysisImage role) {
        const auto found = analysis.images.find(role);
        return found == analysis.images.end() ? Image{} : imageFrom(std::move(found->second));
    };
    ToneMeasurement m;
    m.small = image(AnalysisImage::small);
    if (isRaw) m.sceneSmall = m.small;
    m.guide = image(AnalysisImage::guide);
    m.sceneGuide = image(AnalysisImage::sceneGuide);
    m.levels = analysis.levels;
    m.hazeSought = analysis.hazeSought;
    if (const Image haze = image(AnalysisImage::haze)) m.haze = HazeModel{analysis.airlight, haze};
    return m;
}

} // namespace

AnalysisCache::AnalysisCache(FileSystem& files, std::filesystem::path folder, Renderer& renderer,
                             Limits limits, std::string version)
    : files_(files),
      folder_(std::move(folder)),
      renderer_(renderer),
      limits_(limits),
      version_(std::move(version)),
      writing_("Kelvaro.AnalysisCache", SerialQueue::AtEnd::drop) {}

std::string AnalysisCache::fileName(std::string_view key) {
    const auto hash = [&](std::string text) {
        return checksum(std::as_bytes(std::span(text.data(), text.size())));
    };
    // Two different sums over the same key; the file itself holds the whole key.
    return fmt::format("{:016x}{:016x}{}", hash(std::string(key)),
                       hash("second\n" + std::string(key)), kEnding);
}

void AnalysisCache::recall(const ImageSource& source) {
    const std::string key = keyOf(source);
    auto found = inMemory(key);
    if (!found) {
        found = onDisk(key, source.isRaw());
        if (found) keepInMemory(key, *found);
    }
    if (!found) return;
    if (source.isRaw())
        source.rawToneAnalysis->adopt(std::move(*found));
    else
        source.analysis->adopt(std::move(*found));
}

void AnalysisCache::remember(const ImageSource& source) {
    const std::string key = keyOf(source);
    const ToneMeasurement known = knownOf(source);
    const auto before = inMemory(key);
    if (partsKnown(known) <= (before ? partsKnown(*before) : 0)) return;
    keepInMemory(key, known);
    writing_.post([this, key, known] { write(key, known); });
}

void AnalysisCache::releaseMemory() {
    memory_.with([](Memory& memory) { memory.entries.clear(); });
}

std::size_t AnalysisCache::memoryBytes() const {
    std::size_t bytes = 0;
    for (const Entry& entry : memory_.copy().entries)
        bytes += entry.measurement.bytes();
    return bytes;
}

std::optional<ToneMeasurement> AnalysisCache::inMemory(const std::string& key) {
    return memory_.with([&](Memory& memory) -> std::optional<ToneMeasurement> {
        for (Entry& entry : memory.entries) {
            if (entry.key != key) continue;
            entry.lastUse = ++memory.clock;
            return entry.measurement;
        }
        return std::nullopt;
    });
}

void AnalysisCache::keepInMemory(const std::string& key, const ToneMeasurement& measurement) {
    memory_.with([&](Memory& memory) {
        auto& entries = memory.entries;
        std::erase_if(entries, [&](const Entry& entry) { return entry.key == key; });
        entries.push_back({key, measurement, ++memory.clock});
        std::size_t bytes = 0;
        for (const Entry& entry : entries)
            bytes += entry.measurement.bytes();
        while (bytes > limits_.memoryBytes && !entries.empty()) {
            const auto oldest = std::min_element(
                entries.begin(), entries.end(),
                [](const Entry& a, const Entry& b) { return a.lastUse < b.lastUse; });
            bytes -= oldest->measurement.bytes();
            entries.erase(oldest);
        }
    });
}

std::optional<ToneMeasurement> AnalysisCache::onDisk(const std::string& key, bool isRaw) {
    const auto file = files_.read(folder_ / fileName(key), kLargestAnalysisFile);
    if (!file) return std::nullopt;
    auto analysis = decodedAnalysis(*file, version_, key);
    if (!analysis) return std::nullopt;
    return measurementFrom(std::move(*analysis), isRaw);
}

// On the writing queue. A failure leaves the photo to be measured again another time.
void AnalysisCache::write(const std::string& key, const ToneMeasurement& measurement) {
    const auto analysis = stored(measurement, key.starts_with("raw\n"), renderer_);
    if (!analysis || !files_.createFolder(folder_)) return;
    const auto bytes = encodedAnalysis(*analysis, version_, key);
    if (writeAtomically(files_, folder_ / fileName(key), bytes))
        trimCacheFolder(files_, folder_, kEnding, limits_.diskBytes);
}

} // namespace kelvaro
