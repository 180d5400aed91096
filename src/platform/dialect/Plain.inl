// The dialect with one plain number for a Float, included for float and for double by Plain.h,
// which says what Value and the mathematical functions are.

struct Float {
    Value v;

    Float() = default;
    constexpr Float(double value) : v(static_cast<Value>(value)) {}
    constexpr Float(Uniform u) : Float(u.value) {}
};

struct Mask {
    bool v;
};

DIALECT_INLINE Float number(Value v) {
    Float x;
    x.v = v;
    return x;
}

DIALECT_INLINE Float operator+(Float x, Float y) {
    return number(x.v + y.v);
}
DIALECT_INLINE Float operator-(Float x, Float y) {
    return number(x.v - y.v);
}
DIALECT_INLINE Float operator*(Float x, Float y) {
    return number(x.v * y.v);
}
DIALECT_INLINE Float operator/(Float x, Float y) {
    return number(x.v / y.v);
}
DIALECT_INLINE Float operator-(Float x) {
    return number(-x.v);
}
DIALECT_INLINE Mask operator<(Float x, Float y) {
    return {x.v < y.v};
}
DIALECT_INLINE Mask operator>(Float x, Float y) {
    return {x.v > y.v};
}
DIALECT_INLINE Mask operator<=(Float x, Float y) {
    return {x.v <= y.v};
}
DIALECT_INLINE Mask operator>=(Float x, Float y) {
    return {x.v >= y.v};
}
DIALECT_INLINE Mask operator==(Float x, Float y) {
    return {x.v == y.v};
}
DIALECT_INLINE Mask operator&&(Mask x, Mask y) {
    return {x.v && y.v};
}
DIALECT_INLINE Mask operator||(Mask x, Mask y) {
    return {x.v || y.v};
}
DIALECT_INLINE Mask operator!(Mask x) {
    return {!x.v};
}
DIALECT_INLINE bool any(Mask m) {
    return m.v;
}
DIALECT_INLINE bool none(Mask m) {
    return !m.v;
}
DIALECT_INLINE Float select(Mask m, Float yes, Float no) {
    return m.v ? yes : no;
}

DIALECT_INLINE Float min(Float x, Float y) {
    return y.v < x.v ? y : x;
}
DIALECT_INLINE Float max(Float x, Float y) {
    return x.v < y.v ? y : x;
}
DIALECT_INLINE Float abs(Float x) {
    return number(std::fabs(x.v));
}
DIALECT_INLINE Float sqrt(Float x) {
    return number(std::sqrt(x.v));
}
DIALECT_INLINE Float floor(Float x) {
    return number(std::floor(x.v));
}
DIALECT_INLINE Float copySign(Float size, Float sign) {
    return number(std::copysign(size.v, sign.v));
}
// Two roundings: the instruction for one is not on every machine.
DIALECT_INLINE Float fma(Float x, Float y, Float z) {
    return number(x.v * y.v + z.v);
}
