// Coarse frames as the canvas draws them, against the definition and the painter's own way.
#include "ui/editor/FrameEnlarging.h"

#include "ui/editor/LargestDifference.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace kelvaro {
namespace {

QImage noise(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    std::minstd_rand random(7);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, 0xff000000u | (random() & 0xffffffu));
    }
    return image;
}

// A channel of `coarse` between the middles of its pixels, as it is defined.
double bilinear(const QImage& coarse, int shift, int factor, QPoint at) {
    const double x = (at.x() + 0.5) / factor - 0.5, y = (at.y() + 0.5) / factor - 0.5;
    const double left = std::floor(x), above = std::floor(y);
    double sum = 0;
    for (const int dx : {0, 1}) {
        for (const int dy : {0, 1}) {
            const int px = std::clamp(int(left) + dx, 0, coarse.width() - 1);
            const int py = std::clamp(int(above) + dy, 0, coarse.height() - 1);
            sum += (dx ? x - left : 1 - x + left) * (dy ? y - above : 1 - y + above) *
                   (coarse.pixel(px, py) >> shift & 255);
        }
    }
    return sum;
}

TEST(FrameEnlarging, LiesBetweenPixelsAndWritesNothingBeside) {
    constexpr QRgb untouched = 0xff020304;
    for (const int factor : {2, 3, 4}) {
        for (const int width : {1, 2, 3, 9, 40}) {
            const QImage coarse = noise(width, 5);
            const QRect all(0, 0, width * factor, 5 * factor);
            for (const QRect& part :
                 {all, all.adjusted(1, 2, 0, -3), QRect(all.width() / 2, 1, 1, 4)}) {
                QImage to(part.width() + 2, part.height() + 2, QImage::Format_RGB32);
                to.fill(untouched);
                enlarge(coarse, factor, part, to.scanLine(1) + 4, to.bytesPerLine());
                for (int y = 0; y < to.height(); ++y) {
                    for (int x = 0; x < to.width(); ++x) {
                        const QPoint at(x - 1, y - 1);
                        const QRgb seen = to.pixel(x, y);
                        if (!QRect(QPoint(0, 0), part.size()).contains(at)) {
                            ASSERT_EQ(seen, untouched) << factor << " x " << width;
                            continue;
                        }
                        for (const int shift : {0, 8, 16}) {
                            // Rounded twice, with shares of 1/256.
                            ASSERT_NEAR(seen >> shift & 255,
                                        bilinear(coarse, shift, factor, at + part.topLeft()), 2)
                                << factor << " x " << width << " at " << x << ", " << y;
                        }
                    }
                }
            }
        }
    }
}

// Onto whatever lies there, at the place and within the part that are to be painted.
TEST(FrameEnlarging, DrawsWhatAPainterDraws) {
    const QImage coarse = noise(70, 160); // higher than one band
    for (const int factor : {2, 3, 4}) {
        const QRectF target(11, 7, 70 * factor, 160 * factor);
        QImage ours(400, 500, QImage::Format_ARGB32_Premultiplied), theirs = ours;
        for (QImage* image : {&ours, &theirs}) {
            image->fill(QColor(40, 50, 60));
            QPainter painter(image);
            painter.translate(5, 3);
            if (image == &ours) {
                EXPECT_TRUE(drawEnlarged(painter, coarse, target));
            } else {
                painter.setRenderHint(QPainter::SmoothPixmapTransform);
                painter.drawImage(target, coarse);
            }
        }
        // Of noise from black to white; the painter finds its places in steps of its own.
        EXPECT_LE(largestDifference(ours, theirs), 5) << factor;
    }
}

// What it cannot draw exactly it leaves to the painter.
TEST(FrameEnlarging, RefusesWhatIsNotPlain) {
    const QImage coarse = noise(20, 20);
    QImage canvas(200, 200, QImage::Format_RGB32);
    canvas.fill(Qt::black);
    const QImage before = canvas.copy();
    const QRectF twice(10, 10, 40, 40);
    const auto isDrawn = [&](const QImage& image, const QRectF& target, const auto& prepare) {
        QPainter painter(&canvas);
        prepare(painter);
        return drawEnlarged(painter, image, target);
    };
    const auto plain = [](QPainter&) {};
    EXPECT_FALSE(isDrawn(coarse, QRectF(10, 10, 20, 20), plain)); // not enlarged
    EXPECT_FALSE(isDrawn(coarse, QRectF(10.5, 10, 40, 40), plain));
    EXPECT_FALSE(isDrawn(coarse, QRectF(10, 10, 41, 40), plain));
    EXPECT_FALSE(isDrawn(coarse, QRectF(10, 10, 100, 100), plain)); // more than four times
    EXPECT_FALSE(
        isDrawn(coarse.convertToFormat(QImage::Format_ARGB32_Premultiplied), twice, plain));
    EXPECT_FALSE(isDrawn(coarse, twice, [](QPainter& painter) { painter.setOpacity(0.5); }));
    EXPECT_FALSE(isDrawn(coarse, twice, [](QPainter& painter) { painter.rotate(3); }));
    EXPECT_FALSE(
        isDrawn(coarse, twice, [](QPainter& painter) { painter.setClipRect(0, 0, 30, 30); }));
    EXPECT_EQ(canvas, before);
}

} // namespace
} // namespace kelvaro
