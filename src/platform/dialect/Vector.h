// The dialect with vectors: a Float is four registers of neighbouring pixels, because kernels wait
// on latency more than on throughput. Included once per instruction set; see Family.inl for the
// order.
#if defined(KELVARO_DIALECT_VECTOR_H) == defined(HWY_TARGET_TOGGLE)
#ifdef KELVARO_DIALECT_VECTOR_H
#undef KELVARO_DIALECT_VECTOR_H
#else
#define KELVARO_DIALECT_VECTOR_H
#endif

#include "platform/Kernel.h"
#include "platform/Raster.h"
#include "platform/dialect/Uniform.h"

#include <hwy/highway.h>

#include <type_traits>
#include <utility>

HWY_BEFORE_NAMESPACE();
namespace kelvaro::dialect::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using Lanes = hn::ScalableTag<float>;
using IntegerLanes = hn::ScalableTag<std::int32_t>;
using Register = hn::Vec<Lanes>;
using MaskRegister = hn::Mask<Lanes>;

#define DIALECT_INLINE static HWY_INLINE
#define DIALECT_MEMBER HWY_INLINE

struct Float {
    Register a, b, c, d;

    Float() = default;
    DIALECT_MEMBER Float(Register r) : a(r), b(r), c(r), d(r) {}
    DIALECT_MEMBER Float(Register r, Register s, Register t, Register u) : a(r), b(s), c(t), d(u) {}
    DIALECT_MEMBER Float(double value) : Float(hn::Set(Lanes(), static_cast<float>(value))) {}
    DIALECT_MEMBER Float(Uniform u) : Float(u.value) {}
};

// One truth value per pixel. There is no conversion to bool, so a text cannot branch on it.
struct Mask {
    MaskRegister a, b, c, d;
};

#define DIALECT_UNARY(name, type, operation)                                                       \
    DIALECT_INLINE type name(type x) {                                                             \
        return {operation(x.a), operation(x.b), operation(x.c), operation(x.d)};                   \
    }
#define DIALECT_BINARY(name, result, type, operation)                                              \
    DIALECT_INLINE result name(type x, type y) {                                                   \
        return {operation(x.a, y.a), operation(x.b, y.b), operation(x.c, y.c),                     \
                operation(x.d, y.d)};                                                              \
    }

DIALECT_BINARY(operator+, Float, Float, hn::Add)
DIALECT_BINARY(operator-, Float, Float, hn::Sub)
DIALECT_BINARY(operator*, Float, Float, hn::Mul)
DIALECT_BINARY(operator/, Float, Float, hn::Div)
DIALECT_BINARY(operator<, Mask, Float, hn::Lt)
DIALECT_BINARY(operator>, Mask, Float, hn::Gt)
DIALECT_BINARY(operator<=, Mask, Float, hn::Le)
DIALECT_BINARY(operator>=, Mask, Float, hn::Ge)
DIALECT_BINARY(operator==, Mask, Float, hn::Eq)
DIALECT_BINARY(operator&&, Mask, Mask, hn::And)
DIALECT_BINARY(operator||, Mask, Mask, hn::Or)
DIALECT_UNARY(operator!, Mask, hn::Not)
DIALECT_UNARY(operator-, Float, hn::Neg)
DIALECT_UNARY(abs, Float, hn::Abs)
DIALECT_UNARY(sqrt, Float, hn::Sqrt)
DIALECT_UNARY(floor, Float, hn::Floor)
DIALECT_BINARY(copySign, Float, Float, hn::CopySign)

// y < x ? y : x. The x86 instruction answers with its second operand when either one is NaN.
DIALECT_INLINE Register lesser(Register x, Register y) {
#if HWY_ARCH_X86
    return hn::Min(y, x);
#else
    return hn::IfThenElse(hn::Lt(y, x), y, x);
#endif
}
// x < y ? y : x
DIALECT_INLINE Register greater(Register x, Register y) {
#if HWY_ARCH_X86
    return hn::Max(y, x);
#else
    return hn::IfThenElse(hn::Lt(x, y), y, x);
#endif
}
DIALECT_BINARY(min, Float, Float, lesser)
DIALECT_BINARY(max, Float, Float, greater)

// x y + z, in one rounding where the instruction set can.
DIALECT_INLINE Float fma(Float x, Float y, Float z) {
    return {hn::MulAdd(x.a, y.a, z.a), hn::MulAdd(x.b, y.b, z.b), hn::MulAdd(x.c, y.c, z.c),
            hn::MulAdd(x.d, y.d, z.d)};
}

