// The last steps on a developed tile: false colour is removed, colour noise reduced and luminance
// sharpened, all in the compressive domain of the demosaic, where photon noise is nearly even.
// Colour noise is shrunk in an undecimated wavelet decomposition of two colour differences (à
// trous, J.-L. Starck and F. Murtagh, "Astronomical Image and Data Analysis", 2006) by how it
// compares with the measured noise; sharpening adds the detail of luminance that stands out from
// the noise, limited so that edges get no halos.
#pragma once

#include "platform/raw/FinishingRows.h"
#include "platform/raw/SplineSmoothing.h"

#include <array>
#include <cstddef>
#include <vector>

namespace kelvaro {

struct NoiseModel {
    static constexpr int kLevels = 3; // details of 1, 2 and 4 pixels
    NoiseLine luminance;              // of the finest detail
    std::array<std::array<NoiseLine, kLevels>, 2> colour{};
    bool hasColourNoise() const; // enough to be seen
};

struct FinishingSettings {
    float sharpening = 0; // 0 off, 1 the default amount
    bool reducesColourNoise = false;
    bool removesFalseColour = false; // of a demosaic
    float toe = 0.016f;              // of the compressive domain
};

// What is added to the two colour differences of a tile's row before they are reduced.
class ColourOffsets {
public:
    virtual ~ColourOffsets() = default;
    virtual void add(int row, int count, float* u, float* v) const = 0;
};

class Finishing {
public:
    // How far a result reaches for its input.
    static int border(const FinishingSettings& settings);

    // Three planes of linear values, width × height with `stride`, of which the part border()
    // inside is finished and written to `target`, which may be that very part. Values must be
    // finite. `offsets` may be null. Nothing is written where border() is 0.
    struct Target {
        float* planes[3];
        std::ptrdiff_t stride;
    };
    void run(const float* const (&planes)[3], std::ptrdiff_t stride, int width, int height,
             const NoiseModel& noise, const FinishingSettings& settings, const Target& target,
             const ColourOffsets* offsets = nullptr);
    // The same row by row, in their order from 0 on. Of what is finished the first `above` rows
    // stand above the target: rows may go on from one target to the one below it.
    struct Job {
        int width, height;
        const NoiseModel& noise;
        const FinishingSettings& settings;
        Target target;
        const ColourOffsets* offsets = nullptr;
        int above = 0;
    };
    void addRow(const Job& job, int row, const float* red, const float* green, const float* blue);
    // What a tile contributes to the measurement: its interior's encoded luminance and details, one
    // pixel in about four. Leaves the planes as they are.
    struct Sample {
        float luminance, detail; // of luminance
        float colour[2][NoiseModel::kLevels];
    };
    void sample(const float* const (&planes)[3], std::ptrdiff_t stride, int width, int height,
                float toe, std::vector<Sample>& samples);

private:
    // Powers of two above every lag, and above what the taps of each level span.
    static constexpr int kRawRows = 4, kKeptRows = 16,
                         kLevelRows[NoiseModel::kLevels] = {8, 16, 16};
    // One colour difference: as it came, itself, then smoothed once and twice, of the latter every
    // second pixel of every second row; and what its details keep, but that the coarsest ones lose
    // `removed`.
    struct Colour {
        std::vector<float> raw, levels[NoiseModel::kLevels], sum, removed;
    };
    void resize(int width);
    void takeColours(int t, const Job& job);
    void reduceColourNoise(int t, const Job& job);
    void reduceCoarsely(int t, const Job& job);
    void takeCoarseNoise(int row, const Job& job);
    RowRing ring(const Job& job, std::vector<float>& v, int rows) const {
        return {v.data(), rows, job.width, job.height, stride_};
    }
    RowRing halfRing(const Job& job, std::vector<float>& v, int rows) const {
        return {v.data(), rows, (job.width + 1) / 2, (job.height + 1) / 2, stride_ / 2};
    }
    std::ptrdiff_t stride_ = 0; // of all rings; half of it of those of every second pixel
    std::vector<float> luminance_, sharpened_, scratch_[2], smooth_[2], halfLuminance_;
    Colour colour_[2];
};

// From samples of the whole picture; nothing from fewer than a thousand.
NoiseModel noiseModel(std::vector<Finishing::Sample> samples);

} // namespace kelvaro
