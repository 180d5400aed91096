// How far two drawn pictures are apart.
#pragma once

#include <QImage>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace kelvaro {

// The largest difference of a channel of two pictures, in steps of 8 bits.
inline int largestDifference(const QImage& a, const QImage& b) {
    EXPECT_EQ(a.size(), b.size());
    if (a.size() != b.size()) return 255;
    int largest = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            largest = std::max({largest, std::abs(qRed(p) - qRed(q)),
                                std::abs(qGreen(p) - qGreen(q)), std::abs(qBlue(p) - qBlue(q))});
        }
    }
    return largest;
}

} // namespace kelvaro
