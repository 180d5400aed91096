#include "platform/raw/Demosaic.h"

#include "platform/raw/DemosaicRings.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/raw/Demosaic.cpp"
#ifndef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#endif
#include <hwy/foreach_target.h> // must come before highway.h

#include <hwy/highway.h>

#include <algorithm>

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
    const int pairs = s.pairs; // which the compiler would take for something that rows overwrite
    for (int k = 0; k < pairs; k += int(hn::Lanes(kTag)))
        use(k);
}

// Square of the sixth-order difference of seven samples in a line, the middle one last.
HWY_INLINE V highPass(V a3, V a2, V a1, V b1, V b2, V b3, V middle) {
    const V sum = (a3 - a1) + (b3 - b1);
    const V v = hn::MulAdd(middle, constant(6), hn::NegMulAdd(a2 + b2, constant(3), sum));
    return v * v;
}

// Squared high-pass values down and across.
void highPasses(Step s, int row) {
    const float *even[7], *odd[7];
    for (int d = -3; d <= 3; ++d) {
        even[d + 3] = s.mosaic.tap(row + d, 0, 0);
        odd[d + 3] = s.mosaic.tap(row + d, 1, 0);
    }
    float *down = s.single[0].tap(0, 0, 0), *oddDown = s.single[0].tap(0, 1, 0);
    float *across = s.single[1].tap(0, 0, 0), *oddAcross = s.single[1].tap(0, 1, 0);
    forPairs(s, [&](int k) {
        const V e = load(even[3] + k), o = load(odd[3] + k);
        const V e1 = load(even[3] + k - 1), e3 = load(even[3] + k + 1);
        const V o1 = load(odd[3] + k - 1), o3 = load(odd[3] + k + 1);
        const auto vertical = [&](const float* const(&m)[7], V middle) {
            return highPass(load(m[0] + k), load(m[1] + k), load(m[2] + k), load(m[4] + k),
                            load(m[5] + k), load(m[6] + k), middle);
        };
        hn::StoreU(vertical(even, e), kTag, down + k);
        hn::StoreU(vertical(odd, o), kTag, oddDown + k);
        hn::StoreU(highPass(load(odd[3] + k - 2), e1, o1, o, e3, o3, e), kTag, across + k);
        hn::StoreU(highPass(e1, o1, e, e3, o3, load(even[3] + k + 2), o), kTag, oddAcross + k);
    });
}

