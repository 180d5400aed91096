#include "platform/raw/BinnedPicture.h"

#include "platform/raw/CameraPicture.h"
#include "platform/raw/ColourStep.h"
#include "platform/raw/PlaceMap.h"
#include "platform/raw/UprightWriter.h"

#include <tbb/parallel_for.h>

#include <algorithm>
#include <atomic>
#include <vector>

namespace kelvaro {

namespace {

constexpr int kSide = 4;      // photosites
constexpr int kBandRows = 32; // of a task
constexpr int kPadding = 64;  // floats that the last vector of a row may touch
// A square's red and its blue lie half a photosite from its middle, each on its side of it.
constexpr float kOffCentre = 0.5f / kSide;

// Some rows of the picture and one more above and below, planes one after another.
class Band {
public:
    Band(const CameraPicture& picture, int top, int rows, int columns)
        : stride_(columns + kPadding), rows_(rows), columns_(columns) {
        memory_.resize(3 * std::size_t(rows + 2) * std::size_t(stride_));
        for (int y = -1; y <= rows; ++y) {
            float* const lines[3] = {row(0, y), row(1, y), row(2, y)};
            picture.means(top + y, kSide, columns, lines);
        }
    }
    float* row(int channel, int y) {
        return memory_.data() + (std::ptrdiff_t(channel) * (rows_ + 2) + y + 1) * stride_;
    }
    std::ptrdiff_t stride() const { return stride_; }

    // Moves a channel to the middle of its squares, which lies towards the next square or the one
    // before it.
    void centre(int channel, bool isDownwards, bool isRightwards) {
        for (int i = 0; i < rows_; ++i) {
            const int y = isDownwards ? i : rows_ - 1 - i; // each before it is the neighbour
            float* own = row(channel, y);
            const float* other = row(channel, isDownwards ? y + 1 : y - 1);
            for (int x = 0; x < columns_; ++x)
                own[x] += kOffCentre * (other[x] - own[x]);
            if (isRightwards) {
                for (int x = 0; x + 1 < columns_; ++x)
                    own[x] += kOffCentre * (own[x + 1] - own[x]);
            } else {
                for (int x = columns_ - 1; x > 0; --x)
                    own[x] += kOffCentre * (own[x - 1] - own[x]);
            }
        }
    }

private:
    const std::ptrdiff_t stride_;
    const int rows_, columns_;
    std::vector<float> memory_;
};

} // namespace

bool isBinnable(const SensorImage& sensor) {
    return sensor.layout == SensorLayout::bayer && sensor.colours == 3 && !sensor.isReduced &&
           sensor.crop.width >= 2 * kSide && sensor.crop.height >= 2 * kSide &&
           (!sensor.corrections || sensor.corrections->lateGains.isEmpty()) &&
           PlaceMap(sensor, 1).isIdentity();
}

std::optional<Raster> binnedPicture(const SensorImage& sensor, const Cancellation* cancellation) {
    const CameraPicture picture(sensor, 1);
    const ColourStep colour(sensor);
    const auto [columns, rows] = pictureSize(sensor, kSide);
    const PixelSize upright =
        sensor.orientation >= 5 ? PixelSize{rows, columns} : PixelSize{columns, rows};
    Raster raster({0, 0, upright.width, upright.height}, false);
    const UprightWriter writer(raster.view(), upright, sensor.orientation);
    const auto [redRow, redColumn] = MosaicReader(sensor).phase();
    const bool isRedUpper = ((redRow + sensor.crop.top) & 1) == 0;
    const bool isRedLeft = ((redColumn + sensor.crop.left) & 1) == 0;
    std::atomic<bool> stopped{false};
    tbb::parallel_for(
        0, (rows + kBandRows - 1) / kBandRows, [&, columns = columns, rows = rows](int index) {
            if (stopped || (cancellation && cancellation->isCancelled())) {
                stopped = true;
                return;
            }
            const int top = index * kBandRows, count = std::min(kBandRows, rows - top);
            Band band(picture, top, count, columns);
            band.centre(0, isRedUpper, isRedLeft);
            band.centre(2, !isRedUpper, !isRedLeft);
            for (int y = 0; y < count; ++y)
                colour.run({band.row(0, y), band.row(1, y), band.row(2, y), nullptr}, columns);
            writer.write({0, top, columns, count}, {band.row(0, 0), band.row(1, 0), band.row(2, 0)},
                         band.stride());
        });
    if (stopped) return std::nullopt;
    return raster;
}

} // namespace kelvaro
