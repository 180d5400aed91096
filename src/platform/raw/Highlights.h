// Channels that a bright surface has saturated, rebuilt from those that it has not and from the
// colour of its surroundings, so that blown areas keep their hue while one channel is left to tell
// their brightness, and run smoothly into neutral white instead of taking the tint of the white
// balance.
#pragma once

#include "platform/raw/LocalColour.h"

#include <array>

namespace kelvaro {

class HighlightRecovery {
public:
    // Balanced values at which red, green and blue saturate. `surroundings` may be null (neutral)
    // and outlives this object.
    HighlightRecovery(const std::array<float, 3>& saturation, const LocalColour* surroundings);

    // In place on a row of balanced camera values. A channel from 0.9 of its saturation on moves
    // towards what the sound channels and the surroundings say, never downwards and at most to the
    // largest saturation; where no channel is sound all become that. Other pixels stay as they are.
    // `row` and `column` place the first pixel, `step` the next, in photosites of the active area.
    void run(float* const (&rgb)[3], int count, float row, float column, float step) const;

    // Balanced values from which a channel is in doubt.
    const std::array<float, 3>& doubtFrom() const { return start_; }
    // One pixel; `row` and `column` in photosites of the active area.
    void recover(float (&v)[3], float row, float column) const;

private:
    std::array<float, 3> start_, slope_; // doubt = (value − start) × slope, clamped to 0 … 1
    float top_;
    const LocalColour* surroundings_;
};

// A Bayer mosaic whose saturated photosites are rebuilt before the demosaic sees them, from their
// own value and the means of the other channels among their neighbours.
class RecoveredMosaic final : public SplitRows {
public:
    RecoveredMosaic(const SensorImage& sensor, const MosaicReader& reader,
                    const HighlightRecovery& highlights)
        : active_(sensor.active),
          phase_(reader.phase()),
          reader_(reader),
          highlights_(highlights) {}
    void split(int row, int column, int pairs, float* even, float* odd) const override;

private:
    void rebuild(int row, int column, int pairs, const float (&limits)[2], float* even,
                 float* odd) const;
    int channelAt(int row, int column) const;
    SensorRect active_;
    BayerPhase phase_;
    const MosaicReader& reader_;
    const HighlightRecovery& highlights_;
};

} // namespace kelvaro
