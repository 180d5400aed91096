#include "ui/editor/FrameEnlarging.h"

#include "base/Require.h"

#include <QPaintEngine>
#include <QSemaphore>
#include <QThreadPool>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

namespace kelvaro {
namespace {

// Eight samples; the compilers make vector instructions of them that every machine has.
using Bytes = std::uint8_t __attribute__((vector_size(8)));
using Words = std::uint16_t __attribute__((vector_size(16)));
constexpr std::size_t half = 8, step = 2 * half;
constexpr std::uint16_t whole = 256, rounding = 128;

Words loaded(const uchar* from) {
    Bytes bytes;
    std::memcpy(&bytes, from, half);
    return __builtin_convertvector(bytes, Words);
}

// Eight bytes towards `far` by their shares of 256.
void mixHalf(const uchar* near, const uchar* far, Words share, uchar* to) {
    const Words sum = loaded(near) * (whole - share) + loaded(far) * share;
    const Bytes result = __builtin_convertvector((sum + rounding) >> 8, Bytes);
    std::memcpy(to, &result, half);
}

// Works in steps of 16 bytes, of which the last may be partly behind the end of what is read, never
// of what is written. `shareAt` tells the shares of the eight bytes from one on.
template<class ShareAt>
void mix(const uchar* near, const uchar* far, std::size_t bytes, uchar* to, ShareAt shareAt) {
    std::size_t at = 0;
    for (; at + step <= bytes; at += step) {
        mixHalf(near + at, far + at, shareAt(at), to + at);
        mixHalf(near + at + half, far + at + half, shareAt(at + half), to + at + half);
    }
    if (at == bytes) return;
    std::array<uchar, step> last;
    mixHalf(near + at, far + at, shareAt(at), last.data());
    mixHalf(near + at + half, far + at + half, shareAt(at + half), last.data() + half);
    std::memcpy(to + at, last.data(), bytes - at);
}

// Where an enlarged pixel lies between two coarse ones, along one axis.
struct Between {
    int near = 0, far = 0;
    std::uint8_t share = 0; // of the far one, in 256

    static Between of(int pixel, int factor, int count) {
        const int in = pixel % factor, near = pixel / factor;
        const double off = (in + 0.5) / factor - 0.5;
        const int far = std::clamp(off < 0 ? near - 1 : near + 1, 0, count - 1);
        return {near, far, static_cast<std::uint8_t>(std::lround(std::abs(off) * whole))};
    }
};

// Rows of the coarse picture, enlarged across in whole cells from the one that holds `left`; the
// last two are kept for the rows between them.
template<int factor>
class WideRows {
public:
    WideRows(const QImage& coarse, int left, int width)
        : coarse_(coarse),
          firstCell_(left / factor),
          cells_((left + width - 1) / factor + 1 - firstCell_),
          skipped_(static_cast<std::size_t>(left - firstCell_ * factor)) {
        const auto pixels = static_cast<std::size_t>(cells_ * factor), room = pixels + step / 4;
        line_.resize(static_cast<std::size_t>(cells_) + 2);
        for (std::vector<std::uint32_t>* row : {&near_, &far_, &rows_[0], &rows_[1]})
            row->resize(room);
        for (std::size_t x = 0; x < room; ++x)
            shares_.insert(shares_.end(), 4, Between::of(int(x), factor, coarse.width()).share);
    }

    const uchar* row(int y) {
        std::vector<std::uint32_t>& wide = rows_[static_cast<std::size_t>(y % 2)];
        if (std::exchange(held_[static_cast<std::size_t>(y % 2)], y) != y) {
            fill(y);
            mix(bytesOf(near_), bytesOf(far_), 4 * (near_.size() - step / 4),
                reinterpret_cast<uchar*>(wide.data()),
                [shares = shares_.data()](std::size_t at) { return loaded(shares + at); });
        }
        return bytesOf(wide) + 4 * skipped_;
    }

private:
    static const uchar* bytesOf(const std::vector<std::uint32_t>& pixels) {
        return reinterpret_cast<const uchar*>(pixels.data());
    }
    void fill(int y) {
        const auto* pixels = reinterpret_cast<const std::uint32_t*>(coarse_.constScanLine(y));
        const int last = coarse_.width() - 1;
        for (int cell = -1; cell <= cells_; ++cell)
            line_[static_cast<std::size_t>(cell + 1)] =
                pixels[std::clamp(firstCell_ + cell, 0, last)];
        const std::uint32_t* before = line_.data();
        std::uint32_t *near = near_.data(), *far = far_.data();
        for (int cell = 0; cell < cells_; ++cell, ++before, near += factor, far += factor) {
            for (int in = 0; in < factor; ++in) {
                near[in] = before[1];
                far[in] = before[2 * in + 1 < factor ? 0 : 2];
            }
        }
    }