DIALECT_INLINE Float select(Mask m, Float yes, Float no) {
    return {hn::IfThenElse(m.a, yes.a, no.a), hn::IfThenElse(m.b, yes.b, no.b),
            hn::IfThenElse(m.c, yes.c, no.c), hn::IfThenElse(m.d, yes.d, no.d)};
}
DIALECT_INLINE bool none(Mask m) {
    return hn::AllFalse(Lanes(), hn::Or(hn::Or(m.a, m.b), hn::Or(m.c, m.d)));
}
DIALECT_INLINE bool any(Mask m) {
    return !none(m);
}

// The parts that the approximations are made of; see Approximations.inl.
DIALECT_INLINE hn::Vec<IntegerLanes> bitsOf(Register r) {
    return hn::BitCast(IntegerLanes(), r);
}
DIALECT_INLINE hn::Vec<IntegerLanes> integers(std::int32_t value) {
    return hn::Set(IntegerLanes(), value);
}
DIALECT_INLINE Register exponentRegister(Register r) {
    const auto offset = hn::Sub(bitsOf(r), integers(0x3f3504f3));
    return hn::ConvertTo(Lanes(), hn::ShiftRight<23>(offset));
}
DIALECT_INLINE Register mantissaRegister(Register r) {
    const auto offset = hn::Sub(bitsOf(r), integers(0x3f3504f3));
    const auto fraction = hn::And(offset, integers(0x007fffff));
    return hn::BitCast(Lanes(), hn::Add(fraction, integers(0x3f3504f3)));
}
DIALECT_INLINE Register powerRegister(Register r) {
    return hn::BitCast(Lanes(), hn::Add(hn::ShiftLeft<23>(bitsOf(r)), integers(0x3f800000)));
}
DIALECT_INLINE Register cubeRootSeedRegister(Register r) {
    const Lanes f;
    const auto bits =
        hn::MulAdd(hn::ConvertTo(f, bitsOf(r)), hn::Set(f, -1.0f / 3), hn::Set(f, 1419900032.0f));
    return hn::BitCast(f, hn::ConvertTo(IntegerLanes(), bits));
}
DIALECT_UNARY(exponentAboutOne, Float, exponentRegister)
DIALECT_UNARY(mantissaAboutOne, Float, mantissaRegister)
DIALECT_UNARY(powerOfTwo, Float, powerRegister)
DIALECT_UNARY(inverseCubeRootSeed, Float, cubeRootSeedRegister)

#include "platform/dialect/Approximations.inl"

#include "platform/dialect/Composites.inl"

// Single precision is what a Float has here.
using Single = Float;
DIALECT_INLINE Single single(Float x) {
    return x;
}
DIALECT_INLINE Float widened(Single x) {
    return x;
}

// The places of the group's pixels, in image space.
struct Pixel {
    Float x, y;
};
// Offset from a point. The point is split in two, so that nothing is lost far from the origin.
DIALECT_INLINE Float offsetFrom(Float position, Uniform origin) {
    const Uniform high = singlePart(origin);
    return position - Float(high) - Float(origin - high);
}

inline constexpr std::size_t kGroup = 4 * hn::MaxLanes(Lanes());
static_assert(kRowGroup % kGroup == 0, "a row's padding holds whole groups");

DIALECT_INLINE Float load(const float* p) {
    const Lanes f;
    const std::size_t n = hn::Lanes(f);
    return {hn::Load(f, p), hn::Load(f, p + n), hn::Load(f, p + 2 * n), hn::Load(f, p + 3 * n)};
}
DIALECT_INLINE void store(Float value, float* p) {
    const Lanes f;
    const std::size_t n = hn::Lanes(f);
    hn::Store(value.a, f, p);
    hn::Store(value.b, f, p + n);
    hn::Store(value.c, f, p + 2 * n);
    hn::Store(value.d, f, p + 3 * n);
}
// Places of a group whose first pixel's centre is (x, y). Exact to 2^22 pixels.
DIALECT_INLINE Pixel pixelsFrom(double x, double y) {
    const Lanes f;
    const auto n = static_cast<float>(hn::Lanes(f));
    const Register a = hn::Iota(f, static_cast<float>(x));
    return {Float(a, hn::Add(a, hn::Set(f, n)), hn::Add(a, hn::Set(f, 2 * n)),
                  hn::Add(a, hn::Set(f, 3 * n))),
            Float(y)};
}

#include "platform/dialect/Arguments.inl"

#include "platform/dialect/Rows.inl"

#undef DIALECT_UNARY
#undef DIALECT_BINARY
#undef DIALECT_INLINE
#undef DIALECT_MEMBER

} // namespace kelvaro::dialect::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
