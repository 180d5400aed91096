#include "export/SizeNotes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/format.h>

namespace kelvaro {

namespace {

constexpr double kReferenceMegapixels = 24;

// Megabytes of a photo of that size.
struct QualityPoint {
    double quality, megabytes;
};
constexpr std::array kQuality{QualityPoint{10, 0.4}, QualityPoint{60, 2.8}, QualityPoint{75, 4.4},
                              QualityPoint{85, 5.9}, QualityPoint{95, 6.9}, QualityPoint{100, 11}};

double megabytesOfReference(double quality) {
    const double q = std::clamp(quality, kQuality.front().quality, kQuality.back().quality);
    const auto above = std::find_if(kQuality.begin() + 1, kQuality.end() - 1,
                                    [q](const QualityPoint& point) { return point.quality >= q; });
    const auto below = above - 1;
    const double share = (q - below->quality) / (above->quality - below->quality);
    return below->megabytes + share * (above->megabytes - below->megabytes);
}

} // namespace

double outputMegapixels(const ExportSettings& settings, double photoMegapixels) {
    const double border = 2 * settings.borderFraction(); // both sides together
    double longEdge = std::sqrt(photoMegapixels * 1e6 * 1.5);
    if (settings.resize) longEdge = std::min(longEdge, settings.clampedLongEdge() / (1 + border));
    const double shortEdge = 2 * longEdge / 3;
    return (longEdge + border * longEdge) * (shortEdge + border * longEdge) / 1e6;
}

double jpegMegabytes(double quality, double outputMegapixels) {
    return megabytesOfReference(quality) * outputMegapixels / kReferenceMegapixels;
}

std::string formatNote(const ExportSettings& settings, double photoMegapixels) {
    const double megapixels = outputMegapixels(settings, photoMegapixels);
    switch (settings.format) {
    case ExportFormat::jpeg:
        return fmt::format("About {:.1f} MB per photo",
                           jpegMegabytes(settings.quality, megapixels));
    case ExportFormat::heic:
        return "Usually smaller than JPEG at the same quality";
    case ExportFormat::tiff:
        return fmt::format("16-bit, uncompressed: about {:.0f} MB per photo", 6 * megapixels);
    case ExportFormat::png:
        break;
    }
    return "16-bit, lossless: large files";
}

} // namespace kelvaro