// Which way is smoother: the high-pass values of the row are summed over three columns and, with
// the two rows above it, over windows of 3 × 3. The row in the middle of them gets its directions,
// 0 vertical … 1 horizontal.
void directions(Step s, int row) {
    const V least = constant(1e-10f);
    struct Sums {
        const float *even, *odd;  // of the row
        const float* above[2][2]; // [row][parity]
        float* out[2];
    };
    const auto sums = [&](FullRing<1>& single, FullRing<4>& ring) {
        Sums t{single.tap(0, 0, 0), single.tap(0, 1, 0), {}, {}};
        for (int parity = 0; parity < 2; ++parity) {
            t.above[0][parity] = ring.tap(row - 2, parity, 0);
            t.above[1][parity] = ring.tap(row - 1, parity, 0);
            t.out[parity] = ring.tap(row, parity, 0);
        }
        return t;
    };
    const Sums v = sums(s.single[0], s.vertical), h = sums(s.single[1], s.horizontal);
    float* const direction[2] = {s.direction.tap(row - 1, 0, 0), s.direction.tap(row - 1, 1, 0)};
    const auto windows = [&](const Sums& t, int k, V& even, V& odd) {
        const V e = load(t.even + k), o = load(t.odd + k);
        const V three = load(t.odd + k - 1) + e + o, oddThree = e + o + load(t.even + k + 1);
        hn::StoreU(three, kTag, t.out[0] + k);
        hn::StoreU(oddThree, kTag, t.out[1] + k);
        even = hn::Max(least, load(t.above[0][0] + k) + load(t.above[1][0] + k) + three);
        odd = hn::Max(least, load(t.above[0][1] + k) + load(t.above[1][1] + k) + oddThree);
    };
    forPairs(s, [&](int k) {
        V down, oddDown, across, oddAcross;
        windows(v, k, down, oddDown);
        windows(h, k, across, oddAcross);
        hn::StoreU(down / (down + across), kTag, direction[0] + k);
        hn::StoreU(oddDown / (oddDown + oddAcross), kTag, direction[1] + k);
    });
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
    template<class Ring>
    HWY_INLINE DirectionTaps(Ring& ring, int row, int parity)
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

template<int p> // the colour's parity
void green(Step s, int row) {
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
template<int p>
void diagonalDifferences(Step s, int row) {
    const float *a[7], *b[7];
    for (int d = -3; d <= 3; ++d) {
        a[d + 3] = s.mosaic.tap(row + d, p, d);
        b[d + 3] = s.mosaic.tap(row + d, p, -d);
    }
    float *down = s.diagonalP.tap(row, p, 0), *up = s.diagonalQ.tap(row, p, 0);
    forPairs(s, [&](int k) {
        const V middle = load(a[3] + k);
        const auto along = [&](const float* const(&m)[7]) {
            return highPass(load(m[0] + k), load(m[1] + k), load(m[2] + k), load(m[4] + k),
                            load(m[5] + k), load(m[6] + k), middle);
        };
        hn::StoreU(along(a), kTag, down + k);
        hn::StoreU(along(b), kTag, up + k);
    });
}

template<int p>
void diagonalDirections(Step s, int row) {
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

// What a colour difference needs along one line: the colour at ±1 and ±3 steps; and, of green, what
// stands at ±1 steps and how rough it is between 0 and ±2.
struct LineTaps {
    const float* c[4];
};
struct GreenLine {
    V before, after, roughBefore, roughAfter;
};

// Mean of the two differences from green, each weighted by the other's roughness.
HWY_INLINE Fraction differenceAlong(const LineTaps& t, const GreenLine& g, int k) {
    const V a1 = load(t.c[1] + k), b1 = load(t.c[2] + k);
    const V shared = distance(a1, b1) + tiny();
    const V aRough = shared + distance(a1, load(t.c[0] + k)) + g.roughBefore;
    const V bRough = shared + distance(b1, load(t.c[3] + k)) + g.roughAfter;
    const V a = a1 - g.before, b = b1 - g.after;
    return {hn::MulAdd(bRough, a, aRough * b), aRough + bRough};
}

// The other colour at red and blue.
template<int p>
void opposite(Step s, int row) {
    const auto line = [&](int x) {
        return LineTaps{{s.mosaic.tap(row - 3, p, -3 * x), s.mosaic.tap(row - 1, p, -x),
                         s.mosaic.tap(row + 1, p, x), s.mosaic.tap(row + 3, p, 3 * x)}};
    };
    const LineTaps a = line(1), b = line(-1);
    const float* greenHere = s.green.tap(row, p, 0);
    const DirectionTaps direction(s.diagonal, row, p);
    float* out = s.opposite.tap(row, p, 0);
    forPairs(s, [&](int k) {
        const V g = load(greenHere + k);
        const auto greenAlongLine = [&](int x) {
            return GreenLine{load(s.green.tap(row - 1, p, -x) + k),
                             load(s.green.tap(row + 1, p, x) + k),
                             distance(g, load(s.green.tap(row - 2, p, -2 * x) + k)),
                             distance(g, load(s.green.tap(row + 2, p, 2 * x) + k))};
        };
        const V f = direction.at(k);
        hn::StoreU(g + mixed(differenceAlong(a, greenAlongLine(1), k),
                             differenceAlong(b, greenAlongLine(-1), k), f),
                   kTag, out + k);
    });
}

// Red and blue at green, and the finished row. `own` is the colour of the row's photosites.
template<int p>
void finish(Step s, int row, float* own, float* greenOut, float* other) {
    constexpr int q = 1 - p;
    const auto across = [&](auto& ring) {
        return LineTaps{
            {ring.tap(row, q, -3), ring.tap(row, q, -1), ring.tap(row, q, 1), ring.tap(row, q, 3)}};
    };
    const auto down = [&](auto& ring) {
        return LineTaps{{ring.tap(row - 3, q, 0), ring.tap(row - 1, q, 0), ring.tap(row + 1, q, 0),
                         ring.tap(row + 3, q, 0)}};
    };
    // The row's own colour is in the mosaic to the left and right; above and below it was
    // interpolated.
    const LineTaps ownAcross = across(s.mosaic), ownDown = down(s.opposite);
    const LineTaps otherAcross = across(s.opposite), otherDown = down(s.mosaic);
    const DirectionTaps direction(s.direction, row, q);
    const float *mosaicHere = s.mosaic.tap(row, p, 0), *greenSites = s.mosaic.tap(row, q, 0);
    const float *greenHere = s.green.tap(row, p, 0), *oppositeHere = s.opposite.tap(row, p, 0);
    const float *left = s.green.tap(row, q, -1), *right = s.green.tap(row, q, 1);
    const float *above = s.green.tap(row - 1, q, 0), *below = s.green.tap(row + 1, q, 0);
    const float *farAbove = s.mosaic.tap(row - 2, q, 0), *farBelow = s.mosaic.tap(row + 2, q, 0);
    // Pairs begin at the border; the first output column is the even one.
    constexpr int first = kDemosaicBorder / 2;
    const float toe = s.toe;
    const auto store = [&](V atColour, V atGreen, float* out, int k) {
        const V colour = decoded(atColour, toe), greens = decoded(atGreen, toe);
        const V even = p == 0 ? colour : greens, odd = p == 0 ? greens : colour;
        hn::StoreInterleaved2(even, odd, kTag, out + 2 * (k - first));
    };
    const int end = s.pairs - first;
    for (int k = first; k < end; k += int(hn::Lanes(kTag))) {
        const V g = load(greenSites + k), f = direction.at(k);
        const GreenLine onRow{load(left + k), load(right + k),
                              distance(g, load(greenSites - 1 + k)),
                              distance(g, load(greenSites + 1 + k))};
        const GreenLine onColumn{load(above + k), load(below + k), distance(g, load(farAbove + k)),
                                 distance(g, load(farBelow + k))};
        const V c0 = g + mixed(differenceAlong(ownDown, onColumn, k),
                               differenceAlong(ownAcross, onRow, k), f);
        const V c1 = g + mixed(differenceAlong(otherDown, onColumn, k),
                               differenceAlong(otherAcross, onRow, k), f);
        store(load(mosaicHere + k), c0, own, k);
        store(load(greenHere + k), g, greenOut, k);
        store(load(oppositeHere + k), c1, other, k);
    }
}

void encodeRow(Step s, float* row) {
    const float toe = s.toe;
    forPairs(s, [&](int k) { hn::StoreU(encoded(load(row + k), toe), kTag, row + k); });
}

// What the row `t`, the newest of the mosaic, makes possible.
void advance(Step s, int t) {
    const auto reaches = [&](int border) { return t - 2 * border >= s.begin; };
    // Calls the version for the parity of red or blue in the row.
    const auto forParity = [&](int row, auto&& zero, auto&& one) {
        s.colourParity(row) == 0 ? zero(s, row) : one(s, row);
    };
    if (reaches(3)) {
        highPasses(s, t - 3);
        directions(s, t - 3);
        forParity(t - 3, diagonalDifferences<0>, diagonalDifferences<1>);
    }
    if (reaches(4)) forParity(t - 4, diagonalDirections<0>, diagonalDirections<1>);
    if (reaches(5)) forParity(t - 5, green<0>, green<1>);
    if (reaches(7)) forParity(t - 7, opposite<0>, opposite<1>);
}

// The rows above `end`, after those that were worked through before.
void work(Step s, const SplitRows& source, int end, float* const* planes, std::ptrdiff_t stride,
          const std::function<void(int)>& finished) {
    const int top = std::max(s.begin + kDemosaicBorder, s.next - kDemosaicBorder);
    for (; s.next < end + kDemosaicBorder; ++s.next) {
        float* const halves[2] = {s.mosaic.tap(s.next, 0, 0), s.mosaic.tap(s.next, 1, 0)};
        source.split(s.next, s.left, s.pairs, halves[0], halves[1]);
        encodeRow(s, halves[0]);
        encodeRow(s, halves[1]);
        advance(s, s.next);
        const int row = s.next - kDemosaicBorder;
        if (row < top) continue;
        const std::ptrdiff_t at = (row - top) * stride;
        const bool isRedRow = (row & 1) == s.redRow;
        float *own = planes[isRedRow ? 0 : 2] + at, *other = planes[isRedRow ? 2 : 0] + at;
        if (s.colourParity(row) == 0)
            finish<0>(s, row, own, planes[1] + at, other);
        else
            finish<1>(s, row, own, planes[1] + at, other);
        if (finished) finished(row - top);
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
    DemosaicRings& s = *rings_;
    s.toe = toe;
    s.left = area.left - kDemosaicBorder;
    s.pairs = (area.width + 1) / 2 + kDemosaicBorder;
    s.redRow = phase.redRow;
    s.parity = (phase.redColumn - s.left + s.redRow) & 1;
    s.begin = s.next = area.top - kDemosaicBorder;
    HWY_DYNAMIC_DISPATCH(work)(s, source, area.bottom(), planes, stride, finished);
}

void BayerDemosaic::goOn(const SplitRows& source, int height, float* const (&planes)[3],
                         std::ptrdiff_t stride, const std::function<void(int)>& finished) {
    DemosaicRings& s = *rings_;
    HWY_DYNAMIC_DISPATCH(work)
    (s, source, s.next - kDemosaicBorder + height, planes, stride, finished);
}

} // namespace kelvaro
#endif
