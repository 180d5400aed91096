// Photos with made-up measurements for the test in which programs that write the analysis cache are
// killed. The measurement of each follows from its number.
#pragma once

#include "develop/ImageSource.h"
#include "develop/Pictures.h"

namespace kelvaro::test {

inline constexpr int kCachedPhotos = 6;

inline std::string cachedUrl(int number) {
    return "/photos/" + std::to_string(number);
}

// Half a megabyte in the file.
inline ToneMeasurement cachedMeasurement(int number) {
    ToneMeasurement measurement;
    measurement.levels = ToneLevels{-4.0 - number, 1.0 + number};
    measurement.guide = imageOf({200, 150}, [&](int x, int y) {
        return Pixel{float(number), float(x), float(y), 1};
    });
    return measurement;
}

inline ImageSource cachedPhoto(int number) {
    return bitmapSource(cachedUrl(number), "1", imageOf({1, 1}, [](int, int) { return Pixel{}; }),
                        {1, 1});
}

} // namespace kelvaro::test
