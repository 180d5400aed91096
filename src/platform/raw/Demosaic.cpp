#include "platform/raw/Demosaic.h"

#include "platform/raw/DemosaicRings.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/raw/Demosaic.cpp"
#ifndef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#endif
#include <hwy/foreach_target.h> // must come before highway.h

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kelvaro {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

const hn::ScalableTag<float> kTag;
using V = hn::Vec<decltype(kTag)>;
using Step = DemosaicRings&;

HWY_INLINE V load(const float* p) {
    return hn::LoadU(kTag, p);
}
HWY_INLINE V constant(float v) {
    return hn::Set(kTag, v);
}
HWY_INLINE V tiny() {
    return constant(1e-5f);
}
HWY_INLINE V distance(V a, V b) {
    return hn::AbsDiff(a, b);
}
HWY_INLINE V mix(V a, V b, V f) {
    return hn::MulAdd(b - a, f, a);
}

// Linear values to the interpolation domain and back: e = v / √(|v| + a), v = e (|e| + √(e² + 4 a))
// / 2.
HWY_INLINE V encoded(V v, float toe) {
    return v / hn::Sqrt(hn::Abs(v) + constant(toe));
}
HWY_INLINE V decoded(V e, float toe) {
    const V root = hn::Sqrt(hn::MulAdd(e, e, constant(4 * toe)));
    return e * (hn::Abs(e) + root) * constant(0.5f);
}

// For every group of pairs.
template<class F>
HWY_INLINE void forPairs(Step s, F&& use) {
    for (int k = 0; k < s.pairs; k += int(hn::Lanes(kTag)))
        use(k);
}

// Square of the sixth-order difference of seven samples in a line, the middle one last.
HWY_INLINE V highPass(V a3, V a2, V a1, V b1, V b2, V b3, V middle) {
    const V sum = (a3 - a1) + (b3 - b1);
    const V v = hn::MulAdd(middle, constant(6), hn::NegMulAdd(a2 + b2, constant(3), sum));
    return v * v;
}

void highPassRow(Step s, const float* const (&m)[7], float* out) {
    forPairs(s, [&](int k) {
        hn::StoreU(highPass(load(m[0] + k), load(m[1] + k), load(m[2] + k), load(m[4] + k),
                            load(m[5] + k), load(m[6] + k), load(m[3] + k)),
                   kTag, out + k);
    });
}

// Which way is smoother: squared high-pass values down and across, each summed over three columns.
void differences(Step s, int row) {
    for (int parity = 0; parity < 2; ++parity) {
        const float* m[7];
        const float* n[7];
        for (int d = -3; d <= 3; ++d) {
            m[d + 3] = s.mosaic.tap(row + d, parity, 0);
            n[d + 3] = s.mosaic.tap(row, parity, d);
        }
        highPassRow(s, m, s.single[0].tap(0, parity, 0));
        highPassRow(s, n, s.single[1].tap(0, parity, 0));
    }
    for (int parity = 0; parity < 2; ++parity) {
        for (int i = 0; i < 2; ++i) {
            const float* left = s.single[i].tap(0, parity, -1);
            const float *here = s.single[i].tap(0, parity, 0),
                        *right = s.single[i].tap(0, parity, 1);
            float* out = (i == 0 ? s.vertical : s.horizontal).tap(row, parity, 0);
            forPairs(s, [&](int k) {
                hn::StoreU(load(left + k) + load(here + k) + load(right + k), kTag, out + k);
            });
        }
    }
}

// 0 vertical … 1 horizontal, from windows of 3 × 3.
void directions(Step s, int row) {
    for (int parity = 0; parity < 2; ++parity) {
        const float *v[3], *h[3];
        for (int d = -1; d <= 1; ++d) {
            v[d + 1] = s.vertical.tap(row + d, parity, 0);
            h[d + 1] = s.horizontal.tap(row + d, parity, 0);
        }
        float* out = s.direction.tap(row, parity, 0);
        const V least = constant(1e-10f);
        forPairs(s, [&](int k) {
            const V down = hn::Max(least, load(v[0] + k) + load(v[1] + k) + load(v[2] + k));
            const V across = hn::Max(least, load(h[0] + k) + load(h[1] + k) + load(h[2] + k));
            hn::StoreU(down / (down + across), kTag, out + k);
        });
    }
}

// The direction that is decided more clearly, the photosite's own or its neighbours' mean.
HWY_INLINE V refined(V own, V a, V b, V c, V d) {
    const V around = (a + b + c + d) * constant(0.25f);
    const V half = constant(0.5f);
    return hn::IfThenElse(distance(half, own) < distance(half, around), around, own);
}

// Sources of `refined` in a ring of both parities.
struct DirectionTaps {
    const float* p[5];
    DirectionTaps(FullRing& ring, int row, int parity)
        : p{ring.tap(row, parity, 0), ring.tap(row - 1, parity, -1), ring.tap(row - 1, parity, 1),
            ring.tap(row + 1, parity, -1), ring.tap(row + 1, parity, 1)} {}
    DirectionTaps(ColourRing& ring, int row, int parity)
        : p{ring.tap(row, parity, 0), ring.tap(row - 1, parity, -1), ring.tap(row - 1, parity, 1),
            ring.tap(row + 1, parity, -1), ring.tap(row + 1, parity, 1)} {}
    HWY_INLINE V at(int k) const {
        return refined(load(p[0] + k), load(p[1] + k), load(p[2] + k), load(p[3] + k),
                       load(p[4] + k));
    }
};

struct Fraction {
    V top, bottom;
};

// (1 − f) of one and f of the other, with one division.
HWY_INLINE V mixed(const Fraction& a, const Fraction& b, V f) {
    const V left = a.top * b.bottom, right = b.top * a.bottom;
    return mix(left, right, f) / (a.bottom * b.bottom);
}

// Green at red and blue along one line of nine mosaic samples: each neighbour corrected by half the
// colour's own difference over two steps, weighted by the other side's roughness.
HWY_INLINE Fraction greenAlong(const float* const (&m)[9], int k) {
    const V c = load(m[4] + k), a1 = load(m[3] + k), b1 = load(m[5] + k);
    const V a2 = load(m[2] + k), b2 = load(m[6] + k);
    const V shared = distance(a1, b1) + tiny();
    const V aRough =
        shared + distance(c, a2) + distance(a1, load(m[1] + k)) + distance(a2, load(m[0] + k));
    const V bRough =
        shared + distance(c, b2) + distance(b1, load(m[7] + k)) + distance(b2, load(m[8] + k));
    const V half = constant(0.5f);
    const V a = hn::MulAdd(c - a2, half, a1), b = hn::MulAdd(c - b2, half, b1);
    return {hn::MulAdd(bRough, a, aRough * b), aRough + bRough};
}

void green(Step s, int row) {
    const int p = s.colourParity(row);
    const float *v[9], *h[9];
    for (int d = -4; d <= 4; ++d) {
        v[d + 4] = s.mosaic.tap(row + d, p, 0);
        h[d + 4] = s.mosaic.tap(row, p, d);
    }
    const DirectionTaps direction(s.direction, row, p);
    float* out = s.green.tap(row, p, 0);
    forPairs(s, [&](int k) {
        hn::StoreU(mixed(greenAlong(v, k), greenAlong(h, k), direction.at(k)), kTag, out + k);
    });
}

// At red and blue: squared high-pass values along the diagonals.
void diagonalDifferences(Step s, int row) {
    const int p = s.colourParity(row);
    const float *a[7], *b[7];
    for (int d = -3; d <= 3; ++d) {
        a[d + 3] = s.mosaic.tap(row + d, p, d);
        b[d + 3] = s.mosaic.tap(row + d, p, -d);
    }
    highPassRow(s, a, s.diagonalP.tap(row, p, 0));
    highPassRow(s, b, s.diagonalQ.tap(row, p, 0));
}

void diagonalDirections(Step s, int row) {
    const int p = s.colourParity(row);
    const float *a0 = s.diagonalP.tap(row - 1, p, -1), *a1 = s.diagonalP.tap(row, p, 0);
    const float *a2 = s.diagonalP.tap(row + 1, p, 1), *b0 = s.diagonalQ.tap(row - 1, p, 1);
    const float *b1 = s.diagonalQ.tap(row, p, 0), *b2 = s.diagonalQ.tap(row + 1, p, -1);
    float* out = s.diagonal.tap(row, p, 0);
    const V least = constant(1e-10f);
    forPairs(s, [&](int k) {
        const V a = hn::Max(least, load(a0 + k) + load(a1 + k) + load(a2 + k));
        const V b = hn::Max(least, load(b0 + k) + load(b1 + k) + load(b2 + k));
        hn::StoreU(a / (a + b), kTag, out + k);
    });
}

// What a colour difference needs along one line: the colour at ±1 and ±3 steps, green at ±1, and
// green at 0 and ±2.
struct LineTaps {
    const float *c[4], *g[2], *far[2];
};

// Mean of the two differences from green, each weighted by the other's roughness.
HWY_INLINE Fraction differenceAlong(const LineTaps& t, V greenHere, int k) {
    const V a1 = load(t.c[1] + k), b1 = load(t.c[2] + k);
    const V shared = distance(a1, b1) + tiny();
    const V aRough =
        shared + distance(a1, load(t.c[0] + k)) + distance(greenHere, load(t.far[0] + k));
    const V bRough =
        shared + distance(b1, load(t.c[3] + k)) + distance(greenHere, load(t.far[1] + k));
    const V a = a1 - load(t.g[0] + k), b = b1 - load(t.g[1] + k);
    return {hn::MulAdd(bRough, a, aRough * b), aRough + bRough};
}

// The other colour at red and blue.
void opposite(Step s, int row) {
    const int p = s.colourParity(row);
    const auto line = [&](int x) {
        return LineTaps{{s.mosaic.tap(row - 3, p, -3 * x), s.mosaic.tap(row - 1, p, -x),
                         s.mosaic.tap(row + 1, p, x), s.mosaic.tap(row + 3, p, 3 * x)},
                        {s.green.tap(row - 1, p, -x), s.green.tap(row + 1, p, x)},
                        {s.green.tap(row - 2, p, -2 * x), s.green.tap(row + 2, p, 2 * x)}};
    };
    const LineTaps a = line(1), b = line(-1);
    const float* greenHere = s.green.tap(row, p, 0);
    const DirectionTaps direction(s.diagonal, row, p);
    float* out = s.opposite.tap(row, p, 0);
    forPairs(s, [&](int k) {
        const V g = load(greenHere + k);
        hn::StoreU(g + mixed(differenceAlong(a, g, k), differenceAlong(b, g, k), direction.at(k)),
                   kTag, out + k);
    });
}

// Red and blue at green, and the finished row.
void finish(Step s, int row, bool isRedRow, float* red, float* greenOut, float* blue) {
    const int p = s.colourParity(row), q = 1 - p;
    const auto across = [&](auto& ring) {
        return LineTaps{
            {ring.tap(row, q, -3), ring.tap(row, q, -1), ring.tap(row, q, 1), ring.tap(row, q, 3)},
            {s.green.tap(row, q, -1), s.green.tap(row, q, 1)},
            {s.mosaic.tap(row, q, -2), s.mosaic.tap(row, q, 2)}};
    };
    const auto down = [&](auto& ring) {
        return LineTaps{{ring.tap(row - 3, q, 0), ring.tap(row - 1, q, 0), ring.tap(row + 1, q, 0),
                         ring.tap(row + 3, q, 0)},
                        {s.green.tap(row - 1, q, 0), s.green.tap(row + 1, q, 0)},
                        {s.mosaic.tap(row - 2, q, 0), s.mosaic.tap(row + 2, q, 0)}};
    };
    // The row's own colour is in the mosaic to the left and right; above and below it was
    // interpolated.
    const LineTaps ownAcross = across(s.mosaic), ownDown = down(s.opposite);
    const LineTaps otherAcross = across(s.opposite), otherDown = down(s.mosaic);
    const DirectionTaps direction(s.direction, row, q);
    const float *mosaicHere = s.mosaic.tap(row, p, 0), *greenSites = s.mosaic.tap(row, q, 0);
    const float *greenHere = s.green.tap(row, p, 0), *oppositeHere = s.opposite.tap(row, p, 0);
    float* own = isRedRow ? red : blue;
    float* other = isRedRow ? blue : red;
    // Pairs begin at the border; the first output column is the even one.
    constexpr int first = kDemosaicBorder / 2;
    const auto store = [&](V atColour, V atGreen, float* out, int k) {
        const V colour = decoded(atColour, s.toe), greens = decoded(atGreen, s.toe);
        const V even = p == 0 ? colour : greens, odd = p == 0 ? greens : colour;
        hn::StoreInterleaved2(even, odd, kTag, out + 2 * (k - first));
    };
    for (int k = first; k < s.pairs - first; k += int(hn::Lanes(kTag))) {
        const V g = load(greenSites + k), f = direction.at(k);
        const V c0 = g + mixed(differenceAlong(ownDown, g, k), differenceAlong(ownAcross, g, k), f);
        const V c1 =
            g + mixed(differenceAlong(otherDown, g, k), differenceAlong(otherAcross, g, k), f);
        store(load(mosaicHere + k), c0, own, k);
        store(load(greenHere + k), g, greenOut, k);
        store(load(oppositeHere + k), c1, other, k);
    }
}

void work(Step s, const SplitRows& source, BayerPhase phase, const SensorRect& area, float toe,
          float* const* planes, std::ptrdiff_t stride, const std::function<void(int)>& finished) {
    s.toe = toe;
    const int top = area.top - kDemosaicBorder, left = area.left - kDemosaicBorder;
    const int height = area.height + 2 * kDemosaicBorder;
    s.pairs = (area.width + 1) / 2 + kDemosaicBorder;
    const int redRow = (phase.redRow - top) & 1;
    s.parity = (phase.redColumn - left + redRow) & 1;
    const auto within = [&](int row, int border) { return row >= border && row < height - border; };
    for (int t = 0; t < height; ++t) {
        float* const halves[2] = {s.mosaic.tap(t, 0, 0), s.mosaic.tap(t, 1, 0)};
        source.split(top + t, left, s.pairs, halves[0], halves[1]);
        for (float* half : halves) {
            forPairs(s, [&](int k) { hn::StoreU(encoded(load(half + k), s.toe), kTag, half + k); });
        }
        if (within(t - 3, 3)) {
            differences(s, t - 3);
            diagonalDifferences(s, t - 3);
        }
        if (within(t - 4, 4)) {
            directions(s, t - 4);
            diagonalDirections(s, t - 4);
        }
        if (within(t - 5, 5)) green(s, t - 5);
        if (within(t - 7, 7)) opposite(s, t - 7);
        const int row = t - kDemosaicBorder;
        if (!within(row, kDemosaicBorder)) continue;
        const std::ptrdiff_t at = (row - kDemosaicBorder) * stride;
        finish(s, row, (row & 1) == redRow, planes[0] + at, planes[1] + at, planes[2] + at);
        if (finished) finished(row - kDemosaicBorder);
    }
}

} // namespace HWY_NAMESPACE
} // namespace kelvaro
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvaro {

HWY_EXPORT(work);

struct BayerDemosaic::Rings : DemosaicRings {};

BayerDemosaic::BayerDemosaic() : rings_(std::make_unique<Rings>()) {}
BayerDemosaic::~BayerDemosaic() = default;

void BayerDemosaic::run(const SplitRows& source, BayerPhase phase, const SensorRect& area,
                        float toe, float* const (&planes)[3], std::ptrdiff_t stride,
                        const std::function<void(int)>& finished) {
    HWY_DYNAMIC_DISPATCH(work)(*rings_, source, phase, area, toe, planes, stride, finished);
}

} // namespace kelvaro
#endif
