#include "samples/Palettes.h"

namespace kelvaro::samples {

Palette paletteOf(SceneKind kind) {
    Palette p;
    switch (kind) {
    case SceneKind::lakeAtNoon:
        p = {.zenith = {0.09, 0.22, 0.55},
             .horizon = {0.52, 0.66, 0.86},
             .sun = {1.00, 0.95, 0.86},
             .ambient = {0.17, 0.21, 0.29},
             .meadow = {0.11, 0.20, 0.035},
             .forest = {0.025, 0.060, 0.018},
             .rock = {0.17, 0.16, 0.14},
             .sunX = 0.75,
             .sunY = 0.10,
             .cloudCover = 0.72,
             .snowLine = -1,
             .water = true};
        break;
    case SceneKind::eveningHills:
        p = {.zenith = {0.10, 0.14, 0.30},
             .horizon = {0.95, 0.45, 0.16},
             .sun = {1.30, 0.62, 0.20},
             .ambient = {0.11, 0.10, 0.13},
             .meadow = {0.13, 0.15, 0.03},
             .forest = {0.030, 0.045, 0.015},
             .rock = {0.12, 0.09, 0.08},
             .sunX = 0.55,
             .sunY = 0.36,
             .cloudCover = 0.45,
             .snowLine = -1,
             .water = false};
        break;
    case SceneKind::autumnFarm:
        p = {.zenith = {0.13, 0.24, 0.48},
             .horizon = {0.62, 0.66, 0.70},
             .sun = {1.05, 0.88, 0.64},
             .ambient = {0.15, 0.17, 0.21},
             .meadow = {0.30, 0.19, 0.05},
             .forest = {0.16, 0.055, 0.012},
             .rock = {0.13, 0.12, 0.11},
             .sunX = 0.25,
             .sunY = 0.16,
             .cloudCover = 0.60,
             .snowLine = -1,
             .water = false};
        break;
    case SceneKind::winterPeaks:
        p = {.zenith = {0.06, 0.16, 0.46},
             .horizon = {0.55, 0.70, 0.90},
             .sun = {1.10, 1.02, 0.92},
             .ambient = {0.20, 0.25, 0.36},
             .meadow = {0.55, 0.57, 0.62},
             .forest = {0.020, 0.035, 0.028},
             .rock = {0.09, 0.09, 0.10},
             .sunX = 0.80,
             .sunY = 0.12,
             .cloudCover = 0.30,
             .snowLine = 0.25,
             .water = true};
        break;
    case SceneKind::balloonMorning:
        p = {.zenith = {0.16, 0.28, 0.56},
             .horizon = {0.90, 0.74, 0.58},
             .sun = {1.15, 0.86, 0.60},
             .ambient = {0.17, 0.17, 0.20},
             .meadow = {0.16, 0.20, 0.05},
             .forest = {0.035, 0.060, 0.022},
             .rock = {0.16, 0.13, 0.11},
             .sunX = 0.20,
             .sunY = 0.30,
             .cloudCover = 0.25,
             .snowLine = -1,
             .water = false};
        break;
    case SceneKind::blueHour:
        p = {.zenith = {0.012, 0.025, 0.075},
             .horizon = {0.10, 0.085, 0.13},
             .sun = {0.05, 0.035, 0.03},
             .ambient = {0.020, 0.027, 0.055},
             .meadow = {0.10, 0.13, 0.05},
             .forest = {0.03, 0.05, 0.02},
             .rock = {0.12, 0.11, 0.11},
             .sunX = 0.60,
             .sunY = 0.70,
             .cloudCover = 0.35,
             .snowLine = -1,
             .water = true};
        break;
    }
    return p;
}

} // namespace kelvaro::samples
