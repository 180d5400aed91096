#include "export/CaptureDate.h"
#include "export/DateStamp.h"
#include "export/SegmentDigits.h"
#include "platform/imaging/ReferenceRenderer.h"

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>

namespace kelvaro {
namespace {

using namespace std::chrono_literals;

TEST(StampTextTest, PutsTheDayInTheStylesOrder) {
    const std::chrono::year_month_day day{2024y, std::chrono::March, 7d};
    EXPECT_EQ(DateStamp::text(DateStamp::Style::dayMonthYear, day), "07.03.24");
    EXPECT_EQ(DateStamp::text(DateStamp::Style::monthDayYear, day), "03.07.24");
    EXPECT_EQ(DateStamp::text(DateStamp::Style::none, day), "");
    EXPECT_EQ(DateStamp::text(DateStamp::Style::dayMonthYear, {2000y, std::chrono::May, 31d}),
              "31.05.00");
}

TEST(CaptureDateTest, ReadsOnlyRealDates) {
    EXPECT_EQ(exifDay("2024:03:07 23:59:59"), 2024y / 3 / 7d);
    for (const char* text : {"", "2024:03:07", "2024-03-07 10:00:00", "2024:02:30 10:00:00",
                             "0000:00:00 00:00:00", "2024:13:01 10:00:00", "2024:03:07 24:00:00",
                             "2024:03:07 10:00:00Z", "    :  :     :  :  "})
        EXPECT_FALSE(exifDay(text)) << text;
}

TEST(CaptureDateTest, TakesTheFirstDateThatParses) {
    ::setenv("TZ", "UTC-5", 1); // five hours ahead
    ::tzset();
    PhotoProperties properties;
    const FileTime late{(std::int64_t(20 * 3600)) *
                        1'000'000'000}; // 20:00 UTC is the next day there
    EXPECT_EQ(captureDay(properties, late), 1970y / 1 / 2d);
    properties.tiff.set("DateTime", "2001:01:01 00:00:00");
    EXPECT_EQ(captureDay(properties, late), 2001y / 1 / 1d);
    properties.exif.set("DateTimeDigitized", "2002:01:01 00:00:00");
    EXPECT_EQ(captureDay(properties, late), 2002y / 1 / 1d);
    properties.exif.set("DateTimeOriginal", "unknown");
    EXPECT_EQ(captureDay(properties, late), 2002y / 1 / 1d);
    properties.exif.set("DateTimeOriginal", "2003:01:01 00:00:00");
    EXPECT_EQ(captureDay(properties, late), 2003y / 1 / 1d);
    ::unsetenv("TZ");
    ::tzset();
}

TEST(StampGeometryTest, FollowsTheShorterSide) {
    EXPECT_FALSE(DateStamp::geometry({20, 20}));
    EXPECT_FALSE(DateStamp::geometry({5000, 32}));
    EXPECT_EQ(DateStamp::geometry({33, 100})->digitHeight, 6);
    const auto landscape = DateStamp::geometry({1000, 700});
    EXPECT_NEAR(landscape->digitHeight, 18.2, 1e-12);
    EXPECT_NEAR(landscape->margin, 35, 1e-12);
}

TEST(SegmentDigitsTest, FillsItsRoomByTheGeometry) {
    const double h = 50;
    const Coverage text = segmentText("88.88", h);
    EXPECT_EQ(text.width, int(std::ceil(h * (4 * 0.52 + 0.26 + 0.4))));
    EXPECT_EQ(text.height, 70);
    double top = 1e9, bottom = -1;
    for (int y = 0; y < text.height; ++y)
        for (int x = 0; x < text.width; ++x) {
            ASSERT_GE(text.at(x, y), 0);
            ASSERT_LE(text.at(x, y), 1);
            if (text.at(x, y) == 0) continue;
            top = std::min(top, double(y));
            bottom = std::max(bottom, double(y));
        }
    EXPECT_EQ(top, 10); // the padding of 0.2 digit heights
    EXPECT_EQ(bottom, 59);
}

TEST(SegmentDigitsTest, GivesEachDigitItsOwnArea) {
    const auto area = [](const char* digit, double h) {
        double sum = 0;
        for (const float value : segmentText(digit, h).values)
            sum += double(value);
        return sum / (h * h);
    };
    // An eight is all seven bars; the others are subsets, upright ones being the longer.
    const double eight = area("8", 40), one = area("1", 40), seven = area("7", 40);
    EXPECT_NEAR(area("8", 97), eight, 1e-4); // independent of the size: the edges are exact
    EXPECT_GT(eight, 0);
    const double across = seven - one, upright = one / 2;
    EXPECT_NEAR(eight, 3 * across + 4 * upright, 1e-4);
    EXPECT_NEAR(area("0", 40), eight - across, 1e-4);
    EXPECT_NEAR(area("6", 40), eight - upright, 1e-4);
    EXPECT_NEAR(area("4", 40), 3 * upright + across, 1e-4);
    EXPECT_EQ(area(" ", 40), 0);
}

TEST(StampTest, LiesInTheLowerRightCorner) {
    const Image photo = cropped(constantColour({0, 0, 0, 1}), {0, 0, 1000, 700});
    const Image stamped = DateStamp::imprinted(photo, "07.03.24");
    EXPECT_EQ(stamped.extent(), photo.extent());
    const auto drawn = makeReferenceRenderer()->renderRaster(stamped, photo.extent());
    ASSERT_TRUE(drawn);
    int left = 1000, right = -1, low = 700, high = -1;
    float brightest = 0;
    for (int row = 0; row < 700; ++row)
        for (int x = 0; x < 1000; ++x) {
            const float red = drawn->row(0, row)[x];
            brightest = std::max(brightest, red);
            if (red <= 0) continue;
            left = std::min(left, x), right = std::max(right, x);
            low = std::min(low, 699 - row), high = std::max(high, 699 - row);
        }
    // The stamp ends 35 pixels from both edges, its digits a padding of 3.64 further in.
    EXPECT_GE(low, 35 + 3);
    EXPECT_LE(low, 35 + 4);
    EXPECT_LE(right, 999 - 35 - 2); // the slant leans into the padding
    EXPECT_GE(right, 999 - 35 - 6);
    EXPECT_NEAR(high - low, 18.2, 1.5);
    EXPECT_NEAR(right - left, 18.2 * (6 * 0.52 + 2 * 0.26), 5);
    const double linear = std::pow((0.969 + 0.055) / 1.055, 2.4);
    EXPECT_NEAR(double(brightest), 0.95 * linear, 0.01);
    EXPECT_EQ(DateStamp::imprinted(photo, ""), photo);
    const Image tiny = cropped(photo, {0, 0, 20, 20});
    EXPECT_EQ(DateStamp::imprinted(tiny, "07.03.24"), tiny);
}

} // namespace
} // namespace kelvaro