    const QImage& coarse_;
    int firstCell_, cells_;
    std::size_t skipped_;       // enlarged pixels of the first cell
    std::vector<uchar> shares_; // one for each byte of a row
    std::vector<std::uint32_t> line_, near_, far_;
    std::array<std::vector<std::uint32_t>, 2> rows_;
    std::array<int, 2> held_{-1, -1};
};

template<int factor>
void enlargeBy(const QImage& coarse, const QRect& part, uchar* to, qsizetype bytesPerLine) {
    WideRows<factor> rows(coarse, part.x(), part.width());
    const auto bytes = 4 * static_cast<std::size_t>(part.width());
    for (int y = 0; y < part.height(); ++y) {
        const Between place = Between::of(part.y() + y, factor, coarse.height());
        const uchar* near = rows.row(place.near);
        const uchar* far = rows.row(place.far);
        const Words share = Words{} + place.share;
        mix(near, far, bytes, to + y * bytesPerLine, [share](std::size_t) { return share; });
    }
}

// The whole number of times that `coarse` fits into `shown` exactly, on whole pixels; else 0.
int wholeFactor(const QImage& coarse, const QRectF& shown) {
    constexpr double slack = 0.01;
    const auto isNear = [](double a, double b) { return std::abs(a - b) < slack; };
    const int factor = static_cast<int>(std::lround(shown.width() / coarse.width()));
    const bool fits = isNear(shown.width(), double(factor) * coarse.width()) &&
                      isNear(shown.height(), double(factor) * coarse.height()) &&
                      isNear(shown.x(), std::round(shown.x())) &&
                      isNear(shown.y(), std::round(shown.y()));
    return fits ? factor : 0;
}

// The memory behind a painter that does nothing else to pixels than store them; null otherwise.
QImage* memoryOf(const QPainter& painter) {
    const QPaintEngine* engine = painter.paintEngine();
    if (!engine || engine->type() != QPaintEngine::Raster || painter.opacity() < 1 ||
        painter.hasClipping() || painter.compositionMode() != QPainter::CompositionMode_SourceOver)
        return nullptr;
    QPaintDevice* device = engine->paintDevice();
    if (!device || device->devType() != QInternal::Image) return nullptr;
    auto* image = static_cast<QImage*>(device);
    const bool isOpaque = image->format() == QImage::Format_RGB32 ||
                          image->format() == QImage::Format_ARGB32_Premultiplied;
    return isOpaque && image->isDetached() ? image : nullptr;
}

// Calls `draw` for all of the region in bands, on this thread and another where one is free.
template<class Draw>
void inBands(const QRegion& region, Draw draw) {
    constexpr int bandRows = 128;
    std::vector<QRect> bands;
    for (const QRect& part : region) {
        for (int y = 0; y < part.height(); y += bandRows)
            bands.push_back(
                QRect(part.x(), part.y() + y, part.width(), std::min(bandRows, part.height() - y)));
    }
    std::atomic<std::size_t> next{0};
    const auto work = [&] {
        for (std::size_t at; (at = next++) < bands.size();)
            draw(bands[at]);
    };
    QSemaphore done;
    const bool isHelped = bands.size() > 1 && QThreadPool::globalInstance()->tryStart([&] {
        work();
        done.release();
    });
    work();
    if (isHelped) done.acquire();
}

} // namespace

void enlarge(const QImage& coarse, int factor, const QRect& part, uchar* to,
             qsizetype bytesPerLine) {
    KELVARO_REQUIRE(factor >= 2 && factor <= mostEnlarged);
    if (factor == 2) return enlargeBy<2>(coarse, part, to, bytesPerLine);
    if (factor == 3) return enlargeBy<3>(coarse, part, to, bytesPerLine);
    enlargeBy<4>(coarse, part, to, bytesPerLine);
}

bool drawEnlarged(QPainter& painter, const QImage& coarse, const QRectF& target) {
    const QTransform place = painter.deviceTransform();
    if (coarse.format() != QImage::Format_RGB32 || place.type() > QTransform::TxScale) return false;
    const QRectF shown = place.mapRect(target);
    const int factor = wholeFactor(coarse, shown);
    QImage* memory = factor > 1 && factor <= mostEnlarged ? memoryOf(painter) : nullptr;
    if (!memory) return false;
    const QRect all = shown.toRect();
    QRegion visible = QRegion(all) & memory->rect();
    if (const QRegion clip = painter.paintEngine()->systemClip(); !clip.isEmpty()) visible &= clip;
    // Nobody else holds the pixels, and the painter has their address: they must not move.
    auto* pixels = const_cast<uchar*>(memory->constBits());
    const qsizetype rowBytes = memory->bytesPerLine();
    inBands(visible, [&](const QRect& part) {
        uchar* first = pixels + part.y() * rowBytes + qsizetype(4) * part.x();
        enlarge(coarse, factor, part.translated(-all.topLeft()), first, rowBytes);
    });
    return true;
}

} // namespace kelvaro
