// Pairs and triples of Floats and the functions that are made of the others, included once per form
// of the dialect after its Float.

using dialect::Uniform;

struct Float2 {
    Float x, y;

    Float2() = default;
    DIALECT_MEMBER Float2(Float x_, Float y_) : x(x_), y(y_) {}
};

struct Float3 {
    Float x, y, z;

    Float3() = default;
    DIALECT_MEMBER Float3(Float x_, Float y_, Float z_) : x(x_), y(y_), z(z_) {}
    DIALECT_MEMBER explicit Float3(Float all) : x(all), y(all), z(all) {}
};

DIALECT_INLINE Float2 operator*(Float2 p, Float f) {
    return {p.x * f, p.y * f};
}
DIALECT_INLINE Float3 operator+(Float3 p, Float3 q) {
    return {p.x + q.x, p.y + q.y, p.z + q.z};
}
DIALECT_INLINE Float3 operator-(Float3 p, Float3 q) {
    return {p.x - q.x, p.y - q.y, p.z - q.z};
}
DIALECT_INLINE Float3 operator*(Float3 p, Float3 q) {
    return {p.x * q.x, p.y * q.y, p.z * q.z};
}
DIALECT_INLINE Float3 operator/(Float3 p, Float3 q) {
    return {p.x / q.x, p.y / q.y, p.z / q.z};
}
DIALECT_INLINE Float3 operator*(Float3 p, Float f) {
    return {p.x * f, p.y * f, p.z * f};
}

DIALECT_INLINE Float2 select(Mask m, Float2 yes, Float2 no) {
    return {select(m, yes.x, no.x), select(m, yes.y, no.y)};
}
DIALECT_INLINE Float3 select(Mask m, Float3 yes, Float3 no) {
    return {select(m, yes.x, no.x), select(m, yes.y, no.y), select(m, yes.z, no.z)};
}
DIALECT_INLINE Float3 max(Float3 p, Float3 q) {
    return {max(p.x, q.x), max(p.y, q.y), max(p.z, q.z)};
}

// Products are fused where the instruction set can.
DIALECT_INLINE Float dot(Float2 p, Float2 q) {
    return fma(p.y, q.y, p.x * q.x);
}
DIALECT_INLINE Float dot(Float3 p, Float3 q) {
    return fma(p.z, q.z, fma(p.y, q.y, p.x * q.x));
}
DIALECT_INLINE Float length(Float2 p) {
    return sqrt(dot(p, p));
}
DIALECT_INLINE Float length(Float3 p) {
    return sqrt(dot(p, p));
}
DIALECT_INLINE Float smallest(Float3 p) {
    return min(min(p.x, p.y), p.z);
}
DIALECT_INLINE Float largest(Float3 p) {
    return max(max(p.x, p.y), p.z);
}

// NaN gives `low`.
DIALECT_INLINE Float clamp(Float x, Float low, Float high) {
    return min(high, max(low, x));
}
DIALECT_INLINE Float mix(Float p, Float q, Float t) {
    return fma(q - p, t, p);
}
DIALECT_INLINE Float3 mix(Float3 p, Float3 q, Float t) {
    return {mix(p.x, q.x, t), mix(p.y, q.y, t), mix(p.z, q.z, t)};
}
DIALECT_INLINE Float3 mix(Float3 p, Float3 q, Float3 t) {
    return {mix(p.x, q.x, t.x), mix(p.y, q.y, t.y), mix(p.z, q.z, t.z)};
}
// 0 at and below `low`, 1 at and above `high`, NaN gives 0.
DIALECT_INLINE Float smoothstep(Uniform low, Uniform high, Float x) {
    const Float t = clamp((x - low) * (1.0 / (high - low)), 0.0, 1.0);
    return t * t * (3.0 - 2.0 * t);
}
DIALECT_INLINE Float fract(Float x) {
    return x - floor(x);
}
